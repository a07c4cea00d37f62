// The text service against our stand-ins of the host's automation objects:
// translations, the English fallback, the module's own strings, and the
// behaviour without any host.
#include <gtest/gtest.h>
#include <future>
#include "../dll/DialogDriver.h"
#include "TestSupport.h"
#include "hoststub/HostAutomation.h"
#include "res/resource.h"
#include "text/TextService.h"

namespace {

using testing_support::ScratchDir;
using testing_support::WriteText;

class TextServiceTest : public testing::Test {
protected:
    void Register(int language, bool lexicon = true, bool options = true) {
        WriteText(dir.File("lexicon.ini"),
                  "[ZEMBLAX_1033]\r\n2.15045=Exposure\r\n1.32908=Untitled\r\n2.1003=&Back\r\n"
                  "2.key.Drehen=Rotate\r\n2.32802=Delete\r\n1.32907=\r\n"
                  "[ZEMBLAX_1036]\r\n2.15045=Prise de vue\r\n");
        hoststub::AutomationOptions o;
        o.userLanguage = language;
        o.lexiconFile = dir.File("lexicon.ini");
        o.registerLexicon = lexicon;
        o.registerOptions = options;
        ASSERT_TRUE(hoststub::RegisterAutomation(o));
        hoststub::Stats() = {};
    }
    void TearDown() override {
        EndTexts();
        hoststub::RevokeAutomation();
        GetTextService().SetLanguage(0);
    }
    CTextService& ts = GetTextService();
    ScratchDir dir;
};

TEST_F(TextServiceTest, UserLanguageFirstThenEnglish) {
    Register(1036);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    EXPECT_EQ(1036, ts.GetLanguage()) << "asked from the options manager";
    std::string text;
    EXPECT_TRUE(ts.GetText(text, IDD_TAKE, kTextDialog));
    EXPECT_EQ("Prise de vue", text);
    EXPECT_TRUE(ts.GetText(text, IDC_BACK, kTextDialog));
    EXPECT_EQ("&Back", text) << "missing in French: English US";
    EXPECT_FALSE(ts.GetText(text, 4711, kTextDialog));
    EXPECT_EQ("", text);
    EndTexts();
    EXPECT_EQ(1, hoststub::Stats().serversCreated);
    EXPECT_EQ(1, hoststub::Stats().sectionsOpened);
    EXPECT_EQ(1, hoststub::Stats().sectionsClosed) << "EndTexts disconnects";
}

TEST_F(TextServiceTest, LoadTextFallsBackToTheModulesStrings) {
    Register(1031);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    std::string text;
    EXPECT_TRUE(ts.LoadText(text, IDS_UNNAMED, kTextString));
    EXPECT_EQ("Untitled", text) << "German asked, English found";
    EXPECT_TRUE(ts.LoadText(text, IDS_SAVE_FAILED, kTextString));
    EXPECT_EQ("Das Aufnahmeschema konnte nicht gespeichert werden.", text);
    const int lookups = hoststub::Stats().lookups;
    EXPECT_FALSE(ts.LoadText(text, 0, kTextString));
    EXPECT_EQ("", text);
    EXPECT_EQ(lookups, hoststub::Stats().lookups) << "id 0 asks nobody";
}

TEST_F(TextServiceTest, SameSectionInAnyCaseDoesNotReconnect) {
    Register(1033);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    std::string text;
    ts.GetText(text, IDD_TAKE, kTextDialog);
    EXPECT_TRUE(ts.Open("zemblax", "C:\\other\\"));
    ts.GetText(text, IDD_TAKE, kTextDialog);
    EXPECT_EQ(1, hoststub::Stats().sectionsOpened);
    EXPECT_EQ("", hoststub::Stats().lastDatabasePath) << "a new path waits for the next connection";
}

TEST_F(TextServiceTest, LocalDatabaseLiesBesideTheHostProgram) {
    Register(1033);
    BeginTexts("ZEMBLAX", 0, nullptr, "!local!");
    std::string text;
    ts.GetText(text, IDD_TAKE, kTextDialog);
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string folder(exe);
    folder = folder.substr(0, folder.find_last_of('\\') + 1);
    EXPECT_EQ(folder + "!langdb\\", hoststub::Stats().lastDatabasePath);
    EXPECT_EQ(folder + "!langdb\\", ts.GetDatabasePath());
    EndTexts();
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    EXPECT_EQ(folder + "!langdb\\", ts.GetDatabasePath()) << "an empty path keeps the old one";
}

TEST_F(TextServiceTest, WithoutAHostEveryLookupFailsQuietly) {
    hoststub::RevokeAutomation();
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    EXPECT_EQ(1033, ts.GetLanguage()) << "no options manager: English US";
    std::string text;
    EXPECT_FALSE(ts.GetText(text, IDD_TAKE, kTextDialog));
    EXPECT_TRUE(ts.LoadText(text, IDS_UNNAMED, kTextString));
    EXPECT_EQ("Unbenannt", text);
    EXPECT_FALSE(ts.TranslateWindow(nullptr, IDD_TAKE, kTextDialog));
    EXPECT_FALSE(ts.TranslateControl(nullptr, kTextDialog));
    EndTexts();
    // The failure is remembered for one dialog's texts only: objects that
    // appear later serve the next dialog.
    Register(1033);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    EXPECT_TRUE(ts.GetText(text, IDD_TAKE, kTextDialog));
    EXPECT_EQ("Exposure", text);
}

TEST_F(TextServiceTest, OptionsManagerMissingButServerThere) {
    Register(1036, true, false);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    EXPECT_EQ(1033, ts.GetLanguage());
    std::string text;
    EXPECT_TRUE(ts.GetText(text, IDD_TAKE, kTextDialog));
    EXPECT_EQ("Exposure", text);
}

TEST_F(TextServiceTest, TranslateWindowAndMenuByKey) {
    Register(1033);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    HWND w = CreateWindowExA(0, "STATIC", "Neu", 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(ts.TranslateWindow(w, IDD_TAKE, kTextDialog));
    EXPECT_FALSE(ts.TranslateWindow(w, 999, kTextDialog));
    EXPECT_EQ("Exposure", DialogDriver::Text(w)) << "translated once; nothing found: it stays";
    DestroyWindow(w);
    auto item = [](HMENU m, int pos) {
        char buf[64] = {};
        GetMenuStringA(m, pos, buf, sizeof buf, MF_BYPOSITION);
        return std::string(buf);
    };
    fw::UniqueMenu menu(CreatePopupMenu());
    AppendMenuA(menu.get(), MF_STRING, IDS_MENU_ROTATE, "Drehen");
    AppendMenuA(menu.get(), MF_STRING, IDS_MENU_DELETE, "L\xF6schen");
    ts.TranslateMenu(menu.get(), kTextDialog);
    EXPECT_EQ("Rotate", item(menu.get(), 0));
    EXPECT_EQ("L\xF6schen", item(menu.get(), 1)) << "top level: by its text, which has no translation";
    // In a sub-menu each item decides for itself: the one opening a further
    // sub-menu by its text, its command neighbour by id.
    fw::UniqueMenu outer(CreatePopupMenu());
    HMENU inner = CreatePopupMenu(), innermost = CreatePopupMenu();
    AppendMenuA(innermost, MF_STRING, 1, "x");
    AppendMenuA(inner, MF_POPUP, reinterpret_cast<UINT_PTR>(innermost), "Drehen");
    AppendMenuA(inner, MF_STRING, IDS_MENU_DELETE, "L\xF6schen");
    AppendMenuA(outer.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(inner), "Aufnahme");
    ts.TranslateMenu(outer.get(), kTextDialog);
    EXPECT_EQ("Rotate", item(inner, 0));
    EXPECT_EQ("Delete", item(inner, 1));
}

TEST_F(TextServiceTest, ShowMessageOfAnEmptyTextReportsAnInternalError) {
    Register(1033);
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    const DialogDriver user;
    auto box = std::async(std::launch::async, [&] { return user.AnswerBox(IDOK, 5000); });
    int answer = -1;
    EXPECT_FALSE(ts.ShowMessage(IDS_TEETH_MISSING, kTextString, MB_YESNO, &answer));
    EXPECT_EQ("Internal error. The system can't determine the text to be displayed.", box.get());
    EXPECT_EQ(-1, answer) << "no answer is handed back";
}

std::string ProgIdClsid(const char* progId) {
    char value[64] = {};
    DWORD size = sizeof value;
    RegGetValueA(HKEY_CLASSES_ROOT, (std::string(progId) + "\\CLSID").c_str(), nullptr,
                 RRF_RT_REG_SZ, nullptr, value, &size);
    return value;
}

TEST_F(TextServiceTest, StandInsLeaveAnInstalledHostsRegistrationAlone) {
    const char* hostClsid = "{0BADF00D-0000-4000-8000-000000000001}";
    ASSERT_EQ(ERROR_SUCCESS,
              RegSetKeyValueA(HKEY_CLASSES_ROOT, "VELMORAXI.LexiconServer\\CLSID", nullptr,
                              REG_SZ, hostClsid, static_cast<DWORD>(strlen(hostClsid) + 1)));
    Register(1033);
    const std::string ours = ProgIdClsid("VELMORAXI.OptionsManager");
    EXPECT_FALSE(ours.empty()) << "no host registration there: ours is made";
    hoststub::RevokeAutomation();
    EXPECT_EQ(hostClsid, ProgIdClsid("VELMORAXI.LexiconServer")) << "the host's, untouched";
    EXPECT_EQ("", ProgIdClsid("VELMORAXI.OptionsManager")) << "ours, removed";
    RegDeleteTreeA(HKEY_CLASSES_ROOT, "VELMORAXI.LexiconServer");
}

TEST(TextServiceCharSet, UnknownLanguagesTakeTheSystemFontsCharSet) {
    CTextService& ts = GetTextService();
    ts.SetLanguage(1032);
    LOGFONTA lf{};
    GetObjectA(GetStockObject(SYSTEM_FONT), sizeof lf, &lf);
    EXPECT_EQ(lf.lfCharSet, ts.GetCharSet());
    ts.SetLanguage(1049);
    std::string face;
    int height = -1;
    fw::UniqueFont font(ts.CreateLanguageFont(face, height));
    EXPECT_NE(nullptr, font.get());
    EXPECT_EQ("Arial Cyr", face);
    std::string tooLong(40, 'x');
    EXPECT_EQ(nullptr, ts.CreateLanguageFont(tooLong, height));
    ts.SetLanguage(0);
}

}  // namespace
