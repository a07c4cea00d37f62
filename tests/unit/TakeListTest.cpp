// The configure dialog's two companions as a user meets them: the save-as
// dialog typed into and confirmed, and the sensor palette in a real list
// view, pressed and dragged with the mouse pointer.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <future>
#include <memory>
#include <string>
#include <vector>
#include "../dll/DialogDriver.h"
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "InputSupport.h"
#include "hoststub/HostAutomation.h"
#include "res/resource.h"
#include "text/TextService.h"
#include "ui/SaveAsDlg.h"
#include "ui/TakeListCtrl.h"

namespace {

using namespace input_support;
using testing_support::GdiObjectCount;

TEST(SaveAsDlg, OpensEmptyInTheUsersLanguageAndTakesOneTo127CharactersAsTyped) {
    testing_support::ScratchDir dir;
    testing_support::WriteText(dir.File("lexicon.ini"),
                               "[ZEMBLAX_1033]\r\n2.15043=Save template as\r\n"
                               "2.15046=Enter a new name:\r\n1.1=Okay\r\n1.2=Cancel\r\n"
                               "1.32908=Untitled\r\n");
    hoststub::AutomationOptions o;
    o.userLanguage = 1033;
    o.lexiconFile = dir.File("lexicon.ini");
    ASSERT_TRUE(hoststub::RegisterAutomation(o));
    BeepRecorder beeps;
    DialogDriver driver;
    // Blanks at both ends stay: 127 characters in all.
    const std::string longest = " " + std::string(125, 'x') + " ";
    std::vector<std::string> texts;
    std::vector<bool> openAfterOk;
    auto user = std::async(std::launch::async, [&] {
        HWND dlg = driver.WaitFor(IDC_SAVE_AS_NAME);
        if (!dlg) return;
        texts = {DialogDriver::Text(dlg), DialogDriver::ItemText(dlg, IDC_SAVE_AS_PROMPT),
                 DialogDriver::ItemText(dlg, IDOK), DialogDriver::ItemText(dlg, IDCANCEL),
                 DialogDriver::ItemText(dlg, IDC_SAVE_AS_NAME)};
        // The edit as it opened, then 128 and 127 characters. The click is
        // synchronous: no nested box opens here, so it cannot block.
        for (const std::string& name : {std::string(), longest + "y", longest}) {
            if (!name.empty()) SetDlgItemTextA(dlg, IDC_SAVE_AS_NAME, name.c_str());
            if (!DialogDriver::Enabled(dlg, IDOK)) break;
            SendMessageA(GetDlgItem(dlg, IDOK), BM_CLICK, 0, 0);
            openAfterOk.push_back(IsWindowVisible(dlg) != FALSE);
        }
        if (!DialogDriver::WaitGone(dlg, 2000)) driver.DismissAll();
    });
    CSaveAsDlg dlg;
    const INT_PTR result = dlg.DoModal();
    user.get();
    hoststub::RevokeAutomation();
    GetTextService().SetLanguage(0);

    EXPECT_EQ((std::vector<std::string>{"Save template as", "Enter a new name:", "Okay", "Cancel",
                                        ""}),
              texts)
        << "the default name is fetched and dropped: the user types a new one";
    EXPECT_EQ((std::vector<bool>{true, true, false}), openAfterOk);
    EXPECT_EQ((std::vector<UINT>{MB_ICONASTERISK, MB_ICONASTERISK}), beeps.Take());
    EXPECT_EQ(IDOK, result);
    EXPECT_EQ(longest, dlg.GetName());
}

// The configure dialog's palette control.
constexpr DWORD kPaletteStyle = WS_BORDER | WS_TABSTOP | LVS_ICON | LVS_SINGLESEL |
                                LVS_SHOWSELALWAYS | LVS_ALIGNLEFT | LVS_NOCOLUMNHEADER;

// A popup with the palette at the left and a drop target (the tooth chart) at
// the right. The fixture owns the palette as the configure dialog does: takes
// the capture for the drop target, if there is one, and gives it back at the
// end of the drag.
class Palette : public testing::Test, public CTakeListOwner {
protected:
    static constexpr int kLeft = 140, kTop = 120;

    void BeginDrag(int index) override {
        begun.push_back(index);
        heldAtBegin.push_back(GetKeyState(VK_LBUTTON) < 0);
        if (dropTo) SetCapture(dropTo);
    }
    int EndDrag() override {
        ++ended;
        if (dropTo && GetCapture() == dropTo) ReleaseCapture();
        return 0;
    }

    void Open(const std::string& settingsText = StandardSettings()) {
        settings = std::make_unique<SettingsFile>(settingsText);
        ASSERT_TRUE(settings->loaded());
        ASSERT_TRUE(list.Attach(listWindow) && list.Init(this));
        Pump(60);
    }
    void TearDown() override {
        Mouse(MOUSEEVENTF_MOVE, {5, 5});
        if (GetKeyState(VK_LBUTTON) < 0) Mouse(MOUSEEVENTF_LEFTUP);
        ReleaseCapture();
    }
    POINT ItemCentre(int index) const {
        RECT r{};
        ListView_GetItemRect(listWindow, index, &r, LVIR_ICON);
        POINT p{(r.left + r.right) / 2, (r.top + r.bottom) / 2};
        ClientToScreen(listWindow, &p);
        return p;
    }

    std::unique_ptr<SettingsFile> settings;
    Popup popup{kLeft, kTop, 420, 330, WS_EX_TOPMOST};
    HWND listWindow = popup.Add(WC_LISTVIEWA, kPaletteStyle, 0, 0, 120, 330, IDC_TAKE_LIST);
    HWND targetWindow = popup.Add("STATIC", SS_BLACKFRAME, 200, 0, 220, 330);
    CTakeListCtrl list;
    HWND dropTo = nullptr;
    std::vector<int> begun;
    std::vector<bool> heldAtBegin;
    int ended = 0;
};

// A 32 x 32 picture on white, drawn by `draw` into a memory DC.
template <typename Draw>
std::vector<DWORD> Picture(Draw draw) {
    using namespace testing_support;
    return BitmapPixels(PaintedBitmap(32, 32, WHITENESS, draw).get());
}

TEST_F(Palette, TwoEntriesPerSensorEachWithItsOwnIcon) {
    Open();
    ASSERT_EQ(4, ListView_GetItemCount(listWindow));
    HIMAGELIST icons = ListView_GetImageList(listWindow, LVSIL_NORMAL);
    const auto image = [&](int i) {
        LVITEMA item{};
        item.mask = LVIF_IMAGE;
        item.iItem = i;
        SendMessageA(listWindow, LVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));
        return Picture([&](HDC dc) { ImageList_Draw(icons, item.iImage, dc, 0, 0, ILD_NORMAL); });
    };
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        char text[64] = {};
        ListView_GetItemText(listWindow, i, 0, text, sizeof text);
        EXPECT_EQ(i < 2 ? "Gross" : "Klein", std::string(text));
        const CSensor* entry = TheSettings().GetPaletteEntry(i);
        ASSERT_NE(nullptr, entry);
        EXPECT_EQ(Picture([&](HDC dc) {
                      DrawIconEx(dc, 0, 0, entry->GetIcon(), 32, 32, 0, nullptr, DI_NORMAL);
                  }),
                  image(i));
    }
    EXPECT_NE(image(0), image(1)) << "a lying sensor and a standing one look different";
    EXPECT_EQ(0, ListView_GetNextItem(listWindow, -1, LVNI_SELECTED | LVNI_FOCUSED));
}

TEST_F(Palette, APressBeginsTheDragAndTheReleaseEndsItInTheListOrAtTheTarget) {
    Open();
    dropTo = targetWindow;
    const POINT from = ItemCentre(3);  // sensor 2, vertical
    Mouse(MOUSEEVENTF_MOVE, from);
    Mouse(MOUSEEVENTF_LEFTDOWN);
    EXPECT_EQ(std::vector<int>{3}, begun);
    EXPECT_EQ(std::vector<bool>{true}, heldAtBegin) << "begun while the button was down";
    for (int step = 1; step <= 6; ++step) Mouse(MOUSEEVENTF_MOVE, {from.x + step * 8, from.y + step});
    Mouse(MOUSEEVENTF_MOVE, {kLeft + 300, kTop + 150});
    EXPECT_EQ(targetWindow, GetCapture()) << "the drop target has the mouse";
    Mouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ(0, ended) << "the release went to the target, not to the list";
    ReleaseCapture();  // as the tooth chart does at the drop

    // The list missed that release; the next press starts a drag all the
    // same, and with no target the list's own release ends it.
    dropTo = nullptr;
    Mouse(MOUSEEVENTF_MOVE, ItemCentre(0));
    Mouse(MOUSEEVENTF_LEFTDOWN);
    EXPECT_EQ((std::vector<int>{3, 0}), begun);
    EXPECT_EQ(0, ended);
    Mouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ(1, ended);
    EXPECT_EQ((std::vector<int>{3, 0}), begun);
}

TEST_F(Palette, EmptyPaletteStartsNothing) {
    Open("");
    EXPECT_EQ(0, ListView_GetItemCount(listWindow));
    Mouse(MOUSEEVENTF_MOVE, {kLeft + 40, kTop + 40});
    Mouse(MOUSEEVENTF_LEFTDOWN);
    Mouse(MOUSEEVENTF_LEFTUP);
    EXPECT_TRUE(begun.empty());
}

TEST_F(Palette, OpeningAndClosingLeavesNoGdiObjects) {
    settings = std::make_unique<SettingsFile>();
    ASSERT_TRUE(settings->loaded());
    // The control goes before its window or after it.
    const auto round = [&](bool controlFirst) {
        Popup window(kLeft, kTop, 420, 330);
        auto palette = std::make_unique<CTakeListCtrl>();
        palette->Attach(window.Add(WC_LISTVIEWA, kPaletteStyle, 0, 0, 120, 330));
        palette->Init(this);
        Pump(10);
        if (controlFirst) palette.reset();
        window.Destroy();
    };
    round(false);
    round(true);
    { fw::WindowDC warmUp(nullptr); }
    const int before = GdiObjectCount();
    for (int i = 0; i < 10; ++i) round(i % 2 == 0);
    EXPECT_EQ(before, GdiObjectCount());
}

}  // namespace
