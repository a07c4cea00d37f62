// Placement of takes in the layout area: moves, zoom steps, rotation, the
// starting place of drop positions and the choice among them.
#include <gtest/gtest.h>
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "templates/Take.h"

using testing_support::WriteText;

namespace {

struct Zoom {
    int num, den;
    bool operator==(const Zoom& o) const { return num == o.num && den == o.den; }
};
std::ostream& operator<<(std::ostream& os, const Zoom& z) { return os << z.num << "/" << z.den; }
Zoom ZoomOf(const CTake& t) { return {t.GetZoomNumerator(), t.GetZoomDenominator()}; }

class Placement : public testing::Test {
protected:
    // A take of the 800 x 600 sensor at zoom 1/4: 200 x 150.
    CTake Take200x150() {
        CTake t;
        t.SetTeeth({11});
        t.SetSensor(2);
        for (int i = 0; i < 3; ++i) t.ZoomOut();  // 1/1 -> 1/4
        return t;
    }
    SettingsFile settings;
    BeepRecorder beeps;
};

TEST_F(Placement, MoveToKeepsTheTakeInsideTheArea) {
    CTake t = Take200x150();
    ASSERT_EQ((Zoom{1, 4}), ZoomOf(t));
    t.MoveTo(0, 0);
    EXPECT_EQ((RECT{70, 50, 270, 200}), t.GetRect());
    EXPECT_TRUE(t.MoveTo(900, 700));
    EXPECT_EQ((RECT{714, 598, 914, 748}), t.GetRect());
    EXPECT_FALSE(t.MoveTo(900, 700)) << "no change, no modification";
    EXPECT_TRUE(t.MoveBy(-1000, -1000));
    EXPECT_EQ(70, t.GetRect().left);
    EXPECT_TRUE(beeps.Take().empty());
    CTake wide;
    wide.SetTeeth({11});
    wide.SetSensor(1);  // 1000 x 800 at 1/1
    EXPECT_FALSE(wide.ClampToLayoutArea());
    EXPECT_EQ(0, wide.GetRect().left) << "a take that does not fit is not moved";
}

TEST_F(Placement, ZoomStepsAndTheirLimits) {
    CTake t = Take200x150();
    for (int i = 0; i < 3; ++i) t.ZoomIn();
    EXPECT_EQ((Zoom{1, 1}), ZoomOf(t));
    t.ZoomOut();
    EXPECT_EQ((Zoom{1, 2}), ZoomOf(t));
    t.ZoomIn();
    EXPECT_TRUE(beeps.Take().empty());
    t.ZoomIn();  // 2/1 would be 1600 x 1200
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND}), beeps.Take());
    EXPECT_EQ((Zoom{1, 1}), ZoomOf(t));
    EXPECT_EQ(800, t.GetRect().right - t.GetRect().left);
    for (int i = 0; i < 12; ++i) t.ZoomOut();
    EXPECT_EQ((Zoom{1, 10}), ZoomOf(t));
    EXPECT_EQ(80, t.GetRect().right - t.GetRect().left);
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND, MB_ICONHAND, MB_ICONHAND}), beeps.Take())
        << "1/11 clipped to 1/10 each time";
}

TEST_F(Placement, ZoomInStopsAtTenToOne) {
    // A tiny sensor: 40 x 30 at 1/1 still fits at 10/1.
    SettingsFile tiny(SensorSection(1, "Tiny", 40, 30));
    CTake t;
    t.SetTeeth({11});
    ASSERT_TRUE(t.SetSensor(1));
    for (int i = 0; i < 9; ++i) t.ZoomIn();
    EXPECT_EQ((Zoom{10, 1}), ZoomOf(t));
    EXPECT_TRUE(beeps.Take().empty());
    t.ZoomIn();
    EXPECT_EQ((Zoom{10, 1}), ZoomOf(t));
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND}), beeps.Take());
    EXPECT_EQ(400, t.GetRect().right - t.GetRect().left);
}

TEST_F(Placement, ZoomFromAFileRatioStepsTheNumerator) {
    WriteText(settings.folder() + "T.ini", "[Take_1_1]\r\nSensor=2\r\nTeeth=11\r\n"
                                           "ZoomNominator=3\r\nZoomDenominator=8\r\n");
    CTake t;
    ASSERT_TRUE(t.Read(1, 1, settings.folder() + "T.ini"));
    t.ZoomIn();
    EXPECT_EQ((Zoom{4, 8}), ZoomOf(t));
    t.ZoomIn();
    EXPECT_EQ((Zoom{5, 8}), ZoomOf(t));
    EXPECT_EQ(500, t.GetRect().right - t.GetRect().left) << "800 x 5/8";
}

TEST_F(Placement, RotateSwapsTheSizeOrChangesNothing) {
    CTake t;
    t.SetTeeth({11});
    t.SetSensor(2);  // 800 x 600 at 1/1
    t.ZoomOut();     // 400 x 300
    t.ZoomOut();     // 266 x 200
    t.ZoomIn();      // 400 x 300
    t.MoveTo(500, 100);
    t.Rotate();
    EXPECT_TRUE(t.IsVertical());
    EXPECT_EQ((RECT{500, 100, 800, 500}), t.GetRect());
    EXPECT_EQ(600, t.GetPictureSize().cx);

    CTake big;
    big.SetTeeth({11});
    big.SetSensor(2);  // 800 x 600: turned it would be 800 high
    const RECT before = big.GetRect();
    big.Rotate();
    EXPECT_FALSE(big.IsVertical());
    EXPECT_EQ(before, big.GetRect());
    EXPECT_EQ(800, big.GetPictureSize().cx);
    EXPECT_TRUE(big.IsModified());
    EXPECT_TRUE(beeps.Take().empty()) << "a refused rotation is silent";
}

TEST_F(Placement, SetSensorRefusesUnknownNumbers) {
    CTake t = Take200x150();
    const RECT before = t.GetRect();
    for (int unknown : {0, 3, -2}) EXPECT_FALSE(t.SetSensor(unknown)) << unknown;
    EXPECT_EQ(2, t.GetSensor());
    EXPECT_EQ(before, t.GetRect());
    EXPECT_TRUE(t.SetSensor(1));
    EXPECT_EQ(250, t.GetRect().right - t.GetRect().left) << "1000 at the kept zoom 1/4";
}

TEST_F(Placement, DropPositionsArePointsInsideTheArea) {
    CTake d;
    EXPECT_FALSE(d.Place(10, 760, 1, 4)) << "a drop position has no sensor";
    EXPECT_EQ((RECT{70, 748, 70, 748}), d.GetRect());
}

TEST(DropPositions, BestMatchOrTheFirst) {
    SettingsFile settings(StandardSettings(
        "[DropPosition0]\r\nTeeth=21\r\nWindowPositionX=100\r\n"
        "[DropPosition1]\r\nTeeth=11,13\r\nWindowPositionX=300\r\n"
        "[DropPosition2]\r\nTeeth=11,12\r\nWindowPositionX=500\r\n"));
    ASSERT_EQ(3, TheSettings().GetDropPositionCount());
    CTake target;
    std::vector<BYTE> teeth{11, 12};
    ASSERT_TRUE(TheSettings().FindDropPosition(&teeth, &target));
    EXPECT_EQ(500, target.GetRect().left);
    EXPECT_EQ((std::vector<BYTE>{11, 12}), target.GetTeeth());
    std::vector<BYTE> other{31};
    ASSERT_TRUE(TheSettings().FindDropPosition(&other, &target));
    EXPECT_EQ(100, target.GetRect().left) << "no common tooth: the first";
    EXPECT_FALSE(TheSettings().FindDropPosition(nullptr, &target));
    EXPECT_FALSE(TheSettings().FindDropPosition(&teeth, nullptr));
}

}  // namespace
