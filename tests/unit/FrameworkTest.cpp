// The framework layer on real windows: handle owners, subclasses sharing a
// window, lost capture, the dialog's message fallback and placement, popup
// menus, list views and who destroys their image lists, off-screen painting.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <future>
#include <string>
#include <type_traits>
#include <vector>
#include "../dll/DialogDriver.h"
#include "TestSupport.h"
#include "fw/Dialog.h"
#include "fw/Handle.h"
#include "fw/ListView.h"
#include "fw/OffscreenBuffer.h"
#include "fw/PopupMenu.h"
#include "fw/Window.h"
#include "res/resource.h"
#include "ui/SelectionDlg.h"

namespace {

using testing_support::GdiObjectCount;

// After the first GetDC of the process, which caches objects of its own.
int SettledGdiCount() {
    { fw::WindowDC warmUp(nullptr); }
    return GdiObjectCount();
}

// A visible popup with one child control, as a dialog holds its controls.
class Host {
public:
    explicit Host(const char* cls = "STATIC", DWORD style = 0, int x = 100, int y = 100) {
        static const bool controls = [] {
            INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES};
            return InitCommonControlsEx(&icc) != FALSE;
        }();
        (void)controls;
        m_popup = CreateWindowExA(0, "STATIC", "", WS_POPUP | WS_VISIBLE, x, y, 320, 240, nullptr,
                                  nullptr, nullptr, nullptr);
        m_child = CreateWindowExA(0, cls, "", WS_CHILD | WS_VISIBLE | style, 10, 10, 260, 200,
                                  m_popup, nullptr, nullptr, nullptr);
    }
    ~Host() { Destroy(); }
    void Destroy() {
        if (IsWindow(m_popup)) DestroyWindow(m_popup);
    }
    HWND popup() const { return m_popup; }
    HWND child() const { return m_child; }

private:
    HWND m_popup, m_child;
};

void Pump() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

// ---------------------------------------------------------------- handles

template <typename T>
constexpr bool kMoveOnly = !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T> &&
                           std::is_nothrow_move_constructible_v<T> &&
                           std::is_nothrow_move_assignable_v<T>;
static_assert(kMoveOnly<fw::UniqueBrush> && kMoveOnly<fw::UniqueBitmap> &&
              kMoveOnly<fw::UniqueDC> && kMoveOnly<fw::UniqueRgn> &&
              kMoveOnly<fw::UniqueGlobal> && kMoveOnly<fw::UniqueImageList> &&
              kMoveOnly<fw::UniqueMenu> && kMoveOnly<fw::PopupMenu>,
              "a handle owner can be moved, never copied");
static_assert(!std::is_copy_constructible_v<fw::WindowDC> &&
              !std::is_copy_constructible_v<fw::SelectObj> &&
              !std::is_copy_constructible_v<fw::OffscreenBuffer> &&
              !std::is_copy_constructible_v<fw::ListView>,
              "scoped owners stay where they were made");

TEST(HandleOwners, MovesTransferAndResetReleasesExactlyOnce) {
    const int before = SettledGdiCount();
    fw::UniqueBrush a(CreateSolidBrush(RGB(1, 2, 3)));
    const HBRUSH first = a.get();
    fw::UniqueBrush b(std::move(a));
    EXPECT_EQ(nullptr, a.get());
    EXPECT_EQ(first, b.get());
    EXPECT_EQ(before + 1, GdiObjectCount()) << "a move creates and frees nothing";

    fw::UniqueBrush c(CreateSolidBrush(RGB(4, 5, 6)));
    EXPECT_EQ(before + 2, GdiObjectCount());
    c = std::move(b);  // c's own brush goes
    EXPECT_EQ(before + 1, GdiObjectCount());
    EXPECT_EQ(first, c.get());
    EXPECT_EQ(static_cast<DWORD>(OBJ_BRUSH), GetObjectType(first));

    c.reset();
    EXPECT_EQ(before, GdiObjectCount());
    EXPECT_EQ(0u, GetObjectType(first));
    // The next brush may get the freed handle's value: emptied owners must
    // not release it again.
    fw::UniqueBrush d(CreateSolidBrush(RGB(7, 8, 9)));
    c.reset();
    { fw::UniqueBrush gone(std::move(a)); }
    { fw::UniqueBrush gone(std::move(b)); }
    EXPECT_EQ(static_cast<DWORD>(OBJ_BRUSH), GetObjectType(d.get()));
    EXPECT_EQ(before + 1, GdiObjectCount());
}

TEST(HandleOwners, SelectObjPutsThePreviousObjectBack) {
    fw::WindowDC screen(nullptr);
    fw::UniqueDC dc(CreateCompatibleDC(screen.get()));
    const HGDIOBJ original = GetCurrentObject(dc.get(), OBJ_BRUSH);
    fw::UniqueBrush brush(CreateSolidBrush(RGB(200, 0, 0)));
    {
        fw::SelectObj sel(dc.get(), brush.get());
        EXPECT_EQ(brush.get(), GetCurrentObject(dc.get(), OBJ_BRUSH));
    }
    EXPECT_EQ(original, GetCurrentObject(dc.get(), OBJ_BRUSH));
}

// ---------------------------------------------------------------- windows

constexpr UINT kPing = WM_APP + 1;

class Watcher : public fw::Window {
public:
    int pings = 0, captureLost = 0;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == kPing) ++pings;
        return Default(msg, wp, lp);
    }
    void OnCaptureLost() override { ++captureLost; }
};

TEST(Window, TwoObjectsSubclassOneWindowAndLeaveIndependently) {
    Host host;
    Watcher first, second;
    ASSERT_TRUE(first.Subclass(host.child()));
    ASSERT_TRUE(second.Subclass(host.child()));
    SendMessageA(host.child(), kPing, 0, 0);
    EXPECT_EQ(1, first.pings);
    EXPECT_EQ(1, second.pings);

    first.Unsubclass();
    SendMessageA(host.child(), kPing, 0, 0);
    EXPECT_EQ(1, first.pings) << "removed";
    EXPECT_EQ(2, second.pings) << "still subclassed after the other left";

    ASSERT_TRUE(first.Subclass(host.child()));
    second.Unsubclass();
    SendMessageA(host.child(), kPing, 0, 0);
    EXPECT_EQ(2, first.pings);
    EXPECT_EQ(2, second.pings);

    host.Destroy();
    EXPECT_EQ(nullptr, first.hwnd()) << "forgets the destroyed window";
}

TEST(Window, LosingTheCaptureToAnotherWindowIsReported) {
    Host host;
    Watcher control;
    ASSERT_TRUE(control.Subclass(host.child()));
    SetCapture(host.child());
    SetCapture(host.child());
    EXPECT_EQ(0, control.captureLost) << "taking it again loses nothing";
    SetCapture(host.popup());
    EXPECT_EQ(1, control.captureLost);
    SetCapture(host.child());
    ReleaseCapture();
    EXPECT_EQ(2, control.captureLost) << "released: no one has it now";
    ReleaseCapture();
    EXPECT_EQ(2, control.captureLost);
}

// ---------------------------------------------------------------- dialogs

constexpr UINT kAsk = WM_APP + 2;

// The finish dialog's template serves as any dialog.
class ProbeDialog : public fw::Dialog {
public:
    ProbeDialog() : fw::Dialog(IDD_FINISH, nullptr) {}
    std::vector<std::pair<HWND, POINT>> contextMenus;
    fw::UniqueBrush background{CreateSolidBrush(RGB(0, 128, 0))};

protected:
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        switch (msg) {
        case kAsk:
            result = static_cast<LRESULT>(wp) * 2;
            return true;
        case WM_CONTEXTMENU:
            contextMenus.push_back({reinterpret_cast<HWND>(wp),
                                    POINT{static_cast<short>(LOWORD(lp)),
                                          static_cast<short>(HIWORD(lp))}});
            return true;
        case WM_CTLCOLORDLG:
            result = reinterpret_cast<LRESULT>(background.get());
            return true;
        default:
            return false;
        }
    }
};

TEST(Dialog, MessagesBeyondTheBaseReachTheDerivedDialog) {
    ProbeDialog dlg;
    ASSERT_TRUE(dlg.Create(nullptr));
    SetWindowPos(dlg.hwnd(), nullptr, 200, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW);
    Pump();
    EXPECT_EQ(42, SendMessageA(dlg.hwnd(), kAsk, 21, 0)) << "a user message and its result";
    EXPECT_EQ(reinterpret_cast<LRESULT>(dlg.background.get()),
              SendMessageA(dlg.hwnd(), WM_CTLCOLORDLG, 0, reinterpret_cast<LPARAM>(dlg.hwnd())))
        << "colour messages return their brush directly";
    SetWindowTextA(dlg.hwnd(), "Neu");
    EXPECT_EQ("Neu", DialogDriver::Text(dlg.hwnd())) << "what the dialog leaves keeps its default";

    // A right click on a button, through the system's input queue; the
    // cursor goes back afterwards, since painting elsewhere follows it.
    POINT cursor;
    GetCursorPos(&cursor);
    RECT button;
    GetWindowRect(dlg.Item(IDC_FINISH_NEXT), &button);
    const POINT at{(button.left + button.right) / 2, (button.top + button.bottom) / 2};
    SetCursorPos(at.x, at.y);
    INPUT clicks[2]{};
    clicks[0].type = clicks[1].type = INPUT_MOUSE;
    clicks[0].mi.dwFlags = MOUSEEVENTF_RIGHTDOWN;
    clicks[1].mi.dwFlags = MOUSEEVENTF_RIGHTUP;
    SendInput(2, clicks, sizeof(INPUT));
    for (int i = 0; i < 50 && dlg.contextMenus.empty(); ++i) {
        Pump();
        Sleep(10);
    }
    SetCursorPos(cursor.x, cursor.y);
    ASSERT_EQ(1u, dlg.contextMenus.size());
    EXPECT_EQ(dlg.Item(IDC_FINISH_NEXT), dlg.contextMenus[0].first);
    EXPECT_EQ(at.x, dlg.contextMenus[0].second.x);
    EXPECT_EQ(at.y, dlg.contextMenus[0].second.y);
}

// Runs the selection dialog over `owner`; its window rectangle as shown.
RECT SelectionDialogRect(HWND owner, const std::string& catalog) {
    CSelectionDlg dlg(catalog, owner);
    DialogDriver user;
    auto shown = std::async(std::launch::async, [&] {
        RECT r{};
        HWND w = user.WaitFor(IDC_SELECTION_LIST);
        if (w) {
            GetWindowRect(w, &r);
            DialogDriver::Click(w, IDCANCEL);
        }
        return r;
    });
    dlg.DoModal();
    return shown.get();
}

TEST(Dialog, CentringKeepsTheDialogInsideTheWorkArea) {
    testing_support::ScratchDir dir;
    const std::string catalog = dir.File("Zemblax.ini");
    testing_support::WriteText(catalog, "[Template1]\r\nName=A\r\n");
    MONITORINFO monitor{sizeof monitor};
    GetMonitorInfoA(MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const RECT work = monitor.rcWork;
    const int ow = 300, oh = 200;
    const struct {
        const char* where;
        int x, y;
        bool roomAround;
    } owners[] = {
        {"bottom right", work.right - ow, work.bottom - oh, false},
        {"top left, partly off the screen", work.left - ow / 2, work.top - oh / 2, false},
        {"centre", (work.left + work.right - ow) / 2, (work.top + work.bottom - oh) / 2, true},
    };
    for (const auto& o : owners) {
        SCOPED_TRACE(o.where);
        HWND owner = CreateWindowExA(0, "STATIC", "Host", WS_POPUP | WS_CAPTION | WS_VISIBLE, o.x,
                                     o.y, ow, oh, nullptr, nullptr, nullptr, nullptr);
        const RECT r = SelectionDialogRect(owner, catalog);
        DestroyWindow(owner);
        ASSERT_GT(r.bottom - r.top, oh) << "the dialog is taller than its owner";
        EXPECT_GE(r.left, work.left);
        EXPECT_GE(r.top, work.top);
        EXPECT_LE(r.right, work.right);
        EXPECT_LE(r.bottom, work.bottom) << "OK and Abbrechen must stay on the screen";
        if (o.roomAround) {
            EXPECT_NEAR(o.x + ow / 2, (r.left + r.right) / 2, 1) << "centred where there is room";
            EXPECT_NEAR(o.y + oh / 2, (r.top + r.bottom) / 2, 1);
        }
    }
}

// ---------------------------------------------------------------- menus

// The layout canvas's context menu: its command ids are its texts' ids.
constexpr UINT kZoomIn = IDS_MENU_ZOOM_IN, kZoomOut = IDS_MENU_ZOOM_OUT, kDelete = IDS_MENU_DELETE;
constexpr UINT kSensor = 32814;  // the first sensor's entry

BOOL CALLBACK FindMenuWindow(HWND h, LPARAM lp) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::string(cls) != "#32768" || !IsWindowVisible(h)) return TRUE;
    *reinterpret_cast<HWND*>(lp) = h;
    return FALSE;
}

// A person at the keyboard: waits for the open popup menu of `thread` and
// presses the keys in it. Escapes when no menu opens, so no test hangs.
std::future<bool> PressInMenu(std::vector<UINT> keys) {
    const DWORD thread = GetCurrentThreadId();
    return std::async(std::launch::async, [thread, keys] {
        HWND menu = nullptr;
        for (int waited = 0; waited < 5000 && !menu; waited += 10) {
            EnumThreadWindows(thread, FindMenuWindow, reinterpret_cast<LPARAM>(&menu));
            if (!menu) Sleep(10);
        }
        if (!menu) return false;
        for (UINT key : keys) {
            PostMessageA(menu, WM_KEYDOWN, key, 1);
            PostMessageA(menu, WM_KEYUP, key, 0xC0000001);
            Sleep(30);
        }
        return true;
    });
}

fw::PopupMenu ContextMenu() {
    fw::PopupMenu menu;
    menu.AppendItem(kZoomIn, "Zoom +");
    menu.AppendItem(kZoomOut, "Zoom -");
    menu.AppendSeparator();
    menu.AppendItem(kDelete, "L\xF6schen");
    return menu;
}

constexpr UINT kCanvasFlags = TPM_RIGHTBUTTON | TPM_LEFTALIGN;

TEST(PopupMenu, ReturnsTheCommandChosenWithTheKeyboard) {
    Host host;
    fw::PopupMenu menu = ContextMenu();
    ASSERT_TRUE(menu);
    ASSERT_TRUE(menu.Check(kZoomOut, true));
    ASSERT_TRUE(menu.Enable(kZoomIn, false));
    EXPECT_EQ(static_cast<UINT>(MF_CHECKED), GetMenuState(menu.get(), kZoomOut, MF_BYCOMMAND));
    EXPECT_EQ(static_cast<UINT>(MF_GRAYED), GetMenuState(menu.get(), kZoomIn, MF_BYCOMMAND));

    auto user = PressInMenu({VK_DOWN, VK_DOWN, VK_RETURN});
    EXPECT_EQ(kZoomOut, menu.Track(host.popup(), POINT{150, 150}, kCanvasFlags | TPM_RETURNCMD));
    EXPECT_TRUE(user.get());

    user = PressInMenu({VK_ESCAPE});
    EXPECT_EQ(0u, menu.Track(host.popup(), POINT{150, 150}, kCanvasFlags | TPM_RETURNCMD))
        << "Escape chooses nothing";
    EXPECT_TRUE(user.get());
}

class CommandSink : public fw::Window {
public:
    std::vector<WORD> commands;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        if (msg == WM_COMMAND) commands.push_back(LOWORD(wp));
        return Default(msg, wp, lp);
    }
};

TEST(PopupMenu, PostsTheChosenCommandToTheControlThatOwnsIt) {
    Host host;
    CommandSink control;
    ASSERT_TRUE(control.Subclass(host.child()));
    fw::PopupMenu menu = ContextMenu();
    POINT at{40, 40};
    ClientToScreen(host.child(), &at);
    auto user = PressInMenu({VK_UP, VK_RETURN});  // from the bottom: Löschen
    EXPECT_NE(0u, menu.Track(host.child(), at, kCanvasFlags));
    EXPECT_TRUE(user.get());
    Pump();
    EXPECT_EQ(std::vector<WORD>{kDelete}, control.commands);
}

TEST(PopupMenu, ASubMenuWorksAndDiesWithItsParent) {
    Host host;
    HMENU inner;
    {
        fw::PopupMenu sensors;
        sensors.AppendItem(kSensor, "Gross");
        sensors.AppendItem(kSensor + 1, "Klein");
        inner = sensors.get();
        fw::PopupMenu menu = ContextMenu();
        ASSERT_TRUE(menu.AppendSubMenu(std::move(sensors), "Sensor"));
        EXPECT_FALSE(sensors) << "the parent owns it now";
        EXPECT_EQ(inner, GetSubMenu(menu.get(), 4));

        auto user = PressInMenu({VK_UP, VK_RIGHT, VK_DOWN, VK_RETURN});
        EXPECT_EQ(kSensor + 1, menu.Track(host.popup(), POINT{150, 150},
                                          kCanvasFlags | TPM_RETURNCMD));
        EXPECT_TRUE(user.get());
        EXPECT_TRUE(IsMenu(inner));
    }
    EXPECT_FALSE(IsMenu(inner)) << "destroyed with its parent";
}

// ---------------------------------------------------------------- list views

// Watches this program's calls of ImageList_Destroy: which list, and whether
// the call found a live list.
class ImageListDestroyWatch {
public:
    struct Call {
        HIMAGELIST list;
        BOOL ok;
    };
    ImageListDestroyWatch() {
        s_calls.clear();
        s_real = reinterpret_cast<Destroy>(testing_support::PatchImport(
            GetModuleHandleA(nullptr), "comctl32.dll", "ImageList_Destroy",
            reinterpret_cast<void*>(&Hook)));
    }
    ~ImageListDestroyWatch() {
        if (s_real)
            testing_support::PatchImport(GetModuleHandleA(nullptr), "comctl32.dll",
                                         "ImageList_Destroy", reinterpret_cast<void*>(s_real));
    }
    bool active() const { return s_real != nullptr; }
    const std::vector<Call>& calls() const { return s_calls; }
    int CallsFor(HIMAGELIST list) const {
        int n = 0;
        for (const Call& c : s_calls) n += c.list == list;
        return n;
    }
    int Failed() const {
        int n = 0;
        for (const Call& c : s_calls) n += !c.ok;
        return n;
    }

private:
    using Destroy = BOOL(WINAPI*)(HIMAGELIST);
    static BOOL WINAPI Hook(HIMAGELIST list) {
        const BOOL ok = s_real(list);
        s_calls.push_back({list, ok});
        return ok;
    }
    static inline Destroy s_real = nullptr;
    static inline std::vector<Call> s_calls;
};

// A small image list with two images: a live list counts 2, a freed one 0.
fw::UniqueImageList TwoImages() {
    fw::UniqueImageList list(ImageList_Create(16, 16, ILC_COLOR24, 2, 2));
    for (int i = 0; i < 2; ++i) {
        fw::UniqueBitmap picture = testing_support::FilledBitmap(16, 16);
        ImageList_Add(list.get(), picture.get(), nullptr);
    }
    return list;
}

constexpr DWORD kReport = LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOCOLUMNHEADER;

std::string ItemText(HWND list, int index) {
    char buf[64] = {};
    LVITEMA item{};
    item.pszText = buf;
    item.cchTextMax = sizeof buf;
    SendMessageA(list, LVM_GETITEMTEXTA, index, reinterpret_cast<LPARAM>(&item));
    return buf;
}

TEST(ListView, ItemsKeepTheirTextAndDataAndAClickSelects) {
    Host host(WC_LISTVIEWA, kReport);
    fw::ListView list;
    ASSERT_TRUE(list.Attach(host.child()));
    list.SetExtendedStyle(list.GetExtendedStyle() | LVS_EX_FULLROWSELECT);
    EXPECT_TRUE(ListView_GetExtendedListViewStyle(host.child()) & LVS_EX_FULLROWSELECT);
    EXPECT_EQ(0, list.InsertColumn(0, "", 200));
    EXPECT_EQ(0, list.InsertItem(0, "A", -1, 10));
    EXPECT_EQ(1, list.InsertItem(1, "C", -1, 30));
    EXPECT_EQ(1, list.InsertItem(1, "B", -1, 20)) << "inserted before C";
    ASSERT_EQ(3, list.GetItemCount());
    EXPECT_EQ("B", ItemText(host.child(), 1));
    EXPECT_EQ(20, list.GetItemData(1));
    EXPECT_EQ(30, list.GetItemData(2));
    EXPECT_EQ(0, list.GetItemData(3)) << "no such item";
    EXPECT_EQ(-1, list.GetSelection());

    EXPECT_TRUE(list.SetSelection(2));
    EXPECT_EQ(2, list.GetSelection());
    EXPECT_EQ(2, list.GetNextItem(-1, LVNI_FOCUSED));
    EXPECT_TRUE(list.SetSelection(0));
    EXPECT_EQ(0, list.GetSelection());
    EXPECT_EQ(-1, list.GetNextItem(0, LVNI_SELECTED)) << "single selection";

    RECT row{LVIR_BOUNDS};
    SendMessageA(host.child(), LVM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&row));
    const LPARAM at = MAKELPARAM(row.left + 5, (row.top + row.bottom) / 2);
    PostMessageA(host.child(), WM_LBUTTONDOWN, MK_LBUTTON, at);
    PostMessageA(host.child(), WM_LBUTTONUP, 0, at);
    Pump();
    EXPECT_EQ(1, list.GetSelection()) << "the clicked row";
    EXPECT_TRUE(list.SetSelection(-1));
    EXPECT_EQ(-1, list.GetSelection());
    EXPECT_TRUE(list.DeleteAllItems());
    EXPECT_EQ(0, list.GetItemCount());
}

TEST(ListView, AnImageListOutlivesItsControlAndIsDestroyedOnce) {
    for (DWORD shared : {DWORD{0}, DWORD{LVS_SHAREIMAGELISTS}}) {
        SCOPED_TRACE(shared ? "shared image lists" : "the control's own image lists");
        ImageListDestroyWatch watch;
        ASSERT_TRUE(watch.active());
        HIMAGELIST small;
        {
            fw::ListView list;
            {
                Host host(WC_LISTVIEWA, kReport | shared);
                ASSERT_TRUE(list.Attach(host.child()));
                fw::UniqueImageList images = TwoImages();
                small = images.get();
                ASSERT_TRUE(list.SetImageList(std::move(images), LVSIL_SMALL));
                EXPECT_FALSE(images) << "kept by the list view";
                EXPECT_EQ(small, ListView_GetImageList(host.child(), LVSIL_SMALL));
                EXPECT_EQ(0, list.InsertItem(0, "A", 1));
                UpdateWindow(host.child());
            }
            EXPECT_EQ(2, ImageList_GetImageCount(small)) << "alive after its control";
            EXPECT_EQ(0, watch.CallsFor(small));
        }
        EXPECT_EQ(1, watch.CallsFor(small));
        EXPECT_EQ(0, watch.Failed());
    }
}

TEST(ListView, GoingBeforeItsControlTakesTheImageListsAlong) {
    ImageListDestroyWatch watch;
    ASSERT_TRUE(watch.active());
    Host host(WC_LISTVIEWA, LVS_ICON);
    fw::UniqueImageList borrowed = TwoImages();
    HIMAGELIST normal, replaced;
    {
        fw::ListView list;
        ASSERT_TRUE(list.Attach(host.child()));
        fw::UniqueImageList first = TwoImages();
        replaced = first.get();
        ASSERT_TRUE(list.SetImageList(std::move(first), LVSIL_NORMAL));
        fw::UniqueImageList second = TwoImages();
        normal = second.get();
        ASSERT_TRUE(list.SetImageList(std::move(second), LVSIL_NORMAL));
        EXPECT_EQ(1, watch.CallsFor(replaced)) << "the replaced list goes at once";
        ASSERT_TRUE(list.SetImageList(borrowed.get(), LVSIL_SMALL));
        EXPECT_EQ(borrowed.get(), ListView_GetImageList(host.child(), LVSIL_SMALL));
        EXPECT_FALSE(list.SetImageList(TwoImages(), 7)) << "no such image list";
    }
    EXPECT_EQ(nullptr, ListView_GetImageList(host.child(), LVSIL_NORMAL));
    EXPECT_EQ(nullptr, ListView_GetImageList(host.child(), LVSIL_SMALL));
    EXPECT_EQ(1, watch.CallsFor(normal));
    EXPECT_EQ(0, watch.CallsFor(borrowed.get())) << "a borrowed list stays with its owner";
    host.Destroy();
    EXPECT_EQ(2, ImageList_GetImageCount(borrowed.get()));
    const HIMAGELIST b = borrowed.get();
    borrowed.reset();
    EXPECT_EQ(1, watch.CallsFor(b));
    EXPECT_EQ(0, watch.Failed());
}

TEST(SelectionDialog, DestroysEachOfItsImageListsOnce) {
    testing_support::ScratchDir dir;
    const std::string catalog = dir.File("Zemblax.ini");
    for (const char* mode : {"0", "1"}) {
        SCOPED_TRACE(std::string("Mode=") + mode);
        testing_support::WriteText(
            catalog, std::string("[Template1]\r\nName=A\r\n[SelectionDlg]\r\nMode=") + mode + "\r\n");
        ImageListDestroyWatch watch;
        ASSERT_TRUE(watch.active());
        {
            CSelectionDlg dlg(catalog, nullptr);
            DialogDriver user;
            auto cancel = std::async(std::launch::async, [&] {
                HWND w = user.WaitFor(IDC_SELECTION_LIST);
                return w && DialogDriver::Click(w, IDCANCEL);
            });
            EXPECT_EQ(IDCANCEL, dlg.DoModal());
            EXPECT_TRUE(cancel.get());
        }
        ASSERT_EQ(2u, watch.calls().size()) << "names and thumbnails";
        EXPECT_NE(watch.calls()[0].list, watch.calls()[1].list);
        EXPECT_EQ(0, watch.Failed()) << "a list was already destroyed by the control";
    }
}

// ---------------------------------------------------------------- off-screen painting

class Canvas {
public:
    Canvas() : m_bitmap(testing_support::FilledBitmap(100, 80)) {
        fw::WindowDC screen(nullptr);
        m_dc.reset(CreateCompatibleDC(screen.get()));
        m_old = SelectObject(m_dc.get(), m_bitmap.get());
    }
    ~Canvas() { SelectObject(m_dc.get(), m_old); }
    HDC dc() const { return m_dc.get(); }
    COLORREF At(int x, int y) const { return GetPixel(m_dc.get(), x, y); }

private:
    fw::UniqueBitmap m_bitmap;
    fw::UniqueDC m_dc;
    HGDIOBJ m_old;
};

void Fill(HDC dc, RECT r, COLORREF color) {
    fw::UniqueBrush brush(CreateSolidBrush(color));
    FillRect(dc, &r, brush.get());
}

constexpr COLORREF kWhite = RGB(255, 255, 255), kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255);

TEST(OffscreenBuffer, ThePictureArrivesWholeWhenTheBufferGoes) {
    Canvas target;
    const int before = SettledGdiCount();
    {
        fw::OffscreenBuffer buffer(target.dc(), RECT{10, 20, 60, 50});
        ASSERT_TRUE(buffer);
        // The painter scales as it likes, as the tooth chart does: 1 unit = 10 pixels.
        SetMapMode(buffer.dc(), MM_ANISOTROPIC);
        SetWindowExtEx(buffer.dc(), 5, 3, nullptr);
        SetViewportExtEx(buffer.dc(), 50, 30, nullptr);
        Fill(buffer.dc(), RECT{0, 0, 5, 3}, kRed);
        EXPECT_EQ(kWhite, target.At(30, 30)) << "nothing reaches the target while painting";
    }
    EXPECT_EQ(kRed, target.At(10, 20));
    EXPECT_EQ(kRed, target.At(59, 49));
    EXPECT_EQ(kWhite, target.At(9, 20));
    EXPECT_EQ(kWhite, target.At(60, 49));
    EXPECT_EQ(kWhite, target.At(59, 50));
    EXPECT_EQ(before, GdiObjectCount()) << "the memory DC and its bitmap are gone";
}

TEST(OffscreenBuffer, AFlushIsTheOnlyCopy) {
    Canvas target;
    {
        fw::OffscreenBuffer buffer(target.dc(), RECT{0, 0, 40, 40});
        Fill(buffer.dc(), RECT{0, 0, 40, 40}, kRed);
        EXPECT_TRUE(buffer.Flush());
        EXPECT_EQ(kRed, target.At(20, 20));
        Fill(buffer.dc(), RECT{0, 0, 40, 40}, kBlue);
    }
    EXPECT_EQ(kRed, target.At(20, 20)) << "no second copy at the end";
}

TEST(OffscreenBuffer, AnEmptyRectangleGivesNoBuffer) {
    Canvas target;
    const int before = SettledGdiCount();
    {
        fw::OffscreenBuffer buffer(target.dc(), RECT{30, 30, 30, 60});
        EXPECT_FALSE(buffer);
        EXPECT_EQ(nullptr, buffer.dc());
        EXPECT_FALSE(buffer.Flush());
    }
    EXPECT_EQ(kWhite, target.At(30, 30));
    EXPECT_EQ(before, GdiObjectCount());
}

}  // namespace
