// Loading the settings: defaults, range rules, the lists and their gaps, and
// the data folder that ships with the module.
#include <gtest/gtest.h>
#include "Fixtures.h"
#include "templates/Take.h"

namespace {

TEST(Settings, MissingFileGivesDefaultsAndSucceeds) {
    SettingsFile settings("");
    ASSERT_TRUE(settings.loaded());
    const CSettings& s = TheSettings();
    EXPECT_EQ(0, s.GetHolderCount() + s.GetSensorCount() + s.GetDropPositionCount());
    EXPECT_EQ("Unbenannt", s.GetDefaultName());
    EXPECT_NE(nullptr, s.GetFont());
    EXPECT_TRUE(s.GetShowToothNumbers());
    EXPECT_EQ(10000u, s.GetPreviewTimeout());
    EXPECT_DOUBLE_EQ(1.0, s.GetSensorSensitivity());
}

TEST(Settings, ApplicationValuesAndTheirRules) {
    SettingsFile settings(
        "[Application]\r\nActiveColorR=300\r\nActiveColorG=0\r\nActiveColorB=1\r\n"
        "PreviewTimeout=3\r\nSensorSensitivity=80\r\nShowToothNumbers=0\r\n"
        "TakeDlgWidth=400\r\nTakeDlgHeight=300\r\nFontName=Courier New\r\nFontSize=12\r\n");
    const CSettings& s = TheSettings();
    EXPECT_EQ(RGB(44, 0, 1), s.GetActiveColor()) << "low 8 bits of each component";
    EXPECT_EQ(3000u, s.GetPreviewTimeout());
    EXPECT_DOUBLE_EQ(0.8, s.GetSensorSensitivity());
    EXPECT_FALSE(s.GetShowToothNumbers());
    EXPECT_EQ(400, s.GetTakeDlgSize().cx);
    EXPECT_EQ(300, s.GetTakeDlgSize().cy);
    LOGFONTA lf{};
    GetObjectA(s.GetFont(), sizeof lf, &lf);
    EXPECT_STREQ("Courier New", lf.lfFaceName);
}

TEST(Settings, PreviewSizeRevertsAsAPair) {
    for (const char* keys : {"", "TakeDlgWidth=200\r\nTakeDlgHeight=600\r\n",
                             "TakeDlgWidth=500\r\nTakeDlgHeight=100\r\n",
                             "TakeDlgWidth=99999\r\nTakeDlgHeight=400\r\n",
                             "TakeDlgWidth=-5\r\nTakeDlgHeight=abc\r\n"}) {
        SettingsFile settings(std::string("[Application]\r\n") + keys);
        EXPECT_EQ(342, TheSettings().GetTakeDlgSize().cx) << keys;
        EXPECT_EQ(248, TheSettings().GetTakeDlgSize().cy) << keys;
    }
}

TEST(Settings, HolderListStopsAtTheFirstGap) {
    SettingsFile settings(
        "[Holder1]\r\nName=A\r\nHorizontal=0\r\nVertical=0\r\nInactiveColorG=7\r\n"
        "[Holder2]\r\nName=B\r\nVertical=0\r\nTextColorB=255\r\n"
        "[Holder4]\r\nName=D\r\n");
    const CSettings& s = TheSettings();
    ASSERT_EQ(2, s.GetHolderCount());
    EXPECT_TRUE(s.GetHolder(0)->IsHorizontalAllowed()) << "both 0 means both allowed";
    EXPECT_TRUE(s.GetHolder(0)->IsVerticalAllowed());
    EXPECT_EQ(RGB(0, 7, 0), s.GetHolder(0)->GetInactiveColor());
    EXPECT_EQ(RGB(0, 0, 0), s.GetHolder(0)->GetColor()) << "the file's default, not white";
    EXPECT_TRUE(s.GetHolder(1)->IsHorizontalAllowed());
    EXPECT_FALSE(s.GetHolder(1)->IsVerticalAllowed());
    EXPECT_EQ(RGB(0, 0, 255), s.GetHolder(1)->GetTextColor());
    EXPECT_EQ(nullptr, s.GetHolder(2));
    EXPECT_EQ(nullptr, s.GetHolder(-1));
}

TEST(Settings, UnreadableSensorIsSkippedAndLaterOnesCount) {
    SettingsFile settings(SensorSection(1, "Eins", 400, 300) +
                          "[Sensor2]\r\nName=Kaputt\r\nPolygonVertices=0\r\n" +
                          SensorSection(3, "Drei", 440, 320));
    const CSettings& s = TheSettings();
    ASSERT_EQ(2, s.GetSensorCount());
    EXPECT_EQ("Drei", s.GetSensor(1)->GetName()) << "later sensors shift up";
    ASSERT_EQ(4, s.GetPaletteCount());
    EXPECT_FALSE(s.GetPaletteEntry(2)->IsVertical());
    EXPECT_TRUE(s.GetPaletteEntry(3)->IsVertical());
    EXPECT_NE(nullptr, s.GetPaletteEntry(3)->GetIcon());
    EXPECT_EQ(440, s.GetSensor(1)->GetPictureSize().cx);
}

TEST(Settings, DropPositionValuesOutOfRange) {
    SettingsFile settings(StandardSettings(
        "[DropPosition0]\r\nTeeth=11,12,\r\nWindowPositionX=1025\r\nWindowPositionY=300\r\n"
        "Holder=3\r\nZoomNominator=11\r\n"
        "[DropPosition1]\r\nTeeth=21,,22\r\nWindowPositionX=400\r\nWindowPositionY=300\r\n"
        "Holder=2\r\nZoomNominator=2\r\nZoomDenominator=3\r\n"));
    const CSettings& s = TheSettings();
    ASSERT_EQ(2, s.GetDropPositionCount());
    const CTake* a = s.GetDropPosition(0);
    EXPECT_EQ(70, a->GetRect().left) << "an invalid place counts as (0, 0), clamped";
    EXPECT_EQ(50, a->GetRect().top);
    EXPECT_EQ(a->GetRect().left, a->GetRect().right) << "a point: no sensor";
    EXPECT_EQ(1, a->GetHolder());
    EXPECT_EQ(1, a->GetZoomNumerator());
    EXPECT_EQ(4, a->GetZoomDenominator());
    EXPECT_EQ((std::vector<BYTE>{11, 12}), a->GetTeeth()) << "no tooth 0 from a trailing comma";
    const CTake* b = s.GetDropPosition(1);
    EXPECT_EQ(400, b->GetRect().left);
    EXPECT_EQ(2, b->GetHolder());
    EXPECT_EQ((std::vector<BYTE>{21, 22, 0}), b->GetTeeth()) << "an empty inner piece is 0";
    EXPECT_EQ(2, b->GetZoomNumerator());
}

TEST(Settings, DropPositionsStartAtZeroAndNeedHolders) {
    SettingsFile settings("[DropPosition0]\r\nTeeth=11\r\nHolder=1\r\n[DropPosition2]\r\nTeeth=12\r\n");
    ASSERT_EQ(1, TheSettings().GetDropPositionCount()) << "the list ends at the first gap";
    EXPECT_EQ(0, TheSettings().GetDropPosition(0)->GetHolder()) << "no holders: holder 0";
    SettingsFile fromOne(StandardSettings("[DropPosition1]\r\nTeeth=11\r\n"));
    EXPECT_EQ(0, TheSettings().GetDropPositionCount());
}

TEST(Settings, ReloadStartsFromScratch) {
    SettingsFile first(StandardSettings("[DropPosition0]\r\nTeeth=11\r\n"));
    ASSERT_EQ(2, TheSettings().GetSensorCount());
    SettingsFile second(SensorSection(1, "Nur", 400, 300));
    EXPECT_EQ(1, TheSettings().GetSensorCount());
    EXPECT_EQ(0, TheSettings().GetHolderCount());
    EXPECT_EQ(0, TheSettings().GetDropPositionCount());
}

TEST(ShippedData, SettingsAndTemplatesLoad) {
    // The data folder beside the sources: the demo and new practices start with it.
    std::string ini = testing_support::TestData() + "data\\Template\\Zemblax.ini";
    if (!testing_support::Exists(ini)) GTEST_SKIP() << "no data folder at " << ini;
    ASSERT_TRUE(TheSettings().Load(ini));
    const CSettings& s = TheSettings();
    EXPECT_EQ(3, s.GetSensorCount());
    EXPECT_EQ(4, s.GetHolderCount());
    EXPECT_EQ(18, s.GetDropPositionCount());
    for (int i = 0; i < s.GetDropPositionCount(); ++i) {
        EXPECT_TRUE(s.GetDropPosition(i)->HasTeeth());
        EXPECT_GT(s.GetDropPosition(i)->GetHolder(), 0);
    }
    EXPECT_EQ("Seitenzahnhalter", s.GetHolder(1)->GetName());
    EXPECT_EQ("Sensor Gr\xF6\xDF" "e 2", s.GetSensor(2)->GetName());
    TheSettings().Reset();
}

}  // namespace
