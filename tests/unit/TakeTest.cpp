// The take record: its tooth set, labels, and its INI form read and written
// through the system's profile functions.
#include <gtest/gtest.h>
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "templates/Take.h"

namespace {

using Teeth = std::vector<BYTE>;
using testing_support::WriteText;

TEST(TakeTeeth, ToggleKeepsAscendingOrderWithZeroLast) {
    CTake t;
    for (int tooth : {48, 11, 25}) t.ToggleTooth(tooth);
    EXPECT_EQ((Teeth{11, 25, 48}), t.GetTeeth());
    EXPECT_EQ("11,25,48", t.GetTeethString());
    t.ToggleTooth(0);
    t.ToggleTooth(12);
    EXPECT_EQ((Teeth{11, 12, 25, 48, 0}), t.GetTeeth());
    t.ToggleTooth(25);
    EXPECT_EQ((Teeth{11, 12, 48, 0}), t.GetTeeth());
    EXPECT_TRUE(t.IsModified());
}

TEST(TakeTeeth, CentreToothAndQuadrant) {
    CTake t;
    EXPECT_EQ(0, t.GetCenterTooth());
    EXPECT_EQ("", t.GetCenterToothString());
    EXPECT_EQ(0, t.GetQuadrant());
    const std::pair<Teeth, int> cases[] = {
        {{11}, 11}, {{11, 12}, 11}, {{11, 12, 13}, 12}, {{11, 12, 13, 14}, 13}};
    for (const auto& [teeth, centre] : cases) {
        t.SetTeeth(teeth);
        EXPECT_EQ(centre, t.GetCenterTooth());
    }
    const std::pair<int, int> quadrants[] = {{18, 1}, {55, 1}, {21, 2}, {65, 2}, {38, 3}, {71, 3},
                                             {41, 4}, {85, 4}, {19, 0}, {50, 0}, {56, 0}};
    for (const auto& [tooth, q] : quadrants) {
        t.SetTeeth({static_cast<BYTE>(tooth)});
        EXPECT_EQ(q, t.GetQuadrant()) << tooth;
    }
}

TEST(TakeTeeth, LabelReadsLikeTheTeeth) {
    CTake t;
    t.SetTeeth({13, 11, 12});
    EXPECT_EQ("11,12,13", t.GetToothLabel());
    t.SetTeeth({5, 11});  // single digits come out as " 5": the blank goes
    EXPECT_EQ("5,11", t.GetToothLabel());
    CTake none;
    EXPECT_EQ("", none.GetToothLabel());
}

class TakeFile : public testing::Test {
protected:
    // Reads section Take_3_<n> of a template file holding `body`.
    bool ReadTake(CTake& t, const std::string& body, int n = 2) {
        WriteText(file(), "[Take_3_" + std::to_string(n) + "]\r\n" + body);
        return t.Read(3, n, file());
    }
    std::string file() const { return settings.folder() + "Template3.ini"; }
    SettingsFile settings;
    BeepRecorder beeps;
};

TEST_F(TakeFile, VerticalSensorSwapsThePictureSize) {
    ASSERT_TRUE(settings.loaded());
    CTake t;
    ASSERT_TRUE(ReadTake(t, "Sensor=1\r\nSensorOrientation=1\r\nWindowPositionX=100\r\n"
                            "WindowPositionY=100\r\nZoomNominator=1\r\nZoomDenominator=4\r\n"
                            "Teeth=11\r\nHolder=1\r\nPosition=9\r\n"));
    EXPECT_TRUE(t.IsVertical());
    EXPECT_EQ(800, t.GetPictureSize().cx);
    EXPECT_EQ(1000, t.GetPictureSize().cy);
    EXPECT_EQ((RECT{100, 100, 300, 350}), t.GetRect());
    EXPECT_EQ(1, t.GetPosition()) << "from the section's number, not from Position";
    EXPECT_EQ(1, t.GetHolder());
    EXPECT_FALSE(t.IsModified());
}

TEST_F(TakeFile, TeethValuesAsTheFileGivesThemCutAt255Characters) {
    std::string tooLong;
    for (int i = 0; i < 100; ++i) tooLong += (i % 2 ? "21," : "11,");
    tooLong += "48";  // beyond the 255 characters read
    ASSERT_GT(tooLong.size(), 255u);
    const std::pair<std::string, Teeth> cases[] = {
        {"", Teeth{0}},                  // one empty piece: tooth 0
        {"11,12,", Teeth{11, 12, 0}},    // trailing comma: 0 last
        {"11,12,11", Teeth{12}},         // toggled on and off
        {"300", Teeth{44}},              // low byte
        {"48,11,25", Teeth{11, 25, 48}}, // any order
        // 255 characters: "11" 43 times and "21" 42 times leave 11; the empty
        // piece after the last comma read adds tooth 0.
        {tooLong, Teeth{11, 0}},
    };
    for (const auto& [value, teeth] : cases) {
        CTake t;
        ASSERT_TRUE(ReadTake(t, "Sensor=2\r\nTeeth=" + value + "\r\n")) << value;
        EXPECT_EQ(teeth, t.GetTeeth()) << value;
    }
    CTake missing;
    ASSERT_TRUE(ReadTake(missing, "Sensor=2\r\n"));
    EXPECT_EQ((Teeth{0}), missing.GetTeeth());
}

TEST_F(TakeFile, ZoomOutOfRangeBecomesOneQuarter) {
    const std::pair<const char*, std::pair<int, int>> cases[] = {
        {"ZoomNominator=0\r\n", {1, 4}},
        {"ZoomDenominator=11\r\n", {1, 4}},
        {"ZoomDenominator=-1\r\n", {1, 4}},
        {"", {1, 1}},
        {"ZoomNominator=3\r\nZoomDenominator=7\r\n", {3, 7}},
    };
    for (const auto& [keys, zoom] : cases) {
        CTake t;
        ASSERT_TRUE(ReadTake(t, std::string("Sensor=2\r\nTeeth=11\r\n") + keys));
        EXPECT_EQ(zoom.first, t.GetZoomNumerator()) << keys;
        EXPECT_EQ(zoom.second, t.GetZoomDenominator()) << keys;
    }
}

TEST_F(TakeFile, UnknownSensorOrMissingSectionFails) {
    for (const char* sensor : {"0", "3", "-1"}) {
        CTake t;
        EXPECT_FALSE(ReadTake(t, std::string("Sensor=") + sensor + "\r\nTeeth=11\r\n")) << sensor;
    }
    CTake missing;
    EXPECT_FALSE(missing.Read(3, 7, file()));
}

TEST_F(TakeFile, HolderBeyondTheListIsIgnored) {
    CTake t;
    ASSERT_TRUE(ReadTake(t, "Sensor=2\r\nTeeth=11\r\nHolder=3\r\n"));
    EXPECT_EQ(0, t.GetHolder());
    EXPECT_TRUE(t.SetHolder(2));
    EXPECT_FALSE(t.SetHolder(-1)) << "compared unsigned";
    EXPECT_EQ(2, t.GetHolder());
}

TEST_F(TakeFile, TooLargeForTheLayoutBeepsAndIsKept) {
    CTake t;
    ASSERT_TRUE(ReadTake(t, "Sensor=1\r\nTeeth=11\r\nWindowPositionX=100\r\nWindowPositionY=60\r\n"));
    EXPECT_EQ(1100, t.GetRect().right) << "1000 wide at zoom 1/1: does not fit, kept as read";
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND}), beeps.Take());
    CTake outside;
    ASSERT_TRUE(ReadTake(outside, "Sensor=2\r\nTeeth=11\r\nWindowPositionX=5000\r\n"
                                  "WindowPositionY=-40\r\nZoomDenominator=4\r\n"));
    EXPECT_EQ(714, outside.GetRect().left) << "clamped into the layout area";
    EXPECT_EQ(50, outside.GetRect().top);
    EXPECT_TRUE(beeps.Take().empty());
}

TEST_F(TakeFile, WrittenTakeReadsBackTheSame) {
    CTake t;
    t.SetTeeth({48, 47, 46});
    ASSERT_TRUE(t.SetSensor(2));
    t.ZoomOut();  // 1/2
    t.Rotate();
    t.SetHolder(2);
    t.SetPosition(4);
    ASSERT_TRUE(t.MoveTo(333, 222));
    ASSERT_TRUE(t.Write(3, 2, file()));
    EXPECT_FALSE(t.IsModified());
    EXPECT_EQ("5", testing_support::IniString(file(), "Take_3_2", "Position"));
    EXPECT_EQ("46,47,48", testing_support::IniString(file(), "Take_3_2", "Teeth"));

    CTake back;
    ASSERT_TRUE(back.Read(3, 2, file()));
    EXPECT_EQ(t.GetTeeth(), back.GetTeeth());
    EXPECT_EQ(2, back.GetSensor());
    EXPECT_EQ(2, back.GetHolder());
    EXPECT_TRUE(back.IsVertical());
    EXPECT_EQ(1, back.GetZoomNumerator());
    EXPECT_EQ(2, back.GetZoomDenominator());
    EXPECT_EQ((RECT{333, 222, 633, 622}), back.GetRect());
    EXPECT_EQ(1, back.GetPosition());

    CTake empty;
    EXPECT_FALSE(empty.Write(3, 9, file()));
    EXPECT_FALSE(testing_support::SectionExists(file(), "Take_3_9"));
}

TEST(TakeCopy, CopiesEveryFieldAndTheTeeth) {
    SettingsFile settings;
    CTake a;
    a.SetTeeth({31, 32});
    a.SetSensor(1);
    a.SetHolder(1);
    a.SetPosition(6);
    CTake b;
    b.CopyFrom(a);
    a.ToggleTooth(33);
    EXPECT_EQ((Teeth{31, 32}), b.GetTeeth()) << "a copy of the teeth, not shared";
    EXPECT_EQ(1, b.GetSensor());
    EXPECT_EQ(6, b.GetPosition());
    EXPECT_EQ(a.GetRect(), b.GetRect());
    EXPECT_TRUE(b.IsModified());
}

}  // namespace
