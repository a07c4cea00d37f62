// The configure dialog's two companions as a user meets them: the save-as
// dialog typed into and confirmed, and the sensor palette in a real list
// view, pressed and dragged with the mouse pointer.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <future>
#include <string>
#include <vector>
#include "../dll/DialogDriver.h"
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "fw/Window.h"
#include "hoststub/HostAutomation.h"
#include "res/resource.h"
#include "text/TextService.h"
#include "ui/SaveAsDlg.h"
#include "ui/TakeListCtrl.h"

namespace {

using testing_support::BitmapPixels;
using testing_support::GdiObjectCount;

// ---- Save as ----------------------------------------------------------------

// Clicks and waits until the dialog has handled the click (no nested box
// opens here, so the synchronous click cannot block).
bool ClickNow(HWND dialog, int id) {
    if (!DialogDriver::Enabled(dialog, id)) return false;
    SendMessageA(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
    return true;
}

TEST(SaveAsDlg, OpensEmptyInTheUsersLanguageAndCancels) {
    testing_support::ScratchDir dir;
    testing_support::WriteText(dir.File("lexicon.ini"),
                               "[ZEMBLAX_1033]\r\n2.15043=Save template as\r\n"
                               "2.15046=Enter a new name:\r\n1.1=Okay\r\n1.2=Cancel\r\n"
                               "1.32908=Untitled\r\n");
    hoststub::AutomationOptions o;
    o.userLanguage = 1033;
    o.lexiconFile = dir.File("lexicon.ini");
    ASSERT_TRUE(hoststub::RegisterAutomation(o));

    DialogDriver driver;
    std::string caption, prompt, ok, cancel, name = "?";
    auto user = std::async(std::launch::async, [&] {
        HWND dlg = driver.WaitFor(IDC_SAVE_AS_NAME);
        if (!dlg) return;
        caption = DialogDriver::Text(dlg);
        prompt = DialogDriver::ItemText(dlg, IDC_SAVE_AS_PROMPT);
        ok = DialogDriver::ItemText(dlg, IDOK);
        cancel = DialogDriver::ItemText(dlg, IDCANCEL);
        name = DialogDriver::ItemText(dlg, IDC_SAVE_AS_NAME);
        if (!DialogDriver::Click(dlg, IDCANCEL)) driver.DismissAll();
    });
    CSaveAsDlg dlg;
    const INT_PTR result = dlg.DoModal();
    user.get();
    hoststub::RevokeAutomation();
    GetTextService().SetLanguage(0);

    EXPECT_EQ(IDCANCEL, result);
    EXPECT_EQ("Save template as", caption);
    EXPECT_EQ("Enter a new name:", prompt);
    EXPECT_EQ("Okay", ok);
    EXPECT_EQ("Cancel", cancel);
    EXPECT_EQ("", name) << "the default name is fetched and dropped: the user types a new one";
}

TEST(SaveAsDlg, AcceptsOneTo127CharactersAsTyped) {
    BeepRecorder beeps;
    DialogDriver driver;
    // Blanks at both ends stay: 127 characters in all.
    const std::string longest = " " + std::string(125, 'x') + " ";
    bool openWhenEmpty = false, openWith128 = false;
    auto user = std::async(std::launch::async, [&] {
        HWND dlg = driver.WaitFor(IDC_SAVE_AS_NAME);
        if (!dlg) return;
        HWND edit = GetDlgItem(dlg, IDC_SAVE_AS_NAME);
        ClickNow(dlg, IDOK);
        openWhenEmpty = IsWindowVisible(dlg) != FALSE;
        SetWindowTextA(edit, (longest + "y").c_str());
        ClickNow(dlg, IDOK);
        openWith128 = IsWindowVisible(dlg) != FALSE;
        SetWindowTextA(edit, longest.c_str());
        ClickNow(dlg, IDOK);
        if (!DialogDriver::WaitGone(dlg, 2000)) driver.DismissAll();
    });
    CSaveAsDlg dlg;
    const INT_PTR result = dlg.DoModal();
    user.get();

    EXPECT_TRUE(openWhenEmpty);
    EXPECT_TRUE(openWith128);
    EXPECT_EQ((std::vector<UINT>{MB_ICONASTERISK, MB_ICONASTERISK}), beeps.Take());
    EXPECT_EQ(IDOK, result);
    EXPECT_EQ(longest, dlg.GetName());
}

// ---- Sensor palette ----------------------------------------------------------

void Pump(int ms = 60) {
    const DWORD end = GetTickCount() + ms;
    do {
        MSG m;
        while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            DispatchMessageA(&m);
        }
        Sleep(5);
    } while (GetTickCount() < end);
}

void SendMouse(DWORD flags, POINT screen = {}) {
    INPUT in{};
    in.type = INPUT_MOUSE;
    in.mi.dwFlags = flags;
    if (flags & MOUSEEVENTF_MOVE) {
        const int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
        in.mi.dwFlags |= MOUSEEVENTF_ABSOLUTE;
        in.mi.dx = (screen.x * 65536 + w - 1) / w;
        in.mi.dy = (screen.y * 65536 + h - 1) / h;
    }
    SendInput(1, &in, sizeof in);
    Pump();
}

// Behaves as the configure dialog does: takes the capture for the drop
// target, if there is one, and gives it back at the end of the drag.
class Owner : public CTakeListOwner {
public:
    void BeginDrag(int index) override {
        begun.push_back(index);
        heldAtBegin.push_back(GetKeyState(VK_LBUTTON) < 0);
        if (target) SetCapture(target);
    }
    int EndDrag() override {
        ++ended;
        if (target && GetCapture() == target) ReleaseCapture();
        return 0;
    }
    HWND target = nullptr;
    std::vector<int> begun;
    std::vector<bool> heldAtBegin;
    int ended = 0;
};

// Stands for the tooth chart: counts the releases it receives and ends the
// drag there, giving the capture back.
class DropTarget : public fw::Window {
public:
    int releases = 0;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == WM_LBUTTONUP) {
            ++releases;
            if (GetCapture() == hwnd()) ReleaseCapture();
        }
        return Default(msg, wp, lp);
    }
};

// A popup with the palette's list view (the styles of the configure dialog's
// control) at the left and a drop target at the right.
class Palette : public testing::Test {
protected:
    static constexpr int kLeft = 140, kTop = 120;

    void Open(const std::string& settingsText = StandardSettings()) {
        settings = std::make_unique<SettingsFile>(settingsText);
        ASSERT_TRUE(settings->loaded());
        OpenWindows();
        ASSERT_TRUE(list->Init(&owner));
        Pump();
    }
    void OpenWindows() {
        static const bool controls = [] {
            INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES};
            return InitCommonControlsEx(&icc) != FALSE;
        }();
        (void)controls;
        popup = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "", WS_POPUP | WS_VISIBLE, kLeft, kTop,
                                420, 330, nullptr, nullptr, nullptr, nullptr);
        listWindow = CreateWindowExA(
            0, WC_LISTVIEWA, "List1",
            WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | LVS_ICON | LVS_SINGLESEL |
                LVS_SHOWSELALWAYS | LVS_ALIGNLEFT | LVS_NOCOLUMNHEADER,
            0, 0, 120, 330, popup, reinterpret_cast<HMENU>(IDC_TAKE_LIST), nullptr, nullptr);
        targetWindow = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_BLACKFRAME, 200,
                                       0, 220, 330, popup, nullptr, nullptr, nullptr);
        list = std::make_unique<CTakeListCtrl>();
        list->Attach(listWindow);
        target.Subclass(targetWindow);
    }
    void CloseWindows(bool controlFirst) {
        if (controlFirst) list.reset();
        if (popup) DestroyWindow(popup);
        popup = nullptr;
        list.reset();
    }
    void TearDown() override {
        SendMouse(MOUSEEVENTF_MOVE, {5, 5});
        if (GetKeyState(VK_LBUTTON) < 0) SendMouse(MOUSEEVENTF_LEFTUP);
        ReleaseCapture();
        CloseWindows(false);
        settings.reset();
    }
    POINT ItemCentre(int index) const {
        RECT r{};
        ListView_GetItemRect(listWindow, index, &r, LVIR_ICON);
        POINT p{(r.left + r.right) / 2, (r.top + r.bottom) / 2};
        ClientToScreen(listWindow, &p);
        return p;
    }
    std::string ItemText(int index) const {
        char text[64] = {};
        ListView_GetItemText(listWindow, index, 0, text, sizeof text);
        return text;
    }
    int ItemImage(int index) const {
        LVITEMA item{};
        item.mask = LVIF_IMAGE;
        item.iItem = index;
        SendMessageA(listWindow, LVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));
        return item.iImage;
    }

    std::unique_ptr<SettingsFile> settings;
    HWND popup = nullptr, listWindow = nullptr, targetWindow = nullptr;
    Owner owner;
    DropTarget target;
    std::unique_ptr<CTakeListCtrl> list;
};

// A 32 x 32 picture on white, drawn by `draw` into a memory DC.
template <typename Draw>
std::vector<DWORD> Picture(Draw draw) {
    fw::UniqueBitmap bmp(testing_support::FilledBitmap(32, 32, WHITENESS));
    {
        fw::UniqueDC dc(CreateCompatibleDC(nullptr));
        fw::SelectObj sel(dc.get(), bmp.get());
        draw(dc.get());
    }
    int w, h;
    return BitmapPixels(bmp.get(), w, h);
}

TEST_F(Palette, TwoEntriesPerSensorHorizontalThenVertical) {
    Open();
    ASSERT_EQ(4, ListView_GetItemCount(listWindow));
    EXPECT_EQ("Gross", ItemText(0));
    EXPECT_EQ("Gross", ItemText(1));
    EXPECT_EQ("Klein", ItemText(2));
    EXPECT_EQ("Klein", ItemText(3));
    HIMAGELIST icons = ListView_GetImageList(listWindow, LVSIL_NORMAL);
    ASSERT_NE(nullptr, icons);
    int cx = 0, cy = 0;
    ImageList_GetIconSize(icons, &cx, &cy);
    EXPECT_EQ(32, cx);
    EXPECT_EQ(32, cy);
    ASSERT_EQ(4, ImageList_GetImageCount(icons));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(i, ItemImage(i));
        const CSensor* entry = TheSettings().GetPaletteEntry(i);
        ASSERT_NE(nullptr, entry);
        EXPECT_EQ(i % 2 == 1, entry->IsVertical());
        const auto shown = Picture([&](HDC dc) { ImageList_Draw(icons, i, dc, 0, 0, ILD_NORMAL); });
        const auto icon = Picture([&](HDC dc) {
            DrawIconEx(dc, 0, 0, entry->GetIcon(), 32, 32, 0, nullptr, DI_NORMAL);
        });
        EXPECT_EQ(icon, shown) << "image " << i << " is the icon of palette entry " << i;
    }
    EXPECT_NE(Picture([&](HDC dc) { ImageList_Draw(icons, 0, dc, 0, 0, ILD_NORMAL); }),
              Picture([&](HDC dc) { ImageList_Draw(icons, 1, dc, 0, 0, ILD_NORMAL); }))
        << "a lying sensor and a standing one look different";
    EXPECT_EQ(0, ListView_GetNextItem(listWindow, -1, LVNI_SELECTED | LVNI_FOCUSED));

}

TEST_F(Palette, PressOnAnEntryBeginsItsDragAndTheReleaseEndsIt) {
    Open();
    SendMouse(MOUSEEVENTF_MOVE, ItemCentre(3));
    SendMouse(MOUSEEVENTF_LEFTDOWN);
    EXPECT_EQ(std::vector<int>{3}, owner.begun) << "entry 3: sensor 2, vertical";
    EXPECT_EQ(3, ListView_GetNextItem(listWindow, -1, LVNI_SELECTED | LVNI_FOCUSED));
    EXPECT_EQ(0, owner.ended);
    SendMouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ(1, owner.ended);
    EXPECT_EQ(std::vector<int>{3}, owner.begun);
}

TEST_F(Palette, DraggedTowardsTheTargetTheTargetGetsTheRelease) {
    Open();
    owner.target = targetWindow;
    SendMouse(MOUSEEVENTF_MOVE, ItemCentre(1));
    SendMouse(MOUSEEVENTF_LEFTDOWN);
    const POINT from = ItemCentre(1);
    for (int step = 1; step <= 6; ++step)
        SendMouse(MOUSEEVENTF_MOVE, {from.x + step * 8, from.y + step});
    SendMouse(MOUSEEVENTF_MOVE, {kLeft + 300, kTop + 150});
    SendMouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ(std::vector<int>{1}, owner.begun);
    EXPECT_EQ(std::vector<bool>{true}, owner.heldAtBegin) << "begun while the button was down";
    EXPECT_EQ(1, target.releases);
    EXPECT_EQ(0, owner.ended) << "the release went to the target, not to the list";

    // The list missed that release; the next press starts a drag all the same.
    owner.target = nullptr;
    SendMouse(MOUSEEVENTF_MOVE, ItemCentre(0));
    SendMouse(MOUSEEVENTF_LEFTDOWN);
    SendMouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ((std::vector<int>{1, 0}), owner.begun);
    EXPECT_EQ(1, owner.ended);
}

TEST_F(Palette, EmptyPaletteStartsNothing) {
    Open("");
    EXPECT_EQ(0, ListView_GetItemCount(listWindow));
    SendMouse(MOUSEEVENTF_MOVE, {kLeft + 40, kTop + 40});
    SendMouse(MOUSEEVENTF_LEFTDOWN);
    SendMouse(MOUSEEVENTF_LEFTUP);
    EXPECT_TRUE(owner.begun.empty());
}

TEST_F(Palette, OpeningAndClosingLeavesNoGdiObjects) {
    settings = std::make_unique<SettingsFile>();
    ASSERT_TRUE(settings->loaded());
    auto round = [&](bool controlFirst) {
        OpenWindows();
        list->Init(&owner);
        Pump(10);
        CloseWindows(controlFirst);
    };
    round(false);
    round(true);
    { fw::WindowDC warmUp(nullptr); }
    const int before = GdiObjectCount();
    for (int i = 0; i < 10; ++i) round(i % 2 == 0);
    EXPECT_EQ(before, GdiObjectCount());
}

}  // namespace

