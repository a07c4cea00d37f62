// The dentition chart in a real window, driven with the mouse pointer as a
// user moves it: numbering and hit testing on outlines the test writes, the
// hover highlight and the assigned teeth read back from the screen, clicks
// on the current take, and a sensor dragged from the palette and dropped.
#include <gtest/gtest.h>
#include <functional>
#include "Fixtures.h"
#include "InputSupport.h"
#include "chart/ToothChart.h"
#include "chart/ToothChartOwner.h"
#include "dib/Dib.h"
#include "res/resource.h"
#include "templates/Take.h"

namespace {

// Test outlines in picture pixels (529 x 250): 30-pixel columns from the
// midline, upper teeth at y 20..120, lower ones at 130..230, each 4 pixels
// wider on both sides than its column, so that neighbours overlap. Tooth 16
// (index 5) is a strip along the top instead, over 15 and over 21.
RECT TestOutline(int index) {
    if (index == 5) return {100, 0, 300, 25};
    const int q = index / 8, t = index % 8;
    const bool left = q == 0 || q == 3;  // the patient's right is the viewer's left
    const int x = left ? 264 - (t + 1) * 30 : 264 + t * 30;
    const int y = q < 2 ? 20 : 130;
    return {x - 4, y, x + 34, y + 100};
}

std::string ToothSections(const std::function<RECT(int)>& outline = TestOutline) {
    std::string s;
    for (int i = 0; i < 32; ++i) {
        const RECT r = outline(i);
        const POINT v[4] = {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}};
        s += "[Tooth" + std::to_string(i / 8 + 1) + std::to_string(i % 8 + 1) + "]\r\n";
        for (int k = 0; k < 4; ++k)
            s += "PolygonX" + std::to_string(k + 1) + "=" + std::to_string(v[k].x) + "\r\nPolygonY" +
                 std::to_string(k + 1) + "=" + std::to_string(v[k].y) + "\r\n";
    }
    return s;
}

// A 40 x 30 sensor at one chart pixel per unit.
const std::string kSmallSensor =
    "[Sensor1]\r\nName=Klein\r\nDimension=3527\r\nPictureWidth=10000\r\nPictureHeight=7500\r\n"
    "PolygonVertices=4\r\nPolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=40\r\nPolygonY2=0\r\n"
    "PolygonX3=40\r\nPolygonY3=30\r\nPolygonX4=0\r\nPolygonY4=30\r\n";

class Owner : public CToothChartOwner {
public:
    bool IsDragging() const override { return dragging; }
    bool IsDragVertical() const override {
        const CSensor* s = TheSettings().GetPaletteEntry(index);
        return s && s->IsVertical();
    }
    bool GetDragRegion(fw::UniqueRgn& r, int x, int y, bool side, double sx, double sy) const override {
        const CSensor* s = TheSettings().GetPaletteEntry(index);
        return s && s->GetFootprintRegion(r, x, y, side, sx, sy);
    }
    bool GetDragMarkerRegion(fw::UniqueRgn& r, int x, int y, bool side, double sx,
                             double sy) const override {
        const CSensor* s = TheSettings().GetPaletteEntry(index);
        return s && s->GetMarkerRegion(r, x, y, side, sx, sy);
    }
    int EndDrag() override {
        dragging = false;
        ReleaseCapture();
        return std::exchange(index, 0);
    }
    bool AddTakeFromPalette(const std::vector<BYTE>& teeth, int palette) override {
        dropped.push_back(teeth);
        droppedEntry = palette;
        return true;
    }
    void UpdateSelectedItem() override { ++updates; }

    bool dragging = false;
    int index = 0, droppedEntry = -1, updates = 0;
    std::vector<std::vector<BYTE>> dropped;
};

using input_support::Pump;
void SendMouse(DWORD flags, POINT screen = {}) { input_support::Mouse(flags, screen); }

class Chart : public testing::Test {
protected:
    void Open(int w, int h, const std::string& extra = "") {
        OpenWith(kSmallSensor + ToothSections() + extra, w, h);
    }
    void OpenWith(const std::string& settingsText, int w, int h) {
        settings = std::make_unique<SettingsFile>(settingsText);
        ASSERT_TRUE(settings->loaded());
        popup = std::make_unique<input_support::Popup>(kLeft, kTop, w, h, WS_EX_TOPMOST);
        control = popup->Add("STATIC", 0, 0, 0, w, h);
        chart = std::make_unique<CToothChart>();
        ASSERT_TRUE(chart->Subclass(control));
        chart->Init(&owner, settings->path());
        Pump(60);
    }
    // The shipped picture and outlines, at the size the configure dialog gives the chart.
    void OpenShipped() {
        const std::string shipped = testing_support::TestData() + "data\\Template\\Zemblax.ini";
        ASSERT_TRUE(testing_support::Exists(shipped));
        OpenWith(testing_support::ReadText(shipped), 396, 200);
    }
    void TearDown() override {
        SendMouse(MOUSEEVENTF_MOVE, {5, 5});
        chart.reset();
        popup.reset();
        settings.reset();
    }
    POINT Screen(POINT client) const {
        ClientToScreen(control, &client);
        return client;
    }
    POINT Centre(int index) const {
        const RECT b = chart->GetToothBox(index);
        return {(b.left + b.right) / 2, (b.top + b.bottom) / 2};
    }
    void MoveTo(POINT client) {
        SendMouse(MOUSEEVENTF_MOVE, Screen(client));
        UpdateWindow(control);
    }
    void ClickAt(POINT client) {
        MoveTo(client);
        SendMouse(MOUSEEVENTF_LEFTDOWN);
        SendMouse(MOUSEEVENTF_LEFTUP);
    }
    // What the chart shows after a full repaint, read from its window; kept
    // as a picture for the documentation when a file name is given.
    std::vector<DWORD> Shot(const char* keepAs = nullptr) {
        RedrawWindow(control, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        return Read(keepAs);
    }
    // What the window holds now, as the last repaints left it.
    std::vector<DWORD> Read(const char* keepAs = nullptr) {
        fw::UniqueBitmap bmp = testing_support::WindowBitmap(control);
        if (keepAs) {
            fw::UniqueGlobal dib(BitmapToDib(bmp.get(), BI_RGB, 24, nullptr));
            WriteDibFile(testing_support::TestData() + "out\\" + keepAs, dib.get());
        }
        return testing_support::BitmapPixels(bmp.get());
    }
    // Where the changed pixels between two shots lie; empty when none changed.
    RECT Changed(const std::vector<DWORD>& a, const std::vector<DWORD>& b) const {
        const int w = chart->GetClientRect().right;
        RECT r{w, 1 << 20, -1, -1};
        for (size_t i = 0; i < a.size(); ++i)
            if (a[i] != b[i]) {
                const LONG x = static_cast<LONG>(i % w), y = static_cast<LONG>(i / w);
                r = {std::min(r.left, x), std::min(r.top, y), std::max(r.right, x + 1),
                     std::max(r.bottom, y + 1)};
            }
        return r.right < 0 ? RECT{} : r;
    }
    // The rectangle a tooth's picture covers: its box's corner, its scaled size.
    RECT PictureRect(int index) const {
        const int n = (index & 7) + (index >> 3) * 10 + 11;
        fw::UniqueBitmap bmp(LoadBitmapA(GetModuleHandleA(nullptr),
                                         MAKEINTRESOURCEA(IDB_TOOTH_HIGHLIGHT_BASE + n)));
        BITMAP bm{};
        GetObjectA(bmp.get(), sizeof bm, &bm);
        const RECT b = chart->GetToothBox(index);
        return {b.left, b.top, b.left + static_cast<LONG>(bm.bmWidth * chart->GetScaleX()) + 1,
                b.top + static_cast<LONG>(bm.bmHeight * chart->GetScaleY()) + 1};
    }
    static bool Inside(const RECT& inner, const RECT& outer) {
        return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
               inner.bottom <= outer.bottom;
    }
    // Hovering over tooth `index` changes the chart, and only inside that tooth's picture.
    void ExpectHoverLightsOnly(const std::vector<DWORD>& idle, int index) {
        MoveTo(Centre(index));
        const RECT changed = Changed(idle, Shot());
        EXPECT_FALSE(IsRectEmpty(&changed)) << index;
        EXPECT_TRUE(Inside(changed, PictureRect(index))) << index;
    }

    static constexpr int kLeft = 120, kTop = 140;
    std::unique_ptr<SettingsFile> settings;
    std::unique_ptr<input_support::Popup> popup;
    HWND control = nullptr;
    Owner owner;
    std::unique_ptr<CToothChart> chart;
};

TEST(ChartNumbering, BothDentitionsShareTheRegions) {
    CToothChart c;
    const std::pair<int, int> permanent[] = {{0, 11}, {7, 18}, {8, 21}, {15, 28}, {31, 48}};
    for (auto [i, n] : permanent) EXPECT_EQ(n, c.IndexToTooth(i));
    for (auto [n, i] : std::vector<std::pair<int, int>>{{11, 0}, {48, 31}, {55, 4}, {85, 28}, {16, 5}, {56, 5}})
        EXPECT_EQ(i, CToothChart::ToothToIndex(static_cast<BYTE>(n))) << n;
    for (int i = 0; i < 32; ++i) EXPECT_TRUE(c.IsValidIndex(i));
    EXPECT_FALSE(c.IsValidIndex(32));
    c.SetMixedDentition(TRUE);
    EXPECT_EQ(51, c.IndexToTooth(0));
    EXPECT_EQ(85, c.IndexToTooth(28));
    for (int i : {5, 7, 13, 21, 29, 31}) EXPECT_FALSE(c.IsValidIndex(i)) << i;
    for (int i : {0, 4, 8, 12, 16, 20, 24, 28}) EXPECT_TRUE(c.IsValidIndex(i)) << i;
}

TEST_F(Chart, OutlinesScaleOnceToTheControl) {
    auto withVertex = [](int i) { return i == 0 ? RECT{100, 60, 130, 160} : TestOutline(i); };
    OpenWith(kSmallSensor + ToothSections(withVertex), 396, 200);
    EXPECT_DOUBLE_EQ(396.0 / 529.0, chart->GetScaleX());
    EXPECT_DOUBLE_EQ(0.8, chart->GetScaleY());
    EXPECT_EQ(74, CToothChart::GetToothVertex(0, 0).x);
    EXPECT_EQ(48, CToothChart::GetToothVertex(0, 0).y);
    EXPECT_FALSE(chart->GetShowRegions());
}

TEST_F(Chart, HitTestLowerIndexWinsAndSkipsWhatTheModeCannotChoose) {
    Open(529, 250, "[Debug]\r\nShowRegions=1\r\n");
    EXPECT_TRUE(chart->GetShowRegions());
    // Index 3 spans x 140..178, index 4 x 110..148: both hold x 145.
    EXPECT_EQ(3, chart->ToothAt(145, 70));
    EXPECT_EQ(CToothChart::kNoTooth, chart->ToothAt(5, 5));
    EXPECT_EQ(5, chart->ToothAt(105, 10));
    chart->SetMixedDentition(TRUE);
    EXPECT_EQ(4, chart->ToothAt(115, 22)) << "4 under 5";
    EXPECT_EQ(8, chart->ToothAt(280, 22)) << "8 under 5";
    EXPECT_EQ(CToothChart::kNoTooth, chart->ToothAt(105, 10)) << "5 alone cannot be chosen";
    owner.dragging = true;
    EXPECT_EQ(0, chart->ToothAt(5, 5)) << "while dragging every point is a hit";
}

TEST_F(Chart, HoveringATeethTurnsExactlyThatToothGrey) {
    Open(396, 200);
    MoveTo({390, 195});  // no tooth there
    const auto idle = Shot();
    for (int i : {0, 13, 30}) ExpectHoverLightsOnly(idle, i);
    // Mixed dentition: where 16's region (index 5, not to be chosen) lies
    // over 21's (index 8), it ends the search: no highlight, though a click
    // there picks 21.
    chart->SetMixedDentition(TRUE);
    const POINT overlap{static_cast<LONG>(280 * chart->GetScaleX()),
                        static_cast<LONG>(22 * chart->GetScaleY())};
    MoveTo(overlap);
    const RECT none = Changed(idle, Shot());
    EXPECT_TRUE(IsRectEmpty(&none));
    EXPECT_EQ(8, chart->ToothAt(overlap.x, overlap.y));
}

TEST_F(Chart, ClicksToggleTheCurrentTakesTeeth) {
    Open(396, 200);
    // Clicks a little apart: the same spot twice in a row is a double click,
    // which the chart leaves alone as every static control does.
    auto near11 = [&](int k) { return POINT{Centre(0).x, Centre(0).y + 12 * (k % 3) - 12}; };
    ClickAt(near11(0));
    EXPECT_EQ(0, owner.updates) << "no current take: clicks are ignored";
    CTake take;
    take.SetTeeth({12, 13});
    chart->SetCurrentTake(&take);
    ClickAt(near11(1));
    EXPECT_EQ((std::vector<BYTE>{11, 12, 13}), take.GetTeeth());
    EXPECT_EQ(1, owner.updates);
    ClickAt(near11(2));
    EXPECT_EQ((std::vector<BYTE>{12, 13}), take.GetTeeth());
    EXPECT_EQ(2, owner.updates);
    chart->SetMixedDentition(TRUE);
    ClickAt(near11(3));
    EXPECT_EQ((std::vector<BYTE>{12, 13, 51}), take.GetTeeth());
}

TEST_F(Chart, AssignedTeethShowGreenInEitherDentition) {
    Open(396, 200);
    MoveTo({390, 195});
    const auto none = Shot();
    CTake take;
    take.SetTeeth({16});
    chart->SetCurrentTake(&take);
    chart->SetMixedDentition(TRUE);
    const auto shown = Shot();
    const RECT changed = Changed(none, shown);
    EXPECT_TRUE(Inside(changed, PictureRect(5)));
    int green = 0;
    const int w = chart->GetClientRect().right;
    for (size_t i = 0; i < shown.size(); ++i) {
        const int r = shown[i] >> 16 & 0xFF, g = shown[i] >> 8 & 0xFF, b = shown[i] & 0xFF;
        const POINT p{static_cast<LONG>(i % w), static_cast<LONG>(i / w)};
        if (g > r + 40 && g > b + 40 && PtInRect(&changed, p)) ++green;
    }
    EXPECT_GT(green, 50);
    // Changed behind the chart's back, as the designer changes a take.
    take.SetTeeth({});
    EXPECT_EQ(none, Shot()) << "no green tooth is left";
    take.SetTeeth({16});
    EXPECT_EQ(shown, Shot());
}

// A move repaints just the square around the cursor: what it leaves in the
// window is what a full repaint shows, also with green teeth (drawn over the
// highlight) and while a sensor is dragged. Only a jump farther than the
// square leaves the old highlight behind.
TEST_F(Chart, MovesLeaveWhatAFullRepaintShows) {
    OpenShipped();
    CTake take;
    take.SetTeeth({12, 13, 15, 17, 27});  // 17 and 27 across the edges of some squares
    chart->SetCurrentTake(&take);
    MoveTo({395, 199});
    const auto idle = Shot();
    for (int i : {0, 1, 2, 3, 4, 5, 4, 8, 9}) {  // neighbours, each within the next square
        MoveTo(Centre(i));
        const auto left = Read();
        EXPECT_EQ(Shot(), left) << i;
    }
    MoveTo(Centre(2));
    EXPECT_EQ(idle, Read()) << "tooth 13 is green: its highlight lies under the green";
    owner.dragging = true;
    owner.index = 1;
    SetCapture(control);
    for (int i : {1, 2}) {
        MoveTo(Centre(i));
        const auto left = Read();
        EXPECT_EQ(Shot(), left) << "dragging over " << i;
    }
    SendMouse(MOUSEEVENTF_LEFTUP);
    MoveTo(Centre(7));
    MoveTo(Centre(15));
    const auto left = Read();
    const RECT stale = Changed(Shot(), left);
    EXPECT_FALSE(IsRectEmpty(&stale));
    EXPECT_TRUE(Inside(stale, PictureRect(7))) << "tooth 18 stays grey until repainted";
}

TEST_F(Chart, ASensorDroppedOnTheChartCoversTheTeethUnderIt) {
    Open(529, 250);
    MoveTo({520, 245});
    const auto idle = Shot();
    // The drag starts in the palette, which captures the mouse for the chart.
    owner.dragging = true;
    SetCapture(control);
    const POINT midline{264, 70};  // a 40 x 30 footprint over 11 and 21 only
    MoveTo(midline);
    const auto dragging = Shot();
    const RECT changed = Changed(idle, dragging);
    for (int i : {0, 8}) {
        const RECT box = chart->GetToothBox(i);
        RECT both;
        EXPECT_TRUE(IntersectRect(&both, &changed, &box)) << i;
    }
    const RECT away = chart->GetToothBox(2);
    std::vector<DWORD> a, b;
    for (LONG y = away.top; y < away.bottom; ++y)
        for (LONG x = away.left; x < away.right; ++x) {
            a.push_back(idle[y * 529 + x]);
            b.push_back(dragging[y * 529 + x]);
        }
    EXPECT_EQ(a, b) << "tooth 13 is not under the sensor";
    SendMouse(MOUSEEVENTF_LEFTUP);
    ASSERT_EQ(1u, owner.dropped.size());
    EXPECT_EQ((std::vector<BYTE>{11, 21}), owner.dropped[0]) << "ascending index order";
    EXPECT_FALSE(owner.dragging);

    // Released beside the chart: the drag ends, no take.
    owner.dragging = true;
    SetCapture(control);
    MoveTo({600, 100});
    SendMouse(MOUSEEVENTF_LEFTUP);
    EXPECT_FALSE(owner.dragging);
    EXPECT_EQ(1u, owner.dropped.size());
}

// The shipped picture and outlines: each tooth is found where it is drawn
// and lights up in place.
TEST_F(Chart, ShippedOutlinesHighlightEachToothInItsPlace) {
    OpenShipped();
    MoveTo({395, 199});
    const auto idle = Shot();
    for (int i : {0, 2, 3, 5, 7, 10, 16, 21, 29, 31}) {
        EXPECT_EQ(i, chart->ToothAt(Centre(i).x, Centre(i).y)) << i;
        ExpectHoverLightsOnly(idle, i);
    }
    CTake take;
    take.SetTeeth({14, 15, 16});
    chart->SetCurrentTake(&take);
    MoveTo(Centre(27));
    Shot("chart-hover.bmp");
    owner.dragging = true;
    owner.index = 1;  // the first sensor, standing
    SetCapture(control);
    MoveTo(Centre(9));
    Shot("chart-drag.bmp");
    SendMouse(MOUSEEVENTF_LEFTUP);
    ASSERT_EQ(1u, owner.dropped.size());
    EXPECT_FALSE(owner.dropped[0].empty()) << "a sensor over 22 covers teeth";
}

TEST_F(Chart, PaintingAndRebuildingKeepGdiObjectsFlat) {
    Open(396, 200);
    Shot();
    const int before = testing_support::GdiObjectCount();
    for (int i = 0; i < 5; ++i) {
        MoveTo(Centre(i));
        Shot();
        CToothChart other;
        other.Subclass(popup->get());
        other.Init(&owner, settings->path());
    }
    MoveTo({390, 195});
    EXPECT_EQ(before, testing_support::GdiObjectCount());
}

}  // namespace
