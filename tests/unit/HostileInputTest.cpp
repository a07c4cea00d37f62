// Input from outside that a careless or broken host or editor leaves: packed
// DIBs whose blocks are shorter than their headers say, and sensor outlines
// of any vertex count and size.
#include <gtest/gtest.h>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include "Fixtures.h"
#include "dib/DibValidation.h"
#include "settings/Polygon.h"
#include "settings/Sensor.h"

namespace {

using testing_support::ScratchDir;
using testing_support::WriteText;

template <typename T>
std::string Bytes(const T& v) {
    return std::string(reinterpret_cast<const char*>(&v), sizeof v);
}

// The bytes placed so that they end right before an inaccessible page: a
// check that reads one byte too far faults here.
class Guarded {
public:
    explicit Guarded(const std::string& bytes) {
        SYSTEM_INFO si;
        GetSystemInfo(&si);
        const SIZE_T page = si.dwPageSize;
        m_size = (bytes.size() + page - 1) / page * page + page;
        m_base = static_cast<BYTE*>(VirtualAlloc(nullptr, m_size + page, MEM_COMMIT, PAGE_READWRITE));
        DWORD old;
        VirtualProtect(m_base + m_size, page, PAGE_NOACCESS, &old);
        m_data = m_base + m_size - bytes.size();
        std::memcpy(m_data, bytes.data(), bytes.size());
        m_bytes = bytes.size();
    }
    ~Guarded() { VirtualFree(m_base, 0, MEM_RELEASE); }
    const BYTE* data() const { return m_data; }
    SIZE_T size() const { return m_bytes; }

private:
    BYTE* m_base;
    BYTE* m_data;
    SIZE_T m_size, m_bytes;
};

bool Drawable(const std::string& header, const std::string& bits, DibGeometry* g = nullptr) {
    Guarded h(header), b(bits);
    return IsDrawablePackedDib(h.data(), h.size(), b.data(), b.size(), g);
}

std::string Info(LONG w, LONG h, WORD bits, DWORD compression = BI_RGB, DWORD sizeImage = 0,
                 DWORD clrUsed = 0) {
    BITMAPINFOHEADER bih{sizeof bih, w, h, 1, bits, compression, sizeImage, 0, 0, clrUsed, 0};
    return Bytes(bih);
}

TEST(DibValidation, ColourTableImpliedByTheBitCountMustBeThere) {
    const std::string rows(4 * 2, '\x07');  // 4 x 2 at 8 bits: two rows of 4 bytes
    EXPECT_FALSE(Drawable(Info(4, 2, 8), rows)) << "biClrUsed 0 at 8 bits means 256 entries";
    EXPECT_TRUE(Drawable(Info(4, 2, 8) + std::string(256 * 4, '\0'), rows));
    EXPECT_FALSE(Drawable(Info(4, 2, 8) + std::string(255 * 4, '\0'), rows));
    EXPECT_TRUE(Drawable(Info(4, 2, 8, BI_RGB, 0, 2) + std::string(2 * 4, '\0'), rows));
    EXPECT_FALSE(Drawable(Info(4, 2, 8, BI_RGB, 0, 0xFFFFFFFF) + std::string(256 * 4, '\0'), rows));
    EXPECT_FALSE(Drawable(Info(4, 2, 1) + std::string(4, '\0'), rows)) << "1 bit: two entries";
    EXPECT_FALSE(Drawable(Info(4, 2, 8) + std::string(256 * 4, '\0'), rows.substr(1)))
        << "rows one byte short";
}

TEST(DibValidation, CoreHeaderIsReadAsACoreHeader) {
    BITMAPCOREHEADER core{sizeof core, 5, 3, 1, 8};
    const std::string table(256 * 3, '\x10');  // RGBTRIPLEs
    const std::string rows(8 * 3, '\0');       // 5 pixels padded to 8 bytes
    DibGeometry g;
    ASSERT_TRUE(Drawable(Bytes(core) + table, rows, &g));
    EXPECT_EQ(5, g.width);
    EXPECT_EQ(3, g.height);
    EXPECT_FALSE(Drawable(Bytes(core) + table.substr(1), rows)) << "table of triples, one short";
    EXPECT_FALSE(Drawable(Bytes(core) + table, rows.substr(1)));
    core.bcBitCount = 16;
    EXPECT_FALSE(Drawable(Bytes(core), rows)) << "core headers know 1, 4, 8 and 24 bits only";
}

TEST(DibValidation, BitFieldMasksFollowAnInfoHeader) {
    const std::string rows(4 * 2 * 2, '\0');
    const std::string masks = Bytes(DWORD{0xF800}) + Bytes(DWORD{0x07E0}) + Bytes(DWORD{0x001F});
    EXPECT_FALSE(Drawable(Info(4, 2, 16, BI_BITFIELDS), rows)) << "short by the 12 mask bytes";
    EXPECT_FALSE(Drawable(Info(4, 2, 16, BI_BITFIELDS) + masks.substr(4), rows));
    EXPECT_TRUE(Drawable(Info(4, 2, 16, BI_BITFIELDS) + masks, rows));
    EXPECT_FALSE(Drawable(Info(4, 2, 16, BI_BITFIELDS) + masks, rows.substr(2)));
    EXPECT_FALSE(Drawable(Info(4, 2, 24, BI_BITFIELDS) + masks, rows + rows));
    BITMAPV5HEADER v5{};
    v5.bV5Size = sizeof v5;
    v5.bV5Width = 4;
    v5.bV5Height = 2;
    v5.bV5Planes = 1;
    v5.bV5BitCount = 16;
    v5.bV5Compression = BI_BITFIELDS;
    EXPECT_TRUE(Drawable(Bytes(v5), rows)) << "a V5 header holds its masks";
    v5.bV5CSType = 0x4D424544;  // 'MBED': an embedded profile behind the header
    v5.bV5ProfileData = sizeof v5;
    v5.bV5ProfileSize = 100;
    EXPECT_FALSE(Drawable(Bytes(v5) + std::string(99, '\0'), rows));
    EXPECT_TRUE(Drawable(Bytes(v5) + std::string(100, '\0'), rows));
}

TEST(DibValidation, RleStreamMustEndInsideItsBlock) {
    const std::string table(256 * 4, '\0');
    // Row 1: a run of 4; row 2: four literal pixels; end of bitmap.
    const std::string stream("\x04\x09\x00\x00\x00\x04\x01\x02\x03\x04\x00\x01", 12);
    const auto size = static_cast<DWORD>(stream.size());
    EXPECT_TRUE(Drawable(Info(4, 2, 8, BI_RLE8, size) + table, stream));
    EXPECT_FALSE(Drawable(Info(4, 2, 8, BI_RLE8, size + 1) + table, stream))
        << "biSizeImage beyond the block";
    EXPECT_FALSE(Drawable(Info(4, 2, 8, BI_RLE8, 0) + table, stream)) << "RLE needs biSizeImage";
    EXPECT_FALSE(Drawable(Info(4, 2, 8, BI_RLE8, size - 2) + table, stream.substr(0, size - 2)))
        << "no end mark";
    // A literal of 0x40 pixels with only four of them present runs off the end.
    std::string runsOff = stream;
    runsOff[5] = '\x40';
    EXPECT_FALSE(Drawable(Info(4, 2, 8, BI_RLE8, size) + table, runsOff));
    EXPECT_FALSE(Drawable(Info(4, -2, 8, BI_RLE8, size) + table, stream)) << "RLE is bottom-up";
    // RLE4: literal of 5 pixels is 3 bytes, padded to 4.
    const std::string four("\x00\x05\x12\x34\x50\x00\x00\x01", 8);
    EXPECT_TRUE(Drawable(Info(5, 1, 4, BI_RLE4, 8) + std::string(16 * 4, '\0'), four));
    EXPECT_FALSE(Drawable(Info(5, 1, 4, BI_RLE4, 7) + std::string(16 * 4, '\0'), four.substr(0, 7)));
}

TEST(DibValidation, ImpossibleHeadersAreRefused) {
    const std::string table(256 * 4, '\0'), rows(64 * 64 * 4, '\0');
    EXPECT_TRUE(Drawable(Info(8, -8, 32), rows)) << "top-down is fine";
    EXPECT_FALSE(Drawable(Info(-8, 8, 32), rows));
    EXPECT_FALSE(Drawable(Info(0, 8, 32), rows));
    EXPECT_FALSE(Drawable(Info(8, 0, 32), rows));
    EXPECT_FALSE(Drawable(Info(8, LONG_MIN, 32), rows));
    EXPECT_FALSE(Drawable(Info(0x7FFFFFFF, 0x7FFFFFFF, 32), rows)) << "size overflows";
    EXPECT_FALSE(Drawable(Info(0x7FFFFFFF, 1, 32), rows));
    // An RLE header claims 64 M pixels and one more for a four-byte stream.
    const std::string end("\x00\x00\x00\x01", 4);
    EXPECT_TRUE(Drawable(Info(8192, 8192, 8, BI_RLE8, 4) + table, end));
    EXPECT_FALSE(Drawable(Info(8192, 8193, 8, BI_RLE8, 4) + table, end)) << "too many pixels";
    EXPECT_FALSE(Drawable(Info(8, 8, 7) + table, rows)) << "no such bit count";
    EXPECT_FALSE(Drawable(Info(8, 8, 0), rows));
    EXPECT_FALSE(Drawable(Info(8, 8, 24, 7), rows)) << "unknown compression";
    EXPECT_FALSE(Drawable(Info(8, 8, 24, BI_JPEG, 100), rows));
    std::string planes = Info(8, 8, 24);
    planes[12] = 2;
    EXPECT_FALSE(Drawable(planes, rows)) << "biPlanes must be 1";
    std::string odd = Info(8, 8, 24);
    odd[0] = 64;  // an OS/2 2.x header size
    EXPECT_FALSE(Drawable(odd + std::string(24, '\0'), rows));
    // Every truncation of a good header block is refused without a read past it.
    const std::string good = Info(8, 8, 8) + table;
    for (size_t n = 0; n < good.size(); n += (n < 48 ? 1 : 97))
        EXPECT_FALSE(Drawable(good.substr(0, n), rows)) << n;
}

// --- Sensor outlines of any vertex count -----------------------------------

std::string Circle(int section, int vertices) {
    std::string s = "[Sensor" + std::to_string(section) + "]\r\nName=Rund\r\nPictureWidth=10000\r\n"
                    "Dimension=3527\r\nPolygonVertices=" + std::to_string(vertices) + "\r\n";
    for (int i = 1; i <= vertices; ++i) {
        const double a = i * 6.283185307179586 / vertices;
        s += "PolygonX" + std::to_string(i) + "=" + std::to_string(int(500 + 500 * std::cos(a))) +
             "\r\nPolygonY" + std::to_string(i) + "=" + std::to_string(int(400 + 400 * std::sin(a))) +
             "\r\n";
    }
    return s;
}

TEST(HostileSettings, SensorOfFiveThousandVerticesKeepsTheNumbersOfTheNext) {
    SettingsFile settings(Circle(1, 5000) + SensorSection(2, "Klein", 800, 600));
    ASSERT_TRUE(settings.loaded());
    ASSERT_EQ(2, TheSettings().GetSensorCount());
    EXPECT_EQ(5000, TheSettings().GetSensor(0)->GetVertexCount());
    EXPECT_EQ("Klein", TheSettings().GetSensor(1)->GetName());
    EXPECT_EQ(4, TheSettings().GetPaletteCount());
    EXPECT_EQ(1000, TheSettings().GetSensor(0)->GetOutline(0).GetWidth());
}

TEST(HostileSettings, VertexCountWithoutKeysBehindItCostsNothing) {
    // Two thousand million vertices, four of them with keys: the rest are
    // (0, 0), one after the other, which outline as one (0, 0).
    const auto t0 = std::chrono::steady_clock::now();
    SettingsFile settings(
        "[Sensor1]\r\nName=Gross\r\nPictureWidth=10000\r\nPolygonVertices=2000000000\r\n"
        "PolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=100\r\nPolygonY2=0\r\n"
        "PolygonX3=100\r\nPolygonY3=60\r\nPolygonX1000=50\r\nPolygonY1000=80\r\n" +
        SensorSection(2, "Klein", 800, 600));
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    ASSERT_EQ(2, TheSettings().GetSensorCount());
    const CPolygon& outline = TheSettings().GetSensor(0)->GetOutline(0);
    ASSERT_EQ(6, outline.GetCount()) << "3 keyed, (0, 0) for 4..999, 1000, (0, 0) for the rest";
    EXPECT_EQ(0, outline.GetPoint(3).x);
    EXPECT_EQ(50, outline.GetPoint(4).x);
    EXPECT_EQ(80, outline.GetPoint(4).y);
    EXPECT_EQ(0, outline.GetPoint(5).y);
    EXPECT_LT(seconds, 2.0);
}

TEST(HostileSettings, VertexValuesReadLikeTheProfileReader) {
    // Spellings of numbers, a repeated key and a lower-case key: the outline
    // must hold what the system's own reader returns for each key.
    static const char* kValues[] = {"100",  " 100 ",  "\"100\"", "0x64",  "+100", "-7",
                                    "100abc", "1e2",  "0b11",    "0o17",  "4294967396",
                                    "000000000000000000000000000000000000100", "'42'", "x"};
    const int n = static_cast<int>(sizeof kValues / sizeof *kValues);
    std::string text = "[S]\r\nName=Zahlen\r\nPictureWidth=10000\r\nDimension=3527\r\n"
                       "PolygonVertices=" + std::to_string(n + 2) + "\r\n";
    for (int i = 1; i <= n; ++i)
        text += "PolygonX" + std::to_string(i) + "=" + kValues[i - 1] + "\r\nPolygonY" +
                std::to_string(i) + "=" + std::to_string(i * 10) + "\r\n";
    text += "PolygonX1=55\r\npolygonx" + std::to_string(n + 1) + "=300\r\nPolygonY" +
            std::to_string(n + 1) + "=300\r\nPolygonX" + std::to_string(n + 2) + "=-300\r\n";
    ScratchDir dir;
    const std::string file = dir.File("s.ini");
    WriteText(file, text);
    CSensor sensor(false);
    ASSERT_TRUE(sensor.Read("S", file));
    const CPolygon& outline = sensor.GetOutline(0);
    ASSERT_EQ(n + 2, outline.GetCount());
    for (int i = 1; i <= n + 2; ++i) {
        const std::string x = "PolygonX" + std::to_string(i), y = "PolygonY" + std::to_string(i);
        EXPECT_EQ(static_cast<int>(GetPrivateProfileIntA("S", x.c_str(), 0, file.c_str())),
                  outline.GetPoint(i - 1).x)
            << x;
        EXPECT_EQ(static_cast<int>(GetPrivateProfileIntA("S", y.c_str(), 0, file.c_str())),
                  outline.GetPoint(i - 1).y)
            << y;
    }
}

TEST(HostileSettings, HugeOutlineKeepsItsShapeAndASaneOneIsUntouched) {
    ScratchDir dir;
    const std::string file = dir.File("s.ini");
    WriteText(file, "[S]\r\nName=Riesig\r\nPictureWidth=10000\r\nPolygonVertices=4\r\n"
                    "PolygonX1=-2147483648\r\nPolygonY1=-2147483648\r\n"
                    "PolygonX2=2147483647\r\nPolygonY2=-2147483648\r\n"
                    "PolygonX3=2147483647\r\nPolygonY3=0\r\nPolygonX4=-2147483648\r\nPolygonY4=0\r\n");
    CSensor huge(false);
    const auto t0 = std::chrono::steady_clock::now();
    ASSERT_TRUE(huge.Read("S", file));
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(), 0.5);
    const int w = huge.GetOutline(0).GetWidth(), h = huge.GetOutline(0).GetHeight();
    EXPECT_GT(w, 60000);
    EXPECT_NEAR(2.0, static_cast<double>(w) / h, 0.01) << "twice as wide as high, as written";
    CSensor sane(false);
    WriteText(file, Circle(1, 64));
    ASSERT_TRUE(sane.Read("Sensor1", file));
    EXPECT_EQ(500, sane.GetOutline(0).GetPoint(15).x) << "vertex 16 of 64, a quarter round";
    EXPECT_EQ(800, sane.GetOutline(0).GetPoint(15).y);
    EXPECT_EQ(1000, sane.GetOutline(0).GetWidth());
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
