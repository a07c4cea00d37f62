// The layout canvas as an editor: a right click on a take opens its context
// menu, an entry is chosen with the keyboard and the message boxes that follow
// are answered, as a person does it. Also the move cursor and a cancelled move.
#include <gtest/gtest.h>
#include <chrono>
#include <functional>
#include <future>
#include "../dll/DialogDriver.h"
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "fw/Module.h"
#include "layout/LayoutCanvas.h"
#include "layout/LayoutOwner.h"
#include "templates/Template.h"

namespace {

constexpr int kBoxText = 0xFFFF;  // the message box's text control

// Eleven sensors and ten holder types: both lists run past the nine command
// ids that each of them has. Holder 1 allows only vertical takes, holder 2
// only horizontal ones, the others both.
std::string ManySensorsAndHolders() {
    std::string s = SensorSection(1, "Gross", 1000, 800) + SensorSection(2, "Klein", 800, 600);
    for (int n = 3; n <= 11; ++n) s += SensorSection(n, "Sensor" + std::to_string(n), 600, 400);
    s += "[Holder1]\r\nName=Front\r\nHorizontal=0\r\nVertical=1\r\n"
         "[Holder2]\r\nName=Seite\r\nHorizontal=1\r\nVertical=0\r\n";
    for (int n = 3; n <= 10; ++n)
        s += "[Holder" + std::to_string(n) + "]\r\nName=Halter" + std::to_string(n) + "\r\n";
    return s;
}

// Entries as the keyboard reaches them (separators are skipped).
enum Entry : int {
    kZoomIn = 0, kZoomOut = 1, kRotate = 2, kTooth = 3,
    kFirstSensorEntry = 4,   // 11 sensors: 4 .. 14
    kFirstHolderEntry = 15,  // 10 holders: 15 .. 24
    kDeleteEntry = 25,
    kEntryCount = 26
};

// The template designer as far as the canvas sees it.
class Owner : public CLayoutOwner {
public:
    Owner(CLayoutCanvas& canvas, CTemplate& tpl, HWND window)
        : m_canvas(canvas), m_tpl(tpl), m_window(window) {}
    void UpdateChart() override { ++charts; }
    void UpdateView() override { ++views; }
    void DeleteTake(int position) override {
        deleted.push_back(position);
        m_canvas.RemoveTakeItem(position);
        m_tpl.RemoveTake(position);
        m_canvas.SelectTake(0);
        UpdateView();
    }
    HWND OwnerWindow() const override { return m_window; }
    int charts = 0, views = 0;
    std::vector<int> deleted;

private:
    CLayoutCanvas& m_canvas;
    CTemplate& m_tpl;
    HWND m_window;
};

// A popup at the screen's corner holding a static control, as a dialog does.
class CanvasWindow {
public:
    CanvasWindow(int w, int h) {
        m_popup = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, w + 40,
                                  h + 40, nullptr, nullptr, nullptr, nullptr);
        m_control = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_NOTIFY, 0, 0, w,
                                    h, m_popup, nullptr, nullptr, nullptr);
    }
    ~CanvasWindow() { DestroyWindow(m_popup); }
    HWND popup() const { return m_popup; }
    HWND control() const { return m_control; }

private:
    HWND m_popup, m_control;
};

CTake* NewTake(int x, int y, int holder, bool vertical = false) {
    auto* t = new CTake;
    t->SetTeeth({11});
    t->SetSensor(2);                            // 800 x 600
    for (int i = 0; i < 3; ++i) t->ZoomOut();  // 200 x 150
    if (vertical) t->Rotate();
    t->MoveTo(x, y);
    t->SetHolder(holder);
    return t;
}

void Pump() {
    MSG m;
    while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&m);
        DispatchMessageA(&m);
    }
}

// Keeps the UI thread's messages flowing until the person is done: the menu
// and the message boxes run modally inside the dispatch.
template <typename T>
T PumpUntil(std::future<T>& done) {
    while (done.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) Pump();
    Pump();  // the command that the menu posted
    return done.get();
}

BOOL CALLBACK FindMenuWindow(HWND h, LPARAM lp) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::string(cls) != "#32768" || !IsWindowVisible(h)) return TRUE;
    *reinterpret_cast<HWND*>(lp) = h;
    return FALSE;
}

struct Seen {
    bool menu = false;
    std::string box;  // text of the message box answered, if one came
};

// A person in front of the screen: waits for the popup menu of this thread,
// presses the keys in it, then answers with OK the message box that comes
// within `boxWaitMs`, if any. Gives up on a menu or a box that does not come
// in time, so no test waits for ever.
std::future<Seen> Person(std::vector<UINT> keys, int boxWaitMs, int menuWaitMs = 5000) {
    const DWORD thread = GetCurrentThreadId();
    const DialogDriver driver;
    return std::async(std::launch::async, [=] {
        Seen seen;
        HWND menu = nullptr;
        for (int waited = 0; waited < menuWaitMs && !menu; waited += 10) {
            EnumThreadWindows(thread, FindMenuWindow, reinterpret_cast<LPARAM>(&menu));
            if (!menu) Sleep(10);
        }
        if (!menu) return seen;
        seen.menu = true;
        for (UINT key : keys) {
            PostMessageA(menu, WM_KEYDOWN, key, 1);
            PostMessageA(menu, WM_KEYUP, key, 0xC0000001);
            Sleep(10);
        }
        DialogDriver::WaitGone(menu, 3000);
        if (HWND box = driver.WaitFor(kBoxText, boxWaitMs)) {
            seen.box = DialogDriver::ItemText(box, kBoxText);
            DialogDriver::Click(box, IDOK);
        }
        return seen;
    });
}

// The shortest way to an entry from a freshly opened menu, then Enter.
std::vector<UINT> KeysFor(int entry) {
    const bool fromTop = entry + 1 <= kEntryCount - entry;
    std::vector<UINT> keys(fromTop ? entry + 1 : kEntryCount - entry, fromTop ? VK_DOWN : VK_UP);
    keys.push_back(VK_RETURN);
    return keys;
}

// The right button pressed on the canvas. The mouse waits far off, where the
// menu that opens does not meet it and no item is preselected by the pointer.
void RightClick(HWND control, POINT client) {
    SetCursorPos(GetSystemMetrics(SM_CXSCREEN) - 2, GetSystemMetrics(SM_CYSCREEN) - 2);
    Pump();
    PostMessageA(control, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(client.x, client.y));
}

class LayoutMenu : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(settings.loaded());
        ASSERT_TRUE(canvas.Subclass(window.control()));
        canvas.Init(&owner, &noFile);
        Pump();
    }
    // The canvas shows 1024 x 768 layout units on 256 x 192 pixels.
    static POINT Centre(const CTake& t) {
        const RECT r = t.GetRect();
        return {(r.left + r.right) / 8, (r.top + r.bottom) / 8};
    }
    // Right-clicks the take and lets the person choose the entry.
    Seen Choose(const CTake& take, int entry, bool expectBox) {
        auto person = Person(KeysFor(entry), expectBox ? 5000 : 200);
        RightClick(window.control(), Centre(take));
        return PumpUntil(person);
    }

    SettingsFile settings{ManySensorsAndHolders()};
    std::string noFile;
    CanvasWindow window{256, 192};
    CLayoutCanvas canvas;
    CTemplate tpl;
    Owner owner{canvas, tpl, window.popup()};
};

TEST_F(LayoutMenu, ListsEverySensorAndHolderWithNineIdsEach) {
    const CLayoutMenu* menu = canvas.GetMenu();
    ASSERT_NE(nullptr, menu);
    HMENU h = menu->get();
    std::vector<std::pair<UINT, std::string>> expected = {
        {32800, "Zoom +"}, {32801, "Zoom -"}, {32803, "Drehen"}, {32813, "Zahn"}, {0, ""}};
    const UINT sensorIds[] = {32814, 32815, 32816, 32817, 32818, 32819, 32820, 32821, 32822,
                              32814, 32814};
    const char* sensorNames[] = {"Gross", "Klein"};
    for (int k = 0; k < 11; ++k)
        expected.push_back({sensorIds[k], k < 2 ? sensorNames[k] : "Sensor" + std::to_string(k + 1)});
    expected.push_back({0, ""});
    const UINT holderIds[] = {32804, 32805, 32806, 32807, 32808, 32809, 32810, 32811, 32812, 32804};
    const char* holderNames[] = {"Front", "Seite"};
    for (int k = 0; k < 10; ++k)
        expected.push_back({holderIds[k], k < 2 ? holderNames[k] : "Halter" + std::to_string(k + 1)});
    expected.push_back({0, ""});
    expected.push_back({32802, "L\xF6schen"});
    ASSERT_EQ(static_cast<int>(expected.size()), GetMenuItemCount(h));
    for (int i = 0; i < GetMenuItemCount(h); ++i) {
        char text[64] = {};
        GetMenuStringA(h, i, text, sizeof text, MF_BYPOSITION);
        const bool separator = (GetMenuState(h, i, MF_BYPOSITION) & MF_SEPARATOR) != 0;
        EXPECT_EQ(expected[i].first == 0, separator) << i;
        if (!separator) EXPECT_EQ(expected[i].first, GetMenuItemID(h, i)) << i;
        EXPECT_EQ(expected[i].second, text) << i;
    }
}

TEST_F(LayoutMenu, EachEntryDoesWhatItSaysOrWarns) {
    struct Case {
        const char* what;
        int entry;
        bool vertical;
        int holder;
        UINT box;  // string id of the message expected, 0 for none
        std::function<void(const CTake& before, const CTake& after)> check;
    };
    auto sameTake = [](const CTake& b, const CTake& a) {
        EXPECT_TRUE(SameRect(b.GetRect(), a.GetRect()));
        EXPECT_EQ(b.IsVertical(), a.IsVertical());
        EXPECT_EQ(b.GetHolder(), a.GetHolder());
        EXPECT_EQ(b.GetSensor(), a.GetSensor());
    };
    auto width = [](const CTake& t) { return t.GetRect().right - t.GetRect().left; };
    const Case cases[] = {
        {"zoom in", kZoomIn, false, 3, 0,
         [&](const CTake&, const CTake& a) { EXPECT_EQ(800 / 3, width(a)) << "1/4 to 1/3"; }},
        {"zoom out", kZoomOut, false, 3, 0,
         [&](const CTake&, const CTake& a) { EXPECT_EQ(800 / 5, width(a)) << "1/4 to 1/5"; }},
        {"turn, the holder forbids horizontal", kRotate, true, 1, IDS_ROTATE_HOLDER, sameTake},
        {"turn, the holder allows it", kRotate, true, 3, 0,
         [](const CTake&, const CTake& a) { EXPECT_FALSE(a.IsVertical()); }},
        {"holder forbidding this orientation", kFirstHolderEntry, false, 3,
         IDS_HOLDER_ORIENTATION, sameTake},
        {"the tenth holder is the first", kFirstHolderEntry + 9, true, 3, 0,
         [](const CTake&, const CTake& a) { EXPECT_EQ(1, a.GetHolder()); }},
        {"tooth hint", kTooth, false, 3, IDS_TOOTH_HINT, sameTake},
        {"the tenth sensor is the first", kFirstSensorEntry + 9, false, 3, 0,
         [&](const CTake&, const CTake& a) {
             EXPECT_EQ(1, a.GetSensor());
             EXPECT_EQ(1000 / 4, width(a)) << "sensor 1's picture at the same zoom";
         }},
        {"the eleventh sensor is the first", kFirstSensorEntry + 10, false, 3, 0,
         [](const CTake&, const CTake& a) { EXPECT_EQ(1, a.GetSensor()); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        tpl.AddTake(NewTake(600, 100, 3));
        tpl.AddTake(NewTake(300, 300, c.holder, c.vertical));
        canvas.SetTemplate(&tpl);
        canvas.SelectTake(0);  // the right click must select the take it hits
        CTake* take = tpl.GetTake(1);
        CTake before;
        before.CopyFrom(*take);
        const int views = owner.views;
        const Seen seen = Choose(*take, c.entry, c.box != 0);
        ASSERT_TRUE(seen.menu);
        EXPECT_EQ(c.box ? fw::Module::LoadStr(c.box) : std::string(), seen.box);
        EXPECT_EQ(take, canvas.GetSelectedTake());
        c.check(before, *take);
        const bool refreshes = c.entry >= kFirstSensorEntry && c.entry < kDeleteEntry;
        EXPECT_EQ(views + (refreshes ? 1 : 0), owner.views);
        const RECT shown = canvas.GetSelectedTracker()->GetTrackerRect();
        const RECT r = take->GetRect();
        EXPECT_EQ(r.right / 4 - r.left / 4, shown.right - shown.left) << "the item follows the take";
        while (tpl.GetTakeCount()) tpl.RemoveTake(0);
    }
}

TEST_F(LayoutMenu, DeleteGoesThroughTheOwner) {
    tpl.AddTake(NewTake(600, 100, 3));
    tpl.AddTake(NewTake(300, 300, 3));
    canvas.SetTemplate(&tpl);
    const Seen seen = Choose(*tpl.GetTake(1), kDeleteEntry, false);
    ASSERT_TRUE(seen.menu);
    EXPECT_EQ(std::vector<int>{1}, owner.deleted);
    EXPECT_EQ(1, tpl.GetTakeCount());
    EXPECT_EQ(1, canvas.GetTrackerCount());
    EXPECT_EQ(tpl.GetTake(0), canvas.GetSelectedTake());
}

TEST_F(LayoutMenu, CommandsWithoutATakeOrOfOtherIdsChangeNothing) {
    tpl.AddTake(NewTake(300, 300, 3));
    canvas.SetTemplate(&tpl);
    const RECT r = tpl.GetTake(0)->GetRect();
    struct Case {
        bool selected;
        UINT id;
        int views;
        std::vector<UINT> beeps;
    } const cases[] = {{false, 32800, 1, {}}, {true, 32799, 0, {MB_ICONHAND}},
                       {true, 32823, 0, {MB_ICONHAND}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        canvas.SelectTake(c.selected ? 0 : -1);
        BeepRecorder beeps;
        const int views = owner.views;
        SendMessageA(window.control(), WM_COMMAND, c.id, 0);
        EXPECT_EQ(c.beeps, beeps.Take());
        EXPECT_EQ(views + c.views, owner.views);
        EXPECT_TRUE(SameRect(r, tpl.GetTake(0)->GetRect()));
    }
}

TEST_F(LayoutMenu, ThePreviewOpensNoMenu) {
    CanvasWindow other(256, 192);
    CLayoutCanvas preview;
    ASSERT_TRUE(preview.Subclass(other.control()));
    preview.Init(nullptr, &noFile);
    EXPECT_EQ(nullptr, preview.GetMenu());
    tpl.AddTake(NewTake(300, 300, 3));
    preview.SetTemplate(&tpl);
    auto person = Person({VK_ESCAPE}, 0, 300);
    const POINT c = Centre(*tpl.GetTake(0));
    SendMessageA(other.control(), WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(c.x, c.y));
    EXPECT_FALSE(PumpUntil(person).menu);
}

TEST_F(LayoutMenu, TheMoveCursorShowsOverTheSelectedTakeOnly) {
    tpl.AddTake(NewTake(300, 300, 3));  // pixels 75..125 x 75..112
    canvas.SetTemplate(&tpl);
    HCURSOR move = LoadCursor(nullptr, IDC_SIZEALL), arrow = LoadCursor(nullptr, IDC_ARROW);
    const struct {
        POINT at;
        bool selected;
        HCURSOR cursor;
    } cases[] = {{{100, 90}, true, move},    // inside
                 {{73, 90}, true, move},     // on the hatched band
                 {{20, 20}, true, arrow},    // beside it
                 {{100, 90}, false, arrow}}; // inside, but not selected
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.at.x << "," << c.at.y << " " << c.selected);
        canvas.SelectTake(c.selected ? 0 : -1);
        SetCursor(LoadCursor(nullptr, IDC_CROSS));
        POINT s = c.at;
        ClientToScreen(window.control(), &s);
        SetCursorPos(s.x, s.y);
        SendMessageA(window.control(), WM_SETCURSOR, reinterpret_cast<WPARAM>(window.control()),
                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        EXPECT_EQ(c.cursor, GetCursor());
    }
}

TEST_F(LayoutMenu, EscapeOrTheRightButtonEndsAMoveWhereTheTakeIs) {
    for (UINT cancel : {WM_KEYDOWN, WM_RBUTTONDOWN}) {
        SCOPED_TRACE(cancel);
        tpl.AddTake(NewTake(300, 300, 3));
        canvas.SetTemplate(&tpl);
        // The loop of the move finds the mouse moved by (40, 20) pixels, then the cancel.
        PostMessageA(window.control(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(140, 110));
        if (cancel == WM_KEYDOWN)
            PostMessageA(window.control(), WM_KEYDOWN, VK_ESCAPE, 0x00010001);
        else
            PostMessageA(window.control(), WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON,
                         MAKELPARAM(140, 110));
        // Without the cancel the release would end the move further on.
        PostMessageA(window.control(), WM_LBUTTONUP, 0, MAKELPARAM(180, 130));
        auto person = Person({VK_ESCAPE}, 0, 300);
        SendMessageA(window.control(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 90));
        EXPECT_FALSE(PumpUntil(person).menu) << "the right button only ends the move";
        const RECT r = tpl.GetTake(0)->GetRect();
        EXPECT_EQ(460, r.left) << "the move made before the cancel is kept";
        EXPECT_EQ(380, r.top);
        const RECT shown = canvas.GetTracker(0)->GetTrackerRect();
        EXPECT_EQ(115, shown.left) << "the item is drawn where the take is";
        EXPECT_EQ(95, shown.top);
        tpl.RemoveTake(0);
    }
}

}  // namespace
