// Templates and the catalog: round trips through the files, number search,
// deletion, gaps and stale sections, saving over older files.
#include <gtest/gtest.h>
#include "Fixtures.h"
#include "settings/IniNames.h"
#include "templates/Template.h"

namespace {

using testing_support::IniString;
using testing_support::SectionExists;

class Catalog : public testing::Test {
protected:
    std::string Cat() const { return settings.path(); }
    std::string File(const std::string& name) const { return settings.folder() + name; }
    void Put(const char* section, const char* key, const char* value) {
        WritePrivateProfileStringA(section, key, value, Cat().c_str());
    }
    // Catalog entry 4, "Vier", with the given take sections.
    void WriteVier(const std::string& takes) {
        testing_support::WriteText(File("Template4.ini"), takes);
        Put("Template4", "Name", "Vier");
    }
    SettingsFile settings;
    fw::UniqueBitmap thumb = testing_support::FilledBitmap(200, 150);
};

TEST_F(Catalog, SavedTemplateLoadsBackWithEveryField) {
    CTemplate t;
    EXPECT_EQ("Unbenannt", t.GetName());
    t.SetName("Status \xC4rger");
    t.AddTake(NewTake({18, 17, 16}, 100, 80, 0, 1));
    t.AddTake(NewTake({11, 21}, 400, 300, 1, 2));
    t.GetTake(1)->Rotate();
    ASSERT_TRUE(t.IsModified());
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    EXPECT_EQ(1, t.GetNumber());
    EXPECT_FALSE(t.IsModified());
    EXPECT_TRUE(testing_support::Exists(File("Template1.bmp")));

    CTemplate back;
    ASSERT_TRUE(back.Load(1, Cat()));
    EXPECT_EQ("Status \xC4rger", back.GetName());
    ASSERT_EQ(2, back.GetTakeCount());
    for (int i = 0; i < 2; ++i) {
        const CTake* a = t.GetTake(i);
        const CTake* b = back.GetTake(i);
        EXPECT_EQ(a->GetTeeth(), b->GetTeeth());
        EXPECT_EQ(a->GetSensor(), b->GetSensor());
        EXPECT_EQ(a->GetHolder(), b->GetHolder());
        EXPECT_EQ(a->IsVertical(), b->IsVertical());
        EXPECT_EQ(a->GetZoomNumerator(), b->GetZoomNumerator());
        EXPECT_EQ(a->GetZoomDenominator(), b->GetZoomDenominator());
        EXPECT_TRUE(SameRect(a->GetRect(), b->GetRect()));
        EXPECT_EQ(i, b->GetPosition());
    }
    EXPECT_FALSE(back.IsModified());
}

TEST_F(Catalog, NewNumbersSkipDeletedNamesAndStopAtGaps) {
    Put("Template1", "Name", "A");
    Put("Template2", "Name", "B");
    Put("Template2", "Deleted", "1");
    CTemplate t;
    t.AddTake(NewTake({11}, 100, 100));
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    EXPECT_EQ(3, t.GetNumber()) << "a deleted template keeps its number";
    Put("Template5", "Name", "E");
    CTemplate u;
    u.AddTake(NewTake({12}, 100, 100));
    ASSERT_TRUE(u.Save(thumb.get(), Cat(), false));
    EXPECT_EQ(4, u.GetNumber());
}

TEST_F(Catalog, LoadStopsAtTheFirstMissingTake) {
    WriteVier("[Take_4_1]\r\nSensor=1\r\nTeeth=11\r\n[Take_4_2]\r\nSensor=2\r\nTeeth=12\r\n"
              "[Take_4_4]\r\nSensor=2\r\nTeeth=14\r\n");
    CTemplate t;
    ASSERT_TRUE(t.Load(4, Cat()));
    EXPECT_EQ(2, t.GetTakeCount());
    EXPECT_EQ(4, t.GetNumber());
}

TEST_F(Catalog, AnUnknownSensorDiscardsTheWholeTemplate) {
    WriteVier("[Take_4_1]\r\nSensor=1\r\nTeeth=11\r\n[Take_4_2]\r\nSensor=9\r\nTeeth=12\r\n");
    CTemplate t;
    EXPECT_FALSE(t.Load(4, Cat()));
    EXPECT_EQ(0, t.GetTakeCount());
    EXPECT_EQ(0, t.GetNumber());
    EXPECT_EQ("Unbenannt", t.GetName());
}

TEST_F(Catalog, MissingFilesGiveAnEmptyTemplate) {
    CTemplate t;
    EXPECT_TRUE(t.Load(7, Cat()));
    EXPECT_EQ(0, t.GetTakeCount());
    EXPECT_EQ("", t.GetName());
    EXPECT_EQ(7, t.GetNumber());
}

TEST_F(Catalog, DeleteMarksTheEntryAndSavingAgainClearsIt) {
    CTemplate t;
    t.SetName("D");
    t.AddTake(NewTake({11}, 100, 100));
    EXPECT_FALSE(t.Delete(Cat())) << "an unsaved template cannot be deleted";
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    const int n = t.GetNumber();
    ASSERT_TRUE(t.Delete(Cat()));
    EXPECT_EQ(0, t.GetNumber());
    EXPECT_EQ(0, t.GetTakeCount());
    EXPECT_EQ("1", IniString(Cat(), "Template1", "Deleted"));
    EXPECT_EQ("D", IniString(Cat(), "Template1", "Name"));
    EXPECT_TRUE(testing_support::Exists(File("Template1.ini")));
    EXPECT_TRUE(testing_support::Exists(File("Template1.bmp")));

    CTemplate again;
    ASSERT_TRUE(again.Load(n, Cat()));
    again.GetTake(0)->ToggleTooth(12);
    ASSERT_TRUE(again.Save(thumb.get(), Cat(), true));
    EXPECT_EQ("<missing>", IniString(Cat(), "Template1", "Deleted"));
    // A note inside the entry goes with the next save too, as erasing took it.
    std::string text = testing_support::ReadText(Cat());
    text.replace(text.find("[Template1]"), 11, "[Template1]\r\n; note");
    testing_support::WriteText(Cat(), text);
    ASSERT_TRUE(again.Save(thumb.get(), Cat(), true));
    EXPECT_EQ(std::string::npos, testing_support::ReadText(Cat()).find("; note"));
    EXPECT_EQ("D", IniString(Cat(), "Template1", "Name"));
}

TEST_F(Catalog, ShrunkTemplateLeavesNoStaleSections) {
    CTemplate t;
    for (int i = 0; i < 5; ++i) t.AddTake(NewTake({static_cast<BYTE>(11 + i)}, 100 + 60 * i, 100));
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    EXPECT_TRUE(SectionExists(File("Template1.ini"), "Take_1_5"));
    t.RemoveTake(4);
    t.RemoveTake(0);
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), true));
    EXPECT_TRUE(SectionExists(File("Template1.ini"), "Take_1_3"));
    EXPECT_FALSE(SectionExists(File("Template1.ini"), "Take_1_4"));
    EXPECT_FALSE(SectionExists(File("Template1.ini"), "Take_1_5"));
    EXPECT_EQ("12", IniString(File("Template1.ini"), "Take_1_1", "Teeth"));
}

TEST_F(Catalog, SaveWithoutThumbnailFailsAfterErasing) {
    CTemplate t;
    t.AddTake(NewTake({11}, 100, 100));
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    EXPECT_FALSE(t.Save(nullptr, Cat(), true));
    EXPECT_FALSE(SectionExists(Cat(), "Template1"));
    EXPECT_FALSE(SectionExists(File("Template1.ini"), "Take_1_1"));
}

TEST_F(Catalog, ATakeWithoutTeethStopsTheSave) {
    CTemplate t;
    t.SetName("Halb");
    t.AddTake(NewTake({11}, 100, 100));
    t.AddTake(NewTake({}, 300, 100));
    t.AddTake(NewTake({13}, 500, 100));
    EXPECT_FALSE(t.AllTakesHaveTeeth());
    EXPECT_FALSE(t.Save(thumb.get(), Cat(), false));
    EXPECT_TRUE(SectionExists(File("Template1.ini"), "Take_1_1"));
    EXPECT_FALSE(SectionExists(File("Template1.ini"), "Take_1_3"));
    EXPECT_EQ("Halb", IniString(Cat(), "Template1", "Name"));
}

// What saving has always done to a template file: the stored take sections
// erased up to the first without a Sensor, then every take written key by key.
void SaveTakesKeyByKey(const CTemplate& t, const std::string& file) {
    const char* f = file.c_str();
    char buf[256];
    for (int k = 1; GetPrivateProfileStringA(ini::Take(t.GetNumber(), k).c_str(), "Sensor", "", buf,
                                             sizeof buf, f);
         ++k)
        WritePrivateProfileStringA(ini::Take(t.GetNumber(), k).c_str(), nullptr, nullptr, f);
    for (int i = 0; i < t.GetTakeCount(); ++i) {
        const CTake& take = *t.GetTake(i);
        const std::string s = ini::Take(t.GetNumber(), i + 1);
        const auto put = [&](const char* key, const std::string& value) {
            WritePrivateProfileStringA(s.c_str(), key, value.c_str(), f);
        };
        put("Sensor", std::to_string(take.GetSensor()));
        put("SensorOrientation", take.IsVertical() ? "1" : "0");
        put("Position", std::to_string(take.GetPosition() + 1));
        put("Teeth", take.GetTeethString());
        put("Holder", std::to_string(take.GetHolder()));
        put("WindowPositionX", std::to_string(take.GetRect().left));
        put("WindowPositionY", std::to_string(take.GetRect().top));
        put("ZoomNominator", std::to_string(take.GetZoomNumerator()));
        put("ZoomDenominator", std::to_string(take.GetZoomDenominator()));
    }
}

// Byte for byte: what the system reads, and what it keeps unread (comments).
TEST_F(Catalog, SavingOverOlderFilesLeavesWhatKeyByKeyWritingLeft) {
    CTemplate t;
    t.SetName("Status");
    for (int i = 0; i < kMaxTakes; ++i)
        t.AddTake(NewTake({static_cast<BYTE>(11 + i % 8), static_cast<BYTE>(41 + i % 8)},
                          100 + (i % 8) * 100, 100 + (i / 8) * 150, 1, 1 + i % 2));
    t.GetTake(3)->Rotate();
    ASSERT_TRUE(t.Save(thumb.get(), Cat(), false));
    ASSERT_EQ(1, t.GetNumber());
    std::string forty;  // as a template of 40 takes was saved
    for (int k = 1; k <= 40; ++k)
        forty += "[Take_1_" + std::to_string(k) + "]\r\nSensor=2\r\nPosition=" + std::to_string(k) +
                 "\r\nTeeth=18\r\nWindowPositionX=100\r\nWindowPositionY=100\r\n";
    const size_t fifth = forty.find("[Take_1_5]"), sixth = forty.find("[Take_1_6]");
    const struct {
        const char* what;
        std::string before;
        int loaded;  // takes 33 to 40 stay where a gap stopped the erasing
    } cases[] = {
        {"forty takes", forty, kMaxTakes},
        {"a foreign section",
         forty.substr(0, sixth) + "[Foreign]\r\nKeep=1\r\n" + forty.substr(sixth), kMaxTakes},
        {"a take without a Sensor",
         forty.substr(0, fifth) + "[Take_1_5]\r\nNote=x\r\n" + forty.substr(sixth), 40},
        {"a comment on top", ";kept\r\n" + forty, kMaxTakes},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        t.GetTake(0)->ToggleTooth(12);
        testing_support::WriteText(File("Old.ini"), c.before);
        SaveTakesKeyByKey(t, File("Old.ini"));
        testing_support::WriteText(File("Template1.ini"), c.before);
        ASSERT_TRUE(t.Save(thumb.get(), Cat(), true));
        EXPECT_FALSE(t.IsModified());
        EXPECT_EQ(testing_support::ReadText(File("Old.ini")),
                  testing_support::ReadText(File("Template1.ini")));
        EXPECT_EQ("Status", IniString(Cat(), "Template1", "Name"));
        CTemplate back;
        ASSERT_TRUE(back.Load(1, Cat()));
        EXPECT_EQ(c.loaded, back.GetTakeCount());
        EXPECT_EQ(t.GetTake(0)->GetTeeth(), back.GetTake(0)->GetTeeth());
    }
}

TEST(TemplateList, RenumberAndModifiedFlag) {
    SettingsFile settings;
    CTemplate t;
    EXPECT_TRUE(t.AllTakesHaveTeeth());
    t.AddTake(NewTake({11}, 100, 100));
    t.AddTake(NewTake({12}, 200, 100));
    t.InsertTake(0, NewTake({13}, 300, 100));
    t.InsertTake(99, NewTake({14}, 400, 100));
    ASSERT_EQ(4, t.GetTakeCount());
    EXPECT_EQ(13, t.GetTake(0)->GetTeeth()[0]);
    EXPECT_EQ(14, t.GetTake(3)->GetTeeth()[0]);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(i, t.GetTake(i)->GetPosition());
    // Refused: the take stays ours (a template owning it would free it twice).
    std::unique_ptr<CTake> refused(NewTake({15}, 500, 100));
    EXPECT_FALSE(t.InsertTake(-1, refused.get()));
    EXPECT_EQ(4, t.GetTakeCount());
    EXPECT_FALSE(t.RemoveTake(4));
    EXPECT_EQ(nullptr, t.GetTake(-1));
    while (t.GetTakeCount()) t.RemoveTake(0);
    EXPECT_FALSE(t.IsModified()) << "an empty template is never modified";
}

TEST(Leaks, LoadingAndSavingAgainAndAgainKeepsGdiAndHeapFlat) {
    SettingsFile settings;
    const std::string cat = settings.path();
    auto cycle = [&] {
        TheSettings().Load(cat);
        CTemplate t;
        t.SetName("L");
        t.AddTake(NewTake({11, 12}, 100, 100));
        t.Save(testing_support::FilledBitmap(200, 150).get(), cat, true);
        CTemplate back;
        back.Load(t.GetNumber(), cat);
    };
    cycle();  // warm-up: caches of the first screen DC and the profile reader
    cycle();
    const int gdi = testing_support::GdiObjectCount();
    const int heap = testing_support::HeapBlockCount();
    for (int i = 0; i < 5; ++i) cycle();
    EXPECT_EQ(gdi, testing_support::GdiObjectCount());
    EXPECT_LE(testing_support::HeapBlockCount(), heap + 2);
}

}  // namespace
