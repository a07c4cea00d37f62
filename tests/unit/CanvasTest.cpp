// The layout canvas and its take items: pixel conversion, hit testing and
// selection order, acquisition order by clicks, labels and the thumbnail.
#include <gtest/gtest.h>
#include <memory>
#include "Fixtures.h"
#include "InputSupport.h"
#include "layout/LayoutCanvas.h"
#include "layout/LayoutOwner.h"
#include "res/resource.h"
#include "templates/Template.h"
#include "ui/TakeDlg.h"

namespace {

using testing_support::BitmapPixels;
using testing_support::PaintedBitmap;

class Owner : public CLayoutOwner {
public:
    void UpdateChart() override { ++charts; }
    void UpdateView() override { ++views; }
    HWND OwnerWindow() const override { return nullptr; }
    void DeleteTake(int) override {}
    int charts = 0, views = 0;
};

// A popup holding a static control of the given client size, as a dialog does.
struct CanvasWindow : input_support::Popup {
    CanvasWindow(int w, int h, int x = 0)
        : Popup(x, 0, w + 40, h + 40), control(Add("STATIC", SS_NOTIFY, 0, 0, w, h)) {}
    const HWND control;
};

class Canvas : public testing::Test {
protected:
    void SetUp() override { Show(canvas, window, &owner, false); }
    // Makes `c` the canvas of the window's control, showing tpl unless told not to.
    void Show(CLayoutCanvas& c, const CanvasWindow& w, CLayoutOwner* o, bool showTpl = true) {
        ASSERT_TRUE(c.Subclass(w.control));
        c.Init(o, &noFile);
        if (showTpl) c.SetTemplate(&tpl);
    }
    int PositionOfSelected() const {
        return canvas.GetSelectedTake() ? canvas.GetSelectedTake()->GetPosition() : -1;
    }
    void Click(int x, int y) {
        SendMessageA(window.control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
    }
    // A canvas of the full layout size (1024 x 768) showing tpl, for reading labels.
    CLayoutCanvas& Wide() {
        big = std::make_unique<CanvasWindow>(1024, 768);
        Show(wide, *big, &owner);
        return wide;
    }
    SettingsFile settings{SensorSection(1, "A", 1000, 800) + SensorSection(2, "B", 800, 600) +
                          "[Holder1]\r\nName=H\r\nColorR=200\r\nInactiveColorB=200\r\n"
                          "TextColorG=255\r\n"};
    std::string noFile;
    CanvasWindow window{256, 192};
    Owner owner;
    CLayoutCanvas canvas;
    CTemplate tpl;
    std::unique_ptr<CanvasWindow> big;
    CLayoutCanvas wide;
};

TEST_F(Canvas, OutlineVariantFollowsOrientationAndQuadrant) {
    const std::pair<std::vector<BYTE>, int> horizontal[] = {
        {{14, 15, 16}, 2}, {{24, 25, 26}, 0}, {{44, 45}, 2}, {{34}, 0}, {{}, 0}};
    for (const auto& [teeth, variant] : horizontal) {
        CTake t;
        t.SetTeeth(teeth);
        EXPECT_EQ(variant, CTakeTracker::OutlineVariant(t));
    }
    std::unique_ptr<CTake> v(NewTake({31, 32}, 100, 100));
    v->Rotate();
    ASSERT_TRUE(v->IsVertical());
    EXPECT_EQ(1, CTakeTracker::OutlineVariant(*v));
    v->SetTeeth({11, 21});
    EXPECT_EQ(3, CTakeTracker::OutlineVariant(*v));
}

TEST_F(Canvas, TheTopmostTakeWinsAndAClickBringsItUp) {
    tpl.AddTake(NewTake({11}, 100, 100));  // K
    tpl.AddTake(NewTake({12}, 200, 150));  // L
    tpl.AddTake(NewTake({13}, 250, 200));  // M
    canvas.SetTemplate(&tpl);
    EXPECT_EQ(2, PositionOfSelected()) << "the last take built stays selected";
    canvas.SelectTake(-1);
    EXPECT_EQ(-1, PositionOfSelected());
    // Common area of K, L, M in layout units: (250..300, 200..250) = pixels (62..75, 50..62).
    canvas.SelectAt({68, 55});
    EXPECT_EQ(2, PositionOfSelected());
    canvas.SelectAt({30, 30});  // K alone
    EXPECT_EQ(0, PositionOfSelected());
    canvas.SelectAt({68, 55});
    EXPECT_EQ(0, PositionOfSelected()) << "K moved to the top";
    const int charts = owner.charts;
    canvas.SelectAt({200, 170});  // empty canvas
    EXPECT_EQ(-1, PositionOfSelected());
    EXPECT_EQ(charts + 1, owner.charts) << "the chart follows the selection";
}

TEST_F(Canvas, OrderModeNumbersTheTakesInClickOrder) {
    tpl.AddTake(NewTake({11}, 100, 100));  // K
    tpl.AddTake(NewTake({21}, 400, 100));  // L
    tpl.AddTake(NewTake({31}, 100, 400));  // M
    tpl.AddTake(NewTake({41}, 400, 400));  // N
    canvas.SetTemplate(&tpl);
    canvas.SetOrderMode(true);
    auto centre = [](int x, int y) { return std::pair<int, int>{(x + 100) / 4, (y + 75) / 4}; };
    for (auto [x, y] : {centre(400, 400), centre(100, 400), centre(400, 100), centre(100, 100)})
        Click(x, y);
    ASSERT_EQ(4, tpl.GetTakeCount());
    for (int i = 0; i < 4; ++i) EXPECT_EQ(41 - 10 * i, tpl.GetTake(i)->GetTeeth()[0]) << i;
    auto [nx, ny] = centre(400, 400);
    Click(nx, ny);
    EXPECT_EQ(41, tpl.GetTake(3)->GetTeeth()[0]) << "past the last place: the last place";
    EXPECT_EQ(4, canvas.GetTrackerCount());
    for (int i = 0; i < 4; ++i) EXPECT_EQ(i, tpl.GetTake(i)->GetPosition());
}

TEST_F(Canvas, WithoutOwnerClicksChangeNothing) {
    CanvasWindow other(256, 192);
    CLayoutCanvas preview;
    tpl.AddTake(NewTake({11}, 100, 100));
    tpl.AddTake(NewTake({12}, 500, 500));
    Show(preview, other, nullptr);
    preview.SelectTake(1);
    SendMessageA(other.control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(30, 30));
    SendMessageA(other.control, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(30, 30));
    EXPECT_EQ(1, preview.GetSelectedTake()->GetPosition());
    EXPECT_EQ(HTTRANSPARENT, SendMessageA(other.control, WM_NCHITTEST, 0, MAKELPARAM(30, 30)));
    EXPECT_EQ(0, owner.charts);
}

// Pixels of the label colour in the label band of an item: the label's width.
int LabelWidth(CTakeTracker& t, bool orderMode, bool showOnlyActive, DWORD labelColor = 0x00FF00u) {
    const int w = 1024, h = 768;
    const auto px = BitmapPixels(PaintedBitmap(w, h, BLACKNESS, [&](HDC dc) {
                                     SetBkMode(dc, TRANSPARENT);
                                     t.Paint(dc, orderMode, showOnlyActive, nullptr);
                                 }).get());
    const RECT r = t.GetTrackerRect();
    int left = w, right = -1;
    for (int y = r.top; y < r.top + 14 && y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (px[y * w + x] == labelColor) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
    return right < 0 ? 0 : right - left + 1;
}

TEST_F(Canvas, LabelsShowTeethOrOrderAndOnlyForTheActiveTake) {
    tpl.AddTake(NewTake({11, 12, 13}, 300, 300));
    tpl.AddTake(NewTake({21}, 600, 300));
    CTakeTracker& first = *Wide().GetTracker(0);
    const int teethWidth = LabelWidth(first, false, false);
    const int orderWidth = LabelWidth(first, true, false);
    EXPECT_GT(teethWidth, 2 * orderWidth) << "\"11,12,13\" against \"1\"";
    EXPECT_GT(orderWidth, 0);
    EXPECT_EQ(0, LabelWidth(first, false, true)) << "not selected: no label";
    EXPECT_GT(LabelWidth(*wide.GetTracker(1), false, true), 0);
}

TEST_F(Canvas, ATakeWithoutItsHolderIsBlackWithAWhiteLabel) {
    tpl.AddTake(NewTake({11, 12, 13}, 300, 300, /*holder*/ 0));
    tpl.AddTake(NewTake({21, 22, 23}, 600, 300, /*holder*/ 7));
    tpl.AddTake(NewTake({31, 32, 33}, 300, 500, /*holder*/ 1));
    Wide();
    for (int i : {0, 1}) {
        EXPECT_GT(LabelWidth(*wide.GetTracker(i), false, false, 0xFFFFFFu), 10) << i;
        EXPECT_EQ(0, LabelWidth(*wide.GetTracker(i), false, false)) << i;
    }
    EXPECT_GT(LabelWidth(*wide.GetTracker(2), false, false), 10) << "its holder's";
}

TEST_F(Canvas, ThumbnailShowsTheTakesAtTheirPlacesIn200By150) {
    tpl.AddTake(NewTake({11}, 100, 100));  // 200 x 150 layout units
    tpl.AddTake(NewTake({21}, 600, 400));  // selected: built last
    canvas.SetTemplate(&tpl);
    UpdateWindow(window.control);
    fw::UniqueBitmap thumb;
    EXPECT_TRUE(canvas.RenderThumbnail(thumb));
    int w, h;
    const auto px = BitmapPixels(thumb.get(), &w, &h);
    ASSERT_EQ(200, w);
    ASSERT_EQ(150, h);
    // A layout point as the thumbnail shows it, below the label band.
    auto at = [&](int x, int y) { return px[(y * 150 / 768) * 200 + x * 200 / 1024]; };
    const DWORD inactive = 0x0000C8, active = 0xC80000;
    EXPECT_EQ(inactive, at(200, 215)) << "the first take, in its holder's inactive colour";
    const DWORD second = at(700, 515);
    EXPECT_TRUE(second == inactive || second == active) << std::hex << second;
    EXPECT_NE(inactive, at(800, 150)) << "no take there";
    EXPECT_NE(active, at(800, 150));
    EXPECT_EQ(2, owner.views);
    EXPECT_EQ(nullptr, canvas.GetSelectedTake()) << "the selection is not restored";
    EXPECT_FALSE(canvas.GetShowOnlyActive());
}

TEST_F(Canvas, MovedTakeFollowsTheMouseInsideTheArea) {
    tpl.AddTake(NewTake({11}, 100, 100));
    canvas.SetTemplate(&tpl);
    CTakeTracker* t = canvas.GetTracker(0);
    // Drive the tracker's loop: posted moves and the release are waiting for it.
    PostMessageA(window.control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(40, 40));
    PostMessageA(window.control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(1, 1));
    PostMessageA(window.control, WM_LBUTTONUP, 0, MAKELPARAM(1, 1));
    Click(30, 30);
    const RECT r = tpl.GetTake(0)->GetRect();
    EXPECT_EQ(70, r.left) << "never left of the layout area";
    EXPECT_EQ(50, r.top);
    EXPECT_EQ(t, canvas.GetSelectedTracker());
}

// What a window holds now, as the last repaints left it.
std::vector<DWORD> Read(HWND window) {
    return BitmapPixels(testing_support::WindowBitmap(window).get());
}

// The layout picture stretched to w x h as a plain StretchBlt does it.
std::vector<DWORD> Stretched(int w, int h) {
    fw::UniqueBitmap picture(LoadBitmapA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(IDB_LAYOUT)));
    BITMAP bm{};
    GetObjectA(picture.get(), sizeof bm, &bm);
    fw::UniqueDC from(CreateCompatibleDC(nullptr));
    fw::SelectObj selected(from.get(), picture.get());
    return BitmapPixels(PaintedBitmap(w, h, BLACKNESS, [&](HDC to) {
                            StretchBlt(to, 0, 0, w, h, from.get(), 0, 0, bm.bmWidth, bm.bmHeight,
                                       SRCCOPY);
                        }).get());
}

// Without takes the canvas shows the layout picture stretched to it.
// Repainting only some of it (the picture is stretched once and copied) leaves
// what a full repaint shows; a resized canvas shows what one made at that
// size shows; painting keeps no GDI object beyond those of its first paint.
TEST_F(Canvas, PartialRepaintsShowWhatAFullOneShows) {
    const HWND control = window.control;
    auto full = [&] {
        RedrawWindow(control, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
        return Read(control);
    };
    EXPECT_EQ(Stretched(256, 192), full());
    tpl.AddTake(NewTake({11}, 100, 100));
    tpl.AddTake(NewTake({21, 22}, 600, 400, 0));
    tpl.AddTake(NewTake({31}, 150, 160));  // over the first
    canvas.SetTemplate(&tpl);
    const auto shown = full();
    const int objects = testing_support::GdiObjectCount();
    canvas.SelectAt({30, 30});  // repaints the two items whose selection changed
    auto left = Read(control);
    EXPECT_EQ(full(), left);
    for (RECT r : {RECT{3, 7, 50, 41}, RECT{100, 60, 181, 150}, RECT{255, 191, 256, 192}}) {
        InvalidateRect(control, &r, TRUE);
        UpdateWindow(control);
        left = Read(control);
        EXPECT_EQ(full(), left) << r;
    }
    const auto before = full();
    // Kept: the first repaint after a resize draws the borders where the items
    // were before it; the second one is compared.
    SetWindowPos(control, nullptr, 0, 0, 280, 220, SWP_NOMOVE | SWP_NOZORDER);
    full();
    const auto resized = full();
    SetWindowPos(control, nullptr, 0, 0, 256, 192, SWP_NOMOVE | SWP_NOZORDER);
    full();
    EXPECT_EQ(before, full()) << "stretched again at the old size";
    EXPECT_NE(shown, before) << "the first take came to the top";
    EXPECT_EQ(objects, testing_support::GdiObjectCount());
    CanvasWindow same(280, 220, 400);
    CLayoutCanvas made;
    Show(made, same, &owner);
    made.SelectAt({35, 35});  // the first take, brought to the top as above
    RedrawWindow(same.control, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(Read(same.control), resized) << "as if made at the new size";
}

// The preview keeps its finished picture between paints; after a take moved
// and after the settings were loaded again it shows what a new one shows.
TEST_F(Canvas, APreviewShowsWhatChangedAsANewOneDoes) {
    tpl.AddTake(NewTake({11}, 100, 100));
    tpl.AddTake(NewTake({21}, 600, 400));
    auto shown = [&](CanvasWindow& w, CLayoutCanvas& c) {
        if (!c.hwnd()) {
            Show(c, w, nullptr);
            c.SelectTake(1);
        }
        // Kept: the first repaint after a move draws the border where the item was.
        for (int i = 0; i < 2; ++i)
            RedrawWindow(w.control, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        return Read(w.control);
    };
    CanvasWindow keptWindow(256, 192, 400);
    CLayoutCanvas kept;
    const auto before = shown(keptWindow, kept);
    tpl.GetTake(0)->MoveTo(300, 300);
    const auto moved = shown(keptWindow, kept);
    EXPECT_NE(before, moved);
    {
        CanvasWindow w(256, 192, 700);
        CLayoutCanvas fresh;
        EXPECT_EQ(shown(w, fresh), moved);
    }
    testing_support::WriteText(settings.path(), SensorSection(1, "A", 1000, 800) +
                                                    SensorSection(2, "B", 800, 600) +
                                                    "[Holder1]\r\nName=H\r\nColorR=200\r\n"
                                                    "InactiveColorG=200\r\nTextColorG=255\r\n");
    ASSERT_TRUE(TheSettings().Load(settings.path()));
    const auto reloaded = shown(keptWindow, kept);
    EXPECT_NE(moved, reloaded) << "another inactive colour";
    CanvasWindow w(256, 192, 700);
    CLayoutCanvas fresh;
    EXPECT_EQ(shown(w, fresh), reloaded);
}

TEST(TakeDialogPicture, ReducedByOneFactorAndCentred) {
    RECT r = CTakeDlg::FitImage({0, 0, 500, 430}, 600, 400);
    EXPECT_EQ(0, r.left);
    EXPECT_EQ(49, r.top) << "215 - 166";
    EXPECT_EQ(500, r.right - r.left);
    EXPECT_EQ(333, r.bottom - r.top);
    r = CTakeDlg::FitImage({0, 0, 300, 300}, 200, 600);
    EXPECT_EQ(100, r.right - r.left) << "the vertical factor 0.5 is the smaller";
    EXPECT_EQ(300, r.bottom - r.top);
}

}  // namespace
