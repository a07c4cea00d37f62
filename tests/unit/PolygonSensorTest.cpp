// Sensor outlines: scaling of the vertices, the four variants and their cable
// markers, and the regions built from them.
#include <gtest/gtest.h>
#include <algorithm>
#include "Fixtures.h"
#include "settings/Polygon.h"
#include "settings/Sensor.h"

namespace {

using testing_support::ScratchDir;
using testing_support::WriteText;

std::vector<POINT> Points(const CPolygon& p) {
    std::vector<POINT> v;
    for (int i = 0; i < p.GetCount(); ++i) v.push_back(p.GetPoint(i));
    return v;
}

bool Same(const std::vector<POINT>& a, const std::vector<POINT>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](POINT p, POINT q) { return p.x == q.x && p.y == q.y; });
}

std::string Rect100x60(const std::string& extra = "Dimension=3527\r\nPictureWidth=10000\r\n") {
    return "[S]\r\nName=Rect\r\nPolygonVertices=4\r\n" + extra +
           "PolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=100\r\nPolygonY2=0\r\n"
           "PolygonX3=100\r\nPolygonY3=60\r\nPolygonX4=0\r\nPolygonY4=60\r\n";
}

class SensorRead : public testing::Test {
protected:
    bool Read(CSensor& s, const std::string& text) {
        WriteText(dir.File("s.ini"), text);
        return s.Read("S", dir.File("s.ini"));
    }
    ScratchDir dir;
};

TEST_F(SensorRead, RectangleGivesTheFourVariantsAndMarkers) {
    CSensor s(false);
    ASSERT_TRUE(Read(s, Rect100x60()));
    EXPECT_EQ("Rect", s.GetName());
    EXPECT_EQ(4, s.GetVertexCount());
    EXPECT_EQ(100, s.GetOutline(0).GetWidth()) << "regions leave out the right edge";
    EXPECT_EQ(60, s.GetOutline(0).GetHeight());
    EXPECT_TRUE(Same({{0, 0}, {0, 100}, {60, 100}, {60, 0}}, Points(s.GetOutline(1))));
    EXPECT_TRUE(Same({{100, 60}, {0, 60}, {0, 0}, {100, 0}}, Points(s.GetOutline(2))));
    EXPECT_TRUE(Same({{60, 100}, {60, 0}, {0, 0}, {0, 100}}, Points(s.GetOutline(3))));
    EXPECT_TRUE(Same({{0, 0}, {100, 0}, {100, 60}, {0, 60}, {0, 31}, {-30, 31}, {-30, 29}, {0, 29}},
                     Points(s.GetMarker(0))));
    // Variant 1's last vertex is (60, 0), its width 60: the bar goes up.
    EXPECT_TRUE(Same({{0, 0}, {0, 100}, {60, 100}, {60, 0}, {31, 0}, {31, -30}, {29, -30}, {29, 0}},
                     Points(s.GetMarker(1))));
}

TEST_F(SensorRead, DimensionAndPictureWidthScaleTheVertices) {
    CSensor s(false);
    ASSERT_TRUE(Read(s, "[S]\r\nName=X\r\nPolygonVertices=3\r\nPictureWidth=5000\r\n"
                        "PolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=1000\r\nPolygonY2=600\r\n"
                        "PolygonX3=0\r\nPolygonY3=600\r\n"));
    EXPECT_EQ(500, s.GetOutline(0).GetPoint(1).x) << "no Dimension: factor 1.0";
    EXPECT_EQ(300, s.GetOutline(0).GetPoint(1).y) << "PictureWidth scales y as well";
    CSensor half(false);
    ASSERT_TRUE(Read(half, Rect100x60("Dimension=7054\r\nPictureWidth=10000\r\n")));
    EXPECT_EQ(50, half.GetOutline(0).GetPoint(1).x);
}

TEST_F(SensorRead, UnusableSectionsAreRefused) {
    CSensor noName(false), noVertices(false), degenerate(false), twice(false);
    EXPECT_FALSE(Read(noName, "[S]\r\nPolygonVertices=4\r\n"));
    EXPECT_FALSE(Read(noVertices, "[S]\r\nName=A\r\nPictureWidth=10000\r\n"));
    EXPECT_FALSE(Read(degenerate, "[S]\r\nName=A\r\nPolygonVertices=3\r\nPictureWidth=10000\r\n"
                                  "PolygonX1=5\r\nPolygonY1=5\r\nPolygonX2=5\r\nPolygonY2=5\r\n"
                                  "PolygonX3=5\r\nPolygonY3=5\r\n"));
    EXPECT_FALSE(Read(degenerate, "[S]\r\nName=A\r\nPolygonVertices=-5\r\nPictureWidth=10000\r\n"));
    ASSERT_TRUE(Read(twice, Rect100x60()));
    EXPECT_FALSE(Read(twice, Rect100x60())) << "a sensor is read once";
}

TEST(Polygon, RegionsAreScaledMovedAndCentred) {
    CPolygon p;
    const POINT rect[] = {{0, 0}, {100, 0}, {100, 60}, {0, 60}};
    p.SetPoints(rect, 4);
    fw::UniqueRgn r;
    ASSERT_TRUE(p.CreateRegionCentered(r, 500, 400));
    RECT box;
    GetRgnBox(r.get(), &box);
    EXPECT_EQ((RECT{450, 370, 550, 430}), box);
    p.SetScale(0.5, 2.0);
    p.SetOffset(10, 20);
    ASSERT_TRUE(p.CreateRegion(r));
    GetRgnBox(r.get(), &box);
    EXPECT_EQ((RECT{10, 20, 60, 140}), box);
    CPolygon empty;
    EXPECT_FALSE(empty.CreateRegion(r));
    EXPECT_EQ(0, empty.GetWidth());
}

TEST(SensorRegions, FootprintUsesTheSensitivityAndTheMarkerDoesNot) {
    SettingsFile settings(StandardSettings("[Application]\r\nSensorSensitivity=50\r\n"));
    ASSERT_TRUE(settings.loaded());
    const CSensor* s = TheSettings().GetPaletteEntry(0);  // 1000 x 800: outline 1000 x 800
    ASSERT_NE(nullptr, s);
    fw::UniqueRgn foot, marker;
    ASSERT_TRUE(s->GetFootprintRegion(foot, 500, 500, false, 0.2, 0.2));
    RECT box;
    GetRgnBox(foot.get(), &box);
    EXPECT_EQ(100, box.right - box.left) << "1000 x 0.5 x 0.2";
    EXPECT_EQ(80, box.bottom - box.top);
    ASSERT_TRUE(s->GetMarkerRegion(marker, 500, 500, false, 0.2, 0.2));
    GetRgnBox(marker.get(), &box);
    EXPECT_EQ(200 + 80, box.right - box.left) << "outline 200 wide plus a bar of half its height";
    const CSensor* v = TheSettings().GetPaletteEntry(1);
    EXPECT_TRUE(v->IsVertical());
    EXPECT_EQ(1, v->VariantFor(true));
    EXPECT_EQ(3, v->VariantFor(false));
    EXPECT_EQ(2, s->VariantFor(true));
    EXPECT_EQ(0, s->VariantFor(false));
}

}  // namespace
