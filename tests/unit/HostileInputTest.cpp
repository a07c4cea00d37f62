// Input from outside that a careless or broken host or editor leaves: packed
// DIBs whose blocks are shorter than their headers say, and sensor outlines
// of any vertex count and size.
#include <gtest/gtest.h>
#include <chrono>
#include <cmath>
#include <string>
#include "Fixtures.h"
#include "../stress/GuardedBlock.h"
#include "dib/DibValidation.h"
#include "settings/Polygon.h"
#include "settings/Sensor.h"

namespace {

// Both blocks end right before an inaccessible page: a read past them faults.
bool Drawable(const std::string& header, const std::string& bits, DibGeometry* g = nullptr) {
    GuardedBlock h(header), b(bits);
    return IsDrawablePackedDib(h.data(), h.size(), b.data(), b.size(), g);
}

std::string Info(LONG w, LONG h, WORD bits, DWORD compression = BI_RGB, DWORD sizeImage = 0) {
    return Bytes(BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), w, h, 1, bits, compression, sizeImage});
}

// Each block as long as the fields before it say, and one byte short.
TEST(DibValidation, BlocksShorterThanTheirHeadersSayAreRefused) {
    const std::string table(256 * 4, '\0'), rows8(4 * 2, '\x07'), rows16(4 * 2 * 2, '\0');
    const std::string masks = Bytes(DWORD{0xF800}) + Bytes(DWORD{0x07E0}) + Bytes(DWORD{0x001F});
    const std::string core = Bytes(BITMAPCOREHEADER{sizeof(BITMAPCOREHEADER), 5, 3, 1, 8});
    const std::string triples(256 * 3, '\x10'), coreRows(8 * 3, '\0');  // 5 pixels padded to 8
    // Row 1: a run of 4; row 2: four literal pixels; end of bitmap.
    const std::string rle("\x04\x09\x00\x00\x00\x04\x01\x02\x03\x04\x00\x01", 12);
    std::string runsOff = rle;
    runsOff[5] = '\x40';  // a literal of 0x40 pixels, four of them present
    const struct {
        std::string header, bits;
        bool drawable;
        const char* what;
    } cases[] = {
        {Info(4, 2, 8), rows8, false, "biClrUsed 0 at 8 bits means 256 entries"},
        {Info(4, 2, 8) + table.substr(4), rows8, false, "255 entries"},
        {Info(4, 2, 8) + table, rows8, true, "256 entries"},
        {core + triples.substr(1), coreRows, false, "a core header's table of triples, one short"},
        {Info(4, 2, 16, BI_BITFIELDS), rows16, false, "BI_BITFIELDS without its 12 mask bytes"},
        {Info(4, 2, 16, BI_BITFIELDS) + masks, rows16, true, "BI_BITFIELDS with masks"},
        {Info(4, 2, 8, BI_RLE8, 12) + table, rle, true, "RLE8"},
        {Info(4, 2, 8, BI_RLE8, 13) + table, rle, false, "biSizeImage beyond the block"},
        {Info(4, 2, 8, BI_RLE8, 12) + table, runsOff, false, "a literal running off the end"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.drawable, Drawable(c.header, c.bits)) << c.what;
    DibGeometry g;
    ASSERT_TRUE(Drawable(core + triples, coreRows, &g)) << "a core header read as one";
    EXPECT_EQ(5, g.width);
    EXPECT_EQ(3, g.height);
}

TEST(HostileSettings, SensorOfFiveThousandVerticesKeepsTheNumbersOfTheNext) {
    std::string circle = "[Sensor1]\r\nName=Rund\r\nPictureWidth=10000\r\nDimension=3527\r\n"
                         "PolygonVertices=5000\r\n";
    for (int i = 1; i <= 5000; ++i) {
        const double a = i * 6.283185307179586 / 5000;
        circle += "PolygonX" + std::to_string(i) + "=" + std::to_string(int(500 + 500 * std::cos(a))) +
                  "\r\nPolygonY" + std::to_string(i) + "=" +
                  std::to_string(int(400 + 400 * std::sin(a))) + "\r\n";
    }
    SettingsFile settings(circle + SensorSection(2, "Klein", 800, 600));
    ASSERT_TRUE(settings.loaded());
    ASSERT_EQ(2, TheSettings().GetSensorCount());
    EXPECT_EQ(5000, TheSettings().GetSensor(0)->GetVertexCount());
    EXPECT_EQ("Klein", TheSettings().GetSensor(1)->GetName());
}

TEST(HostileSettings, RegionsOfPolygonsFarBeyondTheScreenStayQuickAndKeepTheirShapeInside) {
    // A thin spike far out is cut before the region is made.
    std::vector<POINT> spike{{0, 0}, {100, 0}, {100, 60}, {52, 60}, {50, 1 << 30}, {48, 60},
                             {0, 60}};
    fw::UniqueRgn cut;
    const auto t0 = std::chrono::steady_clock::now();
    ASSERT_TRUE(CPolygon::MakeRegion(cut, spike));
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(), 0.5);
    // Just beyond the limit, where the uncut region is still affordable: both
    // agree inside the cut but for a pixel along the two edges that were cut.
    spike[4].y = 3 * CPolygon::kRegionLimit;
    ASSERT_TRUE(CPolygon::MakeRegion(cut, spike));
    fw::UniqueRgn plain(CreatePolygonRgn(spike.data(), static_cast<int>(spike.size()), WINDING));
    fw::UniqueRgn window(CreateRectRgn(-10, -10, 200, CPolygon::kRegionLimit - 1000));
    CombineRgn(cut.get(), cut.get(), window.get(), RGN_AND);
    CombineRgn(plain.get(), plain.get(), window.get(), RGN_AND);
    RECT box;
    GetRgnBox(cut.get(), &box);
    EXPECT_TRUE(SameRect(RECT{0, 0, 100, CPolygon::kRegionLimit - 1000}, box));
    fw::UniqueRgn difference(CreateRectRgn(0, 0, 0, 0));
    if (CombineRgn(difference.get(), cut.get(), plain.get(), RGN_XOR) != NULLREGION) {
        GetRgnBox(difference.get(), &box);
        EXPECT_GE(box.left, 47);
        EXPECT_LE(box.right, 53);
        EXPECT_GE(box.top, 60);
    }
}

}  // namespace
