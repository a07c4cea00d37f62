// The template designer through the real DLL, played with real mouse and
// keyboard input on the shipped settings: drops that make takes, the drops it
// refuses, the template commands with their messages, and no growth over
// repeated sessions.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <set>
#include <sstream>
#include "RunSupport.h"
#include "host/DesignerUser.h"

namespace {

using testing_support::IniString;
using testing_support::SectionExists;
const std::string kNoTake = "<no take>";

std::set<int> Teeth(const std::string& list) {
    std::set<int> teeth;
    std::istringstream in(list);
    for (std::string t; std::getline(in, t, ',');)
        if (!t.empty()) teeth.insert(std::stoi(t));
    return teeth;
}

// The label of take `number` as the caption shows it ("... #2:11,21]").
std::string LabelIn(const std::string& caption, int number) {
    const std::string mark = " #" + std::to_string(number) + ":";
    const size_t at = caption.rfind(mark);
    if (at == std::string::npos) return kNoTake;
    const size_t from = at + mark.size();
    return caption.substr(from, caption.rfind(']') - from);
}

// Waits until the caption shows take `number` with a label other than `unlike`.
std::string WaitTake(const DesignerUser& u, int number, const std::string& unlike = kNoTake) {
    std::string label = LabelIn(u.Caption(), number);
    for (int waited = 0; waited < 3000 && label == unlike; waited += 20, Sleep(20))
        label = LabelIn(u.Caption(), number);
    return label;
}

// The beeps of the DLL once `count` have come (or after 3 s), and any that follow at once.
std::vector<UINT> Beeps(size_t count) {
    std::vector<UINT> all;
    for (int waited = 0; waited < 3000 && all.size() < count; waited += 20, Sleep(20))
        for (UINT b : TakeBeeps()) all.push_back(b);
    Sleep(150);
    for (UINT b : TakeBeeps()) all.push_back(b);
    return all;
}
const std::vector<UINT> kOneBeep{MB_ICONASTERISK};

// Drags palette entry `index` onto a point of the chart (client coordinates).
void DragTo(const DesignerUser& u, int index, POINT chart) {
    HWND list = GetDlgItem(u.dialog(), IDC_TAKE_LIST);
    RECT item{LVIR_ICON};
    SendMessageA(list, LVM_GETITEMRECT, index, reinterpret_cast<LPARAM>(&item));
    POINT from{(item.left + item.right) / 2, (item.top + item.bottom) / 2};
    ClientToScreen(list, &from);
    ClientToScreen(GetDlgItem(u.dialog(), IDC_TOOTH_CHART), &chart);
    DesignerUser::MoveTo(from);
    DesignerUser::Press(MOUSEEVENTF_LEFTDOWN);
    for (int step = 1; step <= 8; ++step)
        DesignerUser::MoveTo({from.x + (chart.x - from.x) * step / 8,
                              from.y + (chart.y - from.y) * step / 8});
    DesignerUser::Press(MOUSEEVENTF_LEFTUP);
}

class Designer : public ModuleTest {
protected:
    // The data folder holds the shipped Template1..3 once the settings are copied.
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(ModuleTest::SetUp());
        ASSERT_TRUE(CopyFileA((testing_support::TestData() + "data\\Template\\Zemblax.ini").c_str(),
                              cat.ini().c_str(), FALSE));
        p.Initialize(cat.base().c_str());
    }

    // The designer runs here while `user` plays the user, who ends it.
    void Design(const std::function<void(DesignerUser&, DialogDriver&)>& user) {
        EXPECT_TRUE(WithUser<BOOL>([&] { return p.Configure(host.hwnd()); }, [&](DialogDriver& d) {
            HWND dlg = d.WaitFor(IDC_TOOTH_CHART);
            ASSERT_NE(nullptr, dlg);
            DesignerUser u(dlg, cat.ini());
            user(u, d);
        }));
    }
    std::string Text(UINT id) const {
        char text[512] = {};
        LoadStringA(p.module(), id, text, sizeof text);
        return text;
    }
    // Clicks a control of the designer and answers the message box that follows; its text.
    static std::string Press(DesignerUser& u, DialogDriver& d, int control, int answer) {
        u.ClickControl(control);
        return d.AnswerBox(answer);
    }
    static void Finish(DesignerUser& u) {
        u.ClickControl(IDCANCEL);
        EXPECT_TRUE(DialogDriver::WaitGone(u.dialog(), 3000)) << "Beenden asks nothing";
    }
    std::string TakeKey(int n, int k, const char* key) const {
        const std::string section = "Take_" + std::to_string(n) + "_" + std::to_string(k);
        const std::string file = cat.folder() + "Template" + std::to_string(n) + ".ini";
        return IniString(file, section.c_str(), key);
    }
};

TEST_F(Designer, TwoDropsAClickAndSaveAsMakeATemplateThatRuns) {
    std::string first, second, clicked, caption;
    Design([&](DesignerUser& u, DialogDriver&) {
        u.DragSensor(2, 46);  // sensor 2 lying
        first = WaitTake(u, 1);
        u.DragSensor(1, 21);  // sensor 1 standing
        second = WaitTake(u, 2);
        u.ClickTooth(12);
        clicked = WaitTake(u, 2, second);
        EXPECT_TRUE(u.SaveAs("Neu 1"));
        caption = u.Caption();
        Finish(u);
    });
    EXPECT_EQ(1u, Teeth(first).count(46)) << first;
    EXPECT_EQ(1u, Teeth(second).count(21)) << second;
    std::set<int> expected = Teeth(second);
    if (!expected.erase(12)) expected.insert(12);
    EXPECT_EQ(expected, Teeth(clicked)) << "tooth 12 toggled: " << second << " -> " << clicked;
    // The name is shown; the thumbnail has left nothing selected.
    EXPECT_NE(std::string::npos, caption.find("[Neu 1 #0:]")) << caption;
    EXPECT_TRUE(TakeBeeps().empty()) << "both holders allow what was dropped";

    EXPECT_EQ("Neu 1", IniString(cat.ini(), "Template4", "Name")) << "numbers 1 to 3 are shipped";
    const struct {
        int k;
        std::string sensor, orientation;
        std::set<int> teeth;
    } takes[] = {{1, "2", "0", Teeth(first)}, {2, "1", "1", expected}};
    for (const auto& t : takes) {
        EXPECT_EQ(t.sensor, TakeKey(4, t.k, "Sensor")) << "take " << t.k;
        EXPECT_EQ(t.orientation, TakeKey(4, t.k, "SensorOrientation")) << "take " << t.k;
        EXPECT_EQ(std::to_string(t.k), TakeKey(4, t.k, "Position")) << "take " << t.k;
        EXPECT_EQ(t.teeth, Teeth(TakeKey(4, t.k, "Teeth"))) << "take " << t.k;
    }
    EXPECT_FALSE(SectionExists(cat.folder() + "Template4.ini", "Take_4_3"));
    const std::string bmp = testing_support::ReadText(cat.folder() + "Template4.bmp");
    ASSERT_GE(bmp.size(), 14 + sizeof(BITMAPINFOHEADER));
    const auto* info = reinterpret_cast<const BITMAPINFOHEADER*>(bmp.data() + 14);
    EXPECT_EQ("BM", bmp.substr(0, 2));
    EXPECT_EQ(200, info->biWidth);
    EXPECT_EQ(150, info->biHeight);

    ASSERT_TRUE(StartOn(cat, host.hwnd(), 3));
    const Delivery d = Next(host.hwnd(), {});
    EXPECT_EQ(2, d.result);
    const std::string stored = TakeKey(4, 1, "Teeth");  // the label is the middle tooth
    std::vector<std::string> order;
    std::istringstream in(stored);
    for (std::string t; std::getline(in, t, ',');) order.push_back(t);
    ASSERT_FALSE(order.empty());
    EXPECT_EQ(order.size() <= 2 ? order[0] : order[order.size() / 2], d.label) << stored;
    EXPECT_EQ(0, d.orientation);
}

TEST_F(Designer, RefusedDropsBeepAndAddNothingOrTurnTheTake) {
    std::vector<TakeSpec> full;
    for (int i = 0; i < 32; ++i) full.push_back({"11"});
    cat.AddTemplate(4, "Voll", full);
    std::vector<UINT> corner, turned, limit;
    std::string afterCorner, takeOne, afterLimit;
    Design([&](DesignerUser& u, DialogDriver& d) {
        TakeBeeps();
        DragTo(u, 0, {1, 1});  // the footprint meets no tooth box there
        corner = Beeps(1);
        afterCorner = LabelIn(u.Caption(), 0);
        // Over 18, 17, 48 and 47 three drop positions tie; the first, for 18, 17 and 16,
        // has a holder for lying sensors only.
        u.DragSensor(1, 18);
        turned = Beeps(1);
        takeOne = WaitTake(u, 1);
        EXPECT_TRUE(u.SaveAs("Gedreht"));
        u.ClickControl(IDC_OPEN);
        ChooseTemplate(d, 3);
        EXPECT_EQ("11", WaitTake(u, 1, takeOne)) << "Voll is open";
        u.DragSensor(0, 17);
        limit = Beeps(1);
        afterLimit = u.Caption();
        u.ClickControl(IDC_SAVE);  // an opened template keeps its number: no question
        Sleep(300);
        Finish(u);
    });
    EXPECT_EQ(kOneBeep, corner);
    EXPECT_EQ("", afterCorner) << "no take is selected";
    EXPECT_EQ(kOneBeep, turned);
    EXPECT_NE(kNoTake, takeOne) << "the corner made no take: the turned one is the first";
    EXPECT_EQ("1", TakeKey(5, 1, "Sensor"));
    EXPECT_EQ("2", TakeKey(5, 1, "Holder"));
    EXPECT_EQ("0", TakeKey(5, 1, "SensorOrientation")) << "dropped standing, kept lying";
    EXPECT_EQ(kOneBeep, limit);
    EXPECT_EQ(kNoTake, LabelIn(afterLimit, 33)) << afterLimit;
    EXPECT_TRUE(SectionExists(cat.folder() + "Template4.ini", "Take_4_32"));
    EXPECT_FALSE(SectionExists(cat.folder() + "Template4.ini", "Take_4_33"));
}

TEST_F(Designer, CommandsAskAndRefuseWithTheModulesTexts) {
    std::vector<std::pair<std::string, UINT>> boxes;  // text shown, text expected
    bool openAfterRefusedSave = false, closed = false;
    std::string nameAfterRefusal;
    Design([&](DesignerUser& u, DialogDriver& d) {
        auto press = [&](int control, int answer, UINT expected) {
            boxes.push_back({Press(u, d, control, answer), expected});
        };
        press(IDC_SAVE, IDOK, IDS_ADD_TAKES_FIRST);
        press(IDC_DELETE, IDOK, IDS_NOT_SAVED_NO_DELETE);
        u.DragSensor(0, 18);
        WaitTake(u, 1);
        EXPECT_TRUE(u.SaveAs("STATUS 18 AUFNAHMEN"));  // shipped as "Status 18 Aufnahmen"
        boxes.push_back({d.AnswerBox(IDOK), IDS_NAME_TAKEN});
        const std::string shown = LabelIn(u.Caption(), 1);
        u.ClickTooth(18);  // a click sets the caption again, with the name kept
        EXPECT_NE(shown, WaitTake(u, 1, shown));
        nameAfterRefusal = u.Caption();
        press(IDC_NEW, IDNO, IDS_ASK_SAVE);
        press(IDC_SAVE, IDOK, IDS_ADD_TAKES_FIRST);  // "Nein" let the take go
        u.DragSensor(0, 18);
        std::string label = WaitTake(u, 1);
        for (int tooth : Teeth(label)) {
            u.ClickTooth(tooth);
            label = WaitTake(u, 1, label);
        }
        EXPECT_EQ("", label) << "every tooth clicked away";
        press(IDCANCEL, IDYES, IDS_ASK_SAVE);
        boxes.push_back({d.AnswerBox(IDOK), IDS_TEETH_MISSING});
        Sleep(200);
        openAfterRefusedSave = IsWindowVisible(u.dialog()) != FALSE;
        press(IDCANCEL, IDNO, IDS_ASK_SAVE);
        closed = DialogDriver::WaitGone(u.dialog(), 3000);
    });
    ASSERT_EQ(8u, boxes.size());
    for (const auto& b : boxes) {
        EXPECT_FALSE(Text(b.second).empty()) << b.second;
        EXPECT_EQ(Text(b.second), b.first) << "expected text " << b.second;
    }
    EXPECT_EQ(std::string::npos, nameAfterRefusal.find("STATUS")) << nameAfterRefusal;
    EXPECT_TRUE(openAfterRefusedSave);
    EXPECT_TRUE(closed);
    EXPECT_EQ("<missing>", IniString(cat.ini(), "Template4", "Name")) << "nothing was saved";
}

TEST_F(Designer, SessionsLeaveNoObjectsBehind) {
    auto session = [&] {
        Design([&](DesignerUser& u, DialogDriver& d) {
            u.DragSensor(2, 46);
            WaitTake(u, 1);
            EXPECT_EQ(Text(IDS_ASK_SAVE), Press(u, d, IDCANCEL, IDNO));
            EXPECT_TRUE(DialogDriver::WaitGone(u.dialog(), 3000));
        });
    };
    session();
    const int gdi = testing_support::GdiObjectCount(), heap = testing_support::HeapBlockCount();
    for (int i = 0; i < 5; ++i) session();
    EXPECT_EQ(gdi, testing_support::GdiObjectCount());
    EXPECT_LE(testing_support::HeapBlockCount(), heap + 2) << "was " << heap;
}

}  // namespace
