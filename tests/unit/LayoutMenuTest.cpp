// The layout canvas as an editor: a right click on a take opens its context
// menu, an entry is chosen with the keyboard and the message boxes that follow
// are answered, as a person does it. Also the move cursor and a cancelled move.
#include <gtest/gtest.h>
#include <functional>
#include "BeepRecorder.h"
#include "Fixtures.h"
#include "InputSupport.h"
#include "fw/Module.h"
#include "layout/LayoutCanvas.h"
#include "layout/LayoutOwner.h"
#include "templates/Template.h"

namespace {

using namespace input_support;

// Eleven sensors and ten holder types: both lists run past the nine command
// ids that each of them has. Holder 1 allows only vertical takes, holder 2
// only horizontal ones, the others both.
const char* const kSensors[] = {"Gross", "Klein", "S3", "S4", "S5", "S6", "S7", "S8", "S9", "S10",
                                "S11"};
const char* const kHolders[] = {"Front", "Seite", "H3", "H4", "H5", "H6", "H7", "H8", "H9", "H10"};
std::string ManySensorsAndHolders() {
    std::string s;
    for (int k = 0; k < 11; ++k) s += SensorSection(k + 1, kSensors[k], k ? 800 : 1000, k ? 600 : 800);
    for (int k = 0; k < 10; ++k)
        s += "[Holder" + std::to_string(k + 1) + "]\r\nName=" + kHolders[k] + "\r\n" +
             (k == 0 ? "Horizontal=0\r\n" : k == 1 ? "Vertical=0\r\n" : "");
    return s;
}

// Entries as the keyboard reaches them (separators are skipped): 11 sensors
// from kFirstSensorEntry, 10 holders from kFirstHolderEntry.
enum Entry : int { kZoomIn, kZoomOut, kRotate, kTooth, kFirstSensorEntry,
                   kFirstHolderEntry = 15, kDeleteEntry = 25, kEntryCount };

// A take of tooth 11 on sensor 2 at zoom 1/4: 200 x 150, or 150 x 200 standing.
CTake* MenuTake(int x, int y, int holder, bool vertical = false) {
    CTake* t = NewTake({11}, x, y, holder);
    if (vertical) t->Rotate();
    return t;
}

// The shortest way to an entry from a freshly opened menu, then Enter.
std::vector<UINT> KeysFor(int entry) {
    const bool fromTop = entry + 1 <= kEntryCount - entry;
    std::vector<UINT> keys(fromTop ? entry + 1 : kEntryCount - entry, fromTop ? VK_DOWN : VK_UP);
    keys.push_back(VK_RETURN);
    return keys;
}

// The fixture is the template designer as far as the canvas sees it.
class LayoutMenu : public testing::Test, public CLayoutOwner {
protected:
    void SetUp() override {
        ASSERT_TRUE(settings.loaded());
        ASSERT_TRUE(canvas.Subclass(control));
        canvas.Init(this, nullptr);
        Pump();
    }
    void UpdateChart() override {}
    void UpdateView() override { ++views; }
    void DeleteTake(int position) override {
        deleted.push_back(position);
        canvas.RemoveTakeItem(position);
        tpl.RemoveTake(position);
        canvas.SelectTake(0);
        UpdateView();
    }
    HWND OwnerWindow() const override { return window.get(); }
    // The canvas shows 1024 x 768 layout units on 256 x 192 pixels.
    static POINT Centre(const CTake& t) {
        const RECT r = t.GetRect();
        return {(r.left + r.right) / 8, (r.top + r.bottom) / 8};
    }
    // Right-clicks the take and lets the person choose the entry. The mouse
    // waits far off, where the menu does not meet it and preselects nothing.
    Seen Choose(const CTake& take, int entry, bool expectBox) {
        auto person = Person(KeysFor(entry), expectBox ? 5000 : 200);
        SetCursorPos(GetSystemMetrics(SM_CXSCREEN) - 2, GetSystemMetrics(SM_CYSCREEN) - 2);
        Pump();
        const POINT at = Centre(take);
        PostMessageA(control, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(at.x, at.y));
        return PumpUntilDone(person);
    }
    void Show(std::initializer_list<CTake*> takes) {
        while (tpl.GetTakeCount()) tpl.RemoveTake(0);
        for (CTake* t : takes) tpl.AddTake(t);
        canvas.SetTemplate(&tpl);
    }

    SettingsFile settings{ManySensorsAndHolders()};
    Popup window{0, 0, 296, 232, WS_EX_TOPMOST};
    HWND control = window.Add("STATIC", SS_NOTIFY, 0, 0, 256, 192);
    CLayoutCanvas canvas;
    CTemplate tpl;
    int views = 0;
    std::vector<int> deleted;
};

TEST_F(LayoutMenu, ListsEverySensorAndHolderWithNineIdsEach) {
    ASSERT_NE(nullptr, canvas.GetMenu());
    const HMENU h = canvas.GetMenu()->get();
    std::vector<std::pair<UINT, std::string>> expected = {
        {32800, "Zoom +"}, {32801, "Zoom -"}, {32803, "Drehen"}, {32813, "Zahn"}, {0, ""}};
    // The tenth and later entries of a list act as its first.
    const UINT sensorIds[] = {32814, 32815, 32816, 32817, 32818, 32819, 32820, 32821, 32822,
                              32814, 32814};
    for (int k = 0; k < 11; ++k) expected.push_back({sensorIds[k], kSensors[k]});
    expected.push_back({0, ""});
    const UINT holderIds[] = {32804, 32805, 32806, 32807, 32808, 32809, 32810, 32811, 32812, 32804};
    for (int k = 0; k < 10; ++k) expected.push_back({holderIds[k], kHolders[k]});
    expected.insert(expected.end(), {{0, ""}, {32802, "L\xF6schen"}});
    std::vector<std::pair<UINT, std::string>> shown;
    for (int i = 0; i < GetMenuItemCount(h); ++i) {
        char text[64] = {};
        GetMenuStringA(h, i, text, sizeof text, MF_BYPOSITION);
        const bool separator = (GetMenuState(h, i, MF_BYPOSITION) & MF_SEPARATOR) != 0;
        shown.push_back({separator ? 0 : GetMenuItemID(h, i), text});
    }
    EXPECT_EQ(expected, shown);
}

TEST_F(LayoutMenu, EachEntryDoesWhatItSaysOrWarns) {
    const auto sameTake = [](const CTake& b, const CTake& a) {
        EXPECT_TRUE(SameRect(b.GetRect(), a.GetRect()));
        EXPECT_EQ(b.IsVertical(), a.IsVertical());
        EXPECT_EQ(b.GetHolder(), a.GetHolder());
        EXPECT_EQ(b.GetSensor(), a.GetSensor());
    };
    const auto width = [](const CTake& t) { return t.GetRect().right - t.GetRect().left; };
    const struct {
        const char* what;
        int entry;
        bool vertical;
        int holder;
        UINT box;  // string id of the message expected, 0 for none
        std::function<void(const CTake& before, const CTake& after)> check;
    } cases[] = {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Show({MenuTake(600, 100, 3), MenuTake(300, 300, c.holder, c.vertical)});
        canvas.SelectTake(0);  // the right click must select the take it hits
        CTake* take = tpl.GetTake(1);
        CTake before;
        before.CopyFrom(*take);
        const int viewsBefore = views;
        const Seen seen = Choose(*take, c.entry, c.box != 0);
        ASSERT_TRUE(seen.menu);
        EXPECT_EQ(c.box ? fw::Module::LoadStr(c.box) : std::string(), seen.box);
        EXPECT_EQ(take, canvas.GetSelectedTake());
        c.check(before, *take);
        const bool refreshes = c.entry >= kFirstSensorEntry && c.entry < kDeleteEntry;
        EXPECT_EQ(viewsBefore + (refreshes ? 1 : 0), views);
        const RECT shown = canvas.GetSelectedTracker()->GetTrackerRect(), r = take->GetRect();
        EXPECT_EQ(r.right / 4 - r.left / 4, shown.right - shown.left) << "the item follows the take";
    }
}

TEST_F(LayoutMenu, DeleteGoesThroughTheOwner) {
    Show({MenuTake(600, 100, 3), MenuTake(300, 300, 3)});
    ASSERT_TRUE(Choose(*tpl.GetTake(1), kDeleteEntry, false).menu);
    EXPECT_EQ(std::vector<int>{1}, deleted);
    EXPECT_EQ(1, tpl.GetTakeCount());
    EXPECT_EQ(1, canvas.GetTrackerCount());
    EXPECT_EQ(tpl.GetTake(0), canvas.GetSelectedTake());
}

TEST_F(LayoutMenu, CommandsWithoutATakeOrOfOtherIdsChangeNothing) {
    Show({MenuTake(300, 300, 3)});
    const RECT r = tpl.GetTake(0)->GetRect();
    const struct {
        bool selected;
        UINT id;
        int views;
        std::vector<UINT> beeps;
    } cases[] = {{false, 32800, 1, {}}, {true, 32799, 0, {MB_ICONHAND}},
                 {true, 32823, 0, {MB_ICONHAND}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        canvas.SelectTake(c.selected ? 0 : -1);
        BeepRecorder beeps;
        const int viewsBefore = views;
        SendMessageA(control, WM_COMMAND, c.id, 0);
        EXPECT_EQ(c.beeps, beeps.Take());
        EXPECT_EQ(viewsBefore + c.views, views);
        EXPECT_TRUE(SameRect(r, tpl.GetTake(0)->GetRect()));
    }
}

TEST_F(LayoutMenu, TheMoveCursorShowsOverTheSelectedTakeOnly) {
    Show({MenuTake(300, 300, 3)});  // pixels 75..125 x 75..112
    const HCURSOR move = LoadCursor(nullptr, IDC_SIZEALL), arrow = LoadCursor(nullptr, IDC_ARROW);
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
        ClientToScreen(control, &s);
        SetCursorPos(s.x, s.y);
        SendMessageA(control, WM_SETCURSOR, reinterpret_cast<WPARAM>(control),
                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        EXPECT_EQ(c.cursor, GetCursor());
    }
}

TEST_F(LayoutMenu, EscapeOrTheRightButtonEndsAMoveWhereTheTakeIs) {
    for (UINT cancel : {WM_KEYDOWN, WM_RBUTTONDOWN}) {
        SCOPED_TRACE(cancel);
        Show({MenuTake(300, 300, 3)});
        // The loop of the move finds the mouse moved by (40, 20) pixels, then the cancel.
        PostMessageA(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(140, 110));
        if (cancel == WM_KEYDOWN)
            PostMessageA(control, WM_KEYDOWN, VK_ESCAPE, 0x00010001);
        else
            PostMessageA(control, WM_RBUTTONDOWN, MK_LBUTTON | MK_RBUTTON, MAKELPARAM(140, 110));
        // Without the cancel the release would end the move further on.
        PostMessageA(control, WM_LBUTTONUP, 0, MAKELPARAM(180, 130));
        auto person = Person({VK_ESCAPE}, 0, 300);
        SendMessageA(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 90));
        EXPECT_FALSE(PumpUntilDone(person).menu) << "the right button only ends the move";
        const RECT r = tpl.GetTake(0)->GetRect();
        EXPECT_EQ(460, r.left) << "the move made before the cancel is kept";
        EXPECT_EQ(380, r.top);
        const RECT shown = canvas.GetTracker(0)->GetTrackerRect();
        EXPECT_EQ(115, shown.left) << "the item is drawn where the take is";
        EXPECT_EQ(95, shown.top);
    }
}

}  // namespace
