// The framework layer on real windows: handle owners, subclasses sharing a
// window, lost capture, the dialog's placement, list views and who destroys
// their image lists, off-screen painting, INI sections read once.
#include <gtest/gtest.h>
#include <algorithm>
#include "InputSupport.h"
#include "TestSupport.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
#include "fw/ListView.h"
#include "fw/OffscreenBuffer.h"
#include "fw/Window.h"
#include "res/resource.h"
#include "ui/SelectionDlg.h"

namespace {

using namespace input_support;
using testing_support::GdiObjectCount;

// After the first GetDC of the process, which caches objects of its own.
int SettledGdiCount() {
    { fw::WindowDC warmUp(nullptr); }
    return GdiObjectCount();
}

// A popup with one control, as a dialog holds its controls.
struct Host {
    explicit Host(const char* cls = "STATIC", DWORD style = 0)
        : child(popup.Add(cls, style, 10, 10, 260, 200)) {}
    Popup popup{100, 100, 320, 240};
    HWND child;
};

TEST(HandleOwners, MovesTransferAndEachHandleIsReleasedOnce) {
    const int before = SettledGdiCount();
    fw::UniqueBrush a(CreateSolidBrush(RGB(1, 2, 3)));
    const HBRUSH first = a.get();
    fw::UniqueBrush b(std::move(a)), c(CreateSolidBrush(RGB(4, 5, 6)));
    EXPECT_EQ(nullptr, a.get());
    EXPECT_EQ(before + 2, GdiObjectCount()) << "a move creates and frees nothing";
    c = std::move(b);  // c's own brush goes
    EXPECT_EQ(first, c.get());
    EXPECT_EQ(before + 1, GdiObjectCount());
    c.reset();
    EXPECT_EQ(0u, GetObjectType(first));
    // The next brush may get the freed handle's value: emptied owners must
    // not release it again.
    fw::UniqueBrush d(CreateSolidBrush(RGB(7, 8, 9)));
    c.reset();
    { fw::UniqueBrush gone(std::move(a)), gone2(std::move(b)); }
    EXPECT_EQ(static_cast<DWORD>(OBJ_BRUSH), GetObjectType(d.get()));
    EXPECT_EQ(before + 1, GdiObjectCount());
}

TEST(HandleOwners, SelectObjPutsThePreviousObjectBack) {
    fw::UniqueDC dc(CreateCompatibleDC(nullptr));
    const HGDIOBJ original = GetCurrentObject(dc.get(), OBJ_BRUSH);
    fw::UniqueBrush brush(CreateSolidBrush(RGB(200, 0, 0)));
    {
        fw::SelectObj sel(dc.get(), brush.get());
        EXPECT_EQ(brush.get(), GetCurrentObject(dc.get(), OBJ_BRUSH));
    }
    EXPECT_EQ(original, GetCurrentObject(dc.get(), OBJ_BRUSH));
}

constexpr UINT kPing = WM_APP + 1;

class Watcher : public fw::Window {
public:
    int pings = 0, captureLost = 0;

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override {
        pings += msg == kPing;
        return Default(msg, wp, lp);
    }
    void OnCaptureLost() override { ++captureLost; }
};

TEST(Window, TwoObjectsSubclassOneWindowAndLeaveIndependently) {
    Host host;
    Watcher first, second;
    ASSERT_TRUE(first.Subclass(host.child));
    ASSERT_TRUE(second.Subclass(host.child));
    const auto ping = [&] {
        SendMessageA(host.child, kPing, 0, 0);
        return std::make_pair(first.pings, second.pings);
    };
    EXPECT_EQ(std::make_pair(1, 1), ping()) << "the second did not replace the first";
    first.Unsubclass();
    EXPECT_EQ(std::make_pair(1, 2), ping()) << "the second stays after the first left";
    ASSERT_TRUE(first.Subclass(host.child));
    second.Unsubclass();
    EXPECT_EQ(std::make_pair(2, 2), ping());
    host.popup.Destroy();
    EXPECT_EQ(nullptr, first.hwnd()) << "forgets the destroyed window";
}

TEST(Window, LosingTheCaptureToAnotherWindowIsReported) {
    Host host;
    Watcher control;
    ASSERT_TRUE(control.Subclass(host.child));
    SetCapture(host.child);
    SetCapture(host.child);
    EXPECT_EQ(0, control.captureLost) << "taking it again loses nothing";
    SetCapture(host.popup.get());
    EXPECT_EQ(1, control.captureLost);
    SetCapture(host.child);
    ReleaseCapture();
    EXPECT_EQ(2, control.captureLost) << "released: no one has it now";
}

// Shows the selection dialog over `owner` and cancels it as a user does;
// returns its window rectangle as shown.
RECT ShowSelectionDialog(const std::string& catalog, HWND owner = nullptr) {
    RECT shown{};
    CSelectionDlg dlg(catalog, owner);
    DialogDriver user;
    auto cancel = std::async(std::launch::async, [&] {
        HWND w = user.WaitFor(IDC_SELECTION_LIST);
        if (w) GetWindowRect(w, &shown);
        return w && DialogDriver::Click(w, IDCANCEL);
    });
    EXPECT_EQ(IDCANCEL, dlg.DoModal());
    EXPECT_TRUE(cancel.get());
    return shown;
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
        {"centre", (work.left + work.right - ow) / 2, (work.top + work.bottom - oh) / 2, true},
        {"bottom right", work.right - ow, work.bottom - oh, false},
        {"top left, partly off the screen", work.left - ow / 2, work.top - oh / 2, false}};
    for (const auto& o : owners) {
        SCOPED_TRACE(o.where);
        HWND owner = CreateWindowExA(0, "STATIC", "Host", WS_POPUP | WS_CAPTION | WS_VISIBLE, o.x,
                                     o.y, ow, oh, nullptr, nullptr, nullptr, nullptr);
        const RECT r = ShowSelectionDialog(catalog, owner);
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

// Watches this program's calls of ImageList_Destroy: which list, and whether
// the call found a live list.
class ImageListDestroyWatch {
public:
    using Destroy = BOOL(WINAPI*)(HIMAGELIST);
    ImageListDestroyWatch() {
        calls.clear();
        s_real = reinterpret_cast<Destroy>(Patch(reinterpret_cast<void*>(&Hook)));
    }
    ~ImageListDestroyWatch() {
        if (s_real) Patch(reinterpret_cast<void*>(s_real));
    }
    int CallsFor(HIMAGELIST list) const {
        return std::count_if(calls.begin(), calls.end(), [&](auto& c) { return c.first == list; });
    }
    int Failed() const {
        return std::count_if(calls.begin(), calls.end(), [](auto& c) { return !c.second; });
    }
    static inline Destroy s_real = nullptr;
    static inline std::vector<std::pair<HIMAGELIST, BOOL>> calls;

private:
    static void* Patch(void* to) {
        return testing_support::PatchImport(GetModuleHandleA(nullptr), "comctl32.dll",
                                            "ImageList_Destroy", to);
    }
    static BOOL WINAPI Hook(HIMAGELIST list) {
        calls.push_back({list, s_real(list)});
        return calls.back().second;
    }
};

// A small image list with two images: a live list counts 2, a freed one 0.
fw::UniqueImageList TwoImages() {
    fw::UniqueImageList list(ImageList_Create(16, 16, ILC_COLOR24, 2, 2));
    for (int i = 0; i < 2; ++i)
        ImageList_Add(list.get(), testing_support::FilledBitmap(16, 16).get(), nullptr);
    return list;
}

constexpr DWORD kReport = LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOCOLUMNHEADER;

// Whichever goes first, the control or the object, and whatever the style
// says, each image list is destroyed once, by its owner, and never in use.
TEST(ListView, EachImageListIsDestroyedOnceByItsOwner) {
    for (DWORD shared : {DWORD{0}, DWORD{LVS_SHAREIMAGELISTS}}) {
        for (bool controlFirst : {true, false}) {
            SCOPED_TRACE(testing::Message() << "shared " << shared << ", control first "
                                            << controlFirst);
            ImageListDestroyWatch watch;
            ASSERT_TRUE(watch.s_real);
            Host host(WC_LISTVIEWA, kReport | shared);
            fw::UniqueImageList borrowed = TwoImages(), first = TwoImages(), second = TwoImages();
            const HIMAGELIST replaced = first.get(), owned = second.get();
            auto list = std::make_unique<fw::ListView>();
            ASSERT_TRUE(list->Attach(host.child));
            ASSERT_TRUE(list->SetImageList(std::move(first), LVSIL_SMALL));
            ASSERT_TRUE(list->SetImageList(std::move(second), LVSIL_SMALL));
            EXPECT_EQ(1, watch.CallsFor(replaced)) << "the replaced list goes at once";
            ASSERT_TRUE(list->SetImageList(borrowed.get(), LVSIL_NORMAL));
            EXPECT_FALSE(list->SetImageList(TwoImages(), 7)) << "no such image list";
            EXPECT_EQ(owned, ListView_GetImageList(host.child, LVSIL_SMALL));
            list->InsertItem(0, "A", 1);
            UpdateWindow(host.child);
            if (controlFirst) {
                host.popup.Destroy();
                EXPECT_EQ(2, ImageList_GetImageCount(owned)) << "alive after its control";
                EXPECT_EQ(0, watch.CallsFor(owned));
            } else {
                list.reset();
                EXPECT_EQ(nullptr, ListView_GetImageList(host.child, LVSIL_SMALL));
                EXPECT_EQ(nullptr, ListView_GetImageList(host.child, LVSIL_NORMAL));
                host.popup.Destroy();
            }
            list.reset();
            EXPECT_EQ(1, watch.CallsFor(owned));
            EXPECT_EQ(2, ImageList_GetImageCount(borrowed.get())) << "the borrowed list stays";
            EXPECT_EQ(0, watch.Failed());
        }
    }
}

TEST(SelectionDialog, DestroysEachOfItsImageListsOnce) {
    testing_support::ScratchDir dir;
    const std::string catalog = dir.File("Zemblax.ini");
    for (const char* mode : {"0", "1"}) {
        SCOPED_TRACE(std::string("Mode=") + mode);
        testing_support::WriteText(
            catalog, std::string("[Template1]\r\nName=A\r\n[SelectionDlg]\r\nMode=") + mode + "\r\n");
        ImageListDestroyWatch watch;
        ASSERT_TRUE(watch.s_real);
        ShowSelectionDialog(catalog);
        ASSERT_EQ(2u, watch.calls.size()) << "names and thumbnails";
        EXPECT_NE(watch.calls[0].first, watch.calls[1].first);
        EXPECT_EQ(0, watch.Failed()) << "a list was already destroyed by the control";
    }
}

// Each key of `lines` (and in capitals, and some absent ones) read from
// section S of `file` by the system and by `section`.
void CompareWithTheSystem(const std::string& file, const fw::IniSection& section,
                          const std::vector<std::string>& lines) {
    std::vector<std::string> keys = {"Absent", "Later", "Last"};
    for (const std::string& line : lines) {
        std::string key = line.substr(0, line.find('='));
        key.erase(0, key.find_first_not_of(' '));
        key.erase(key.find_last_not_of(' ') + 1);
        keys.push_back(key);
        std::transform(key.begin(), key.end(), key.begin(), ::toupper);
        keys.push_back(key);
    }
    for (const std::string& key : keys) {
        for (int def : {-7, 0})
            EXPECT_EQ(static_cast<int>(GetPrivateProfileIntA("S", key.c_str(), def, file.c_str())),
                      section.Int(key.c_str(), def))
                << key << " with default " << def;
        for (const char* def : {"", "'d' ", " d  "}) {
            char buf[256];
            GetPrivateProfileStringA("S", key.c_str(), def, buf, sizeof buf, file.c_str());
            EXPECT_EQ(buf, section.Str(key.c_str(), def)) << key << " with default [" << def << "]";
        }
    }
}

TEST(IniSection, EveryKeyReadsAsTheSystemReadsIt) {
    std::vector<std::string> lines = {
        "Blank=   ", "Empty=", "  Spaced  =  two words  ", "Tabbed=\tx\t", "Control=\x01x",
        "Double=\"quoted\"", "Single='quoted'", "Open=\"open", "Lone=\"", "Mixed=\"a'",
        "Inner=\"a\"b\"", "EmptyQuotes=\"\"", "QuotedNumber=\"42\"", "Minus=-17", "Plus=+17",
        "Lead=  12abc", "Hex=0x1F", "HexCapital=0X1F", "Octal=0o17", "Binary=0b101",
        "BadBinary=0b2", "MinusHex=-0x10", "Wrap=4294967297", "Huge=99999999999999999999",
        "Below=-2147483649", "Dup=first", "dup=second", "DUP=third", "NoValue", "NoValue=later",
        "Semicolon=;x", "=NoKey"};
    // Around the 30 characters of the integer reader and the 256 of the string reader.
    for (int n : {29, 30, 31, 32}) {
        lines.push_back("Digits" + std::to_string(n) + "=" + std::string(n - 1, '0') + "7");
        lines.push_back("QuotedDigits" + std::to_string(n) + "=\"" + std::string(n - 3, '0') + "7\"");
    }
    for (int n : {254, 255, 256, 257, 258, 300}) {
        lines.push_back("Long" + std::to_string(n) + "=" + std::string(n, 'p'));
        lines.push_back("QuotedLong" + std::to_string(n) + "='" + std::string(n - 2, 'q') + "'");
        lines.push_back("OpenLong" + std::to_string(n) + "=\"" + std::string(n - 1, 'o'));
    }
    std::string text = "[S]\r\n";
    for (const std::string& line : lines) text += line + "\r\n";
    for (int i = 0; i < 1600; ++i)  // past the first buffer of a section read
        text += "Filler" + std::to_string(i) + "=" + std::string(40, 'f') + "\r\n";
    text += "Last=beyond the first buffer\r\n";
    text += "[S]\r\nLater=1\r\nDouble=again\r\n";  // a second [S] is never read
    testing_support::ScratchDir dir;
    const std::string file = dir.File("t.ini");
    testing_support::WriteText(file, text);
    CompareWithTheSystem(file, fw::IniSection(file, "S"), lines);

    // The same keys answered from one read of the whole file: in the plain
    // form (text characters, every key with a value, comments and blank
    // lines aside) the file is not read again.
    std::vector<std::string> plain;
    std::string plainText = "[Other]\r\nDouble=other\r\n\r\n; a comment\r\n[s]\r\n";
    for (const std::string& line : lines) {
        if (line.find('=') == std::string::npos || line[0] == '=' || line.find('\x01') != line.npos)
            continue;
        plain.push_back(line);
        plainText += line + "\r\n";
    }
    plainText += text.substr(text.find("Filler0"));
    testing_support::WriteText(file, plainText);
    const fw::IniSnapshot snapshot(file);
    EXPECT_TRUE(snapshot.Whole());
    CompareWithTheSystem(file, snapshot.Section("S"), plain);
    EXPECT_TRUE(snapshot.Section("Missing").Empty());
    testing_support::WriteText(file, plainText + "NoValue\r\n");
    EXPECT_FALSE(fw::IniSnapshot(file).Whole()) << "a line the system reads its own way";
}

void Fill(HDC dc, RECT r, COLORREF color) {
    fw::UniqueBrush brush(CreateSolidBrush(color));
    FillRect(dc, &r, brush.get());
}

TEST(OffscreenBuffer, ThePictureArrivesWholeAndOnceAndNoObjectStays) {
    constexpr COLORREF kWhite = RGB(255, 255, 255), kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255);
    fw::UniqueBitmap bitmap = testing_support::FilledBitmap(100, 80);
    fw::UniqueDC target(CreateCompatibleDC(nullptr));
    fw::SelectObj selected(target.get(), bitmap.get());
    const auto at = [&](int x, int y) { return GetPixel(target.get(), x, y); };
    const int before = SettledGdiCount();
    {
        fw::OffscreenBuffer buffer(target.get(), RECT{10, 20, 60, 50});
        ASSERT_TRUE(buffer);
        // The painter scales as it likes, as the tooth chart does: 1 unit = 10 pixels.
        SetMapMode(buffer.dc(), MM_ANISOTROPIC);
        SetWindowExtEx(buffer.dc(), 5, 3, nullptr);
        SetViewportExtEx(buffer.dc(), 50, 30, nullptr);
        Fill(buffer.dc(), RECT{0, 0, 5, 3}, kRed);
        EXPECT_EQ(kWhite, at(30, 30)) << "nothing reaches the target while painting";
    }
    EXPECT_EQ(kRed, at(10, 20));
    EXPECT_EQ(kRed, at(59, 49));
    EXPECT_EQ(kWhite, at(9, 20));
    EXPECT_EQ(kWhite, at(60, 49));
    EXPECT_EQ(kWhite, at(59, 50));
    {
        fw::OffscreenBuffer buffer(target.get(), RECT{0, 0, 40, 40});
        Fill(buffer.dc(), RECT{0, 0, 40, 40}, kBlue);
        EXPECT_TRUE(buffer.Flush());
        EXPECT_EQ(kBlue, at(20, 20));
        Fill(buffer.dc(), RECT{0, 0, 40, 40}, kRed);
    }
    EXPECT_EQ(kBlue, at(20, 20)) << "a flush is the only copy";
    {
        fw::OffscreenBuffer empty(target.get(), RECT{30, 30, 30, 60});
        EXPECT_FALSE(empty);
        EXPECT_FALSE(empty.Flush());
    }
    EXPECT_EQ(before, GdiObjectCount()) << "the memory DCs and their bitmaps are gone";
}

}  // namespace
