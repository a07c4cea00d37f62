// The module object from inside: its paths, and the preview window of a run
// (place, marked take, labels), which a host cannot look into.
#include <gtest/gtest.h>
#include <future>
#include "../dll/DialogDriver.h"
#include "Fixtures.h"
#include "plugin/TemplateApp.h"
#include "res/resource.h"
#include "templates/Template.h"
#include "ui/PreviewDlg.h"

namespace {

TEST(App, BasePathWithOrWithoutBackslashGivesOneCatalog) {
    CTemplateApp& app = TheApp();
    ASSERT_TRUE(app.Initialize("C:\\Data"));
    EXPECT_EQ("C:\\Data\\", app.GetBasePath());
    EXPECT_EQ("C:\\Data\\Template\\Zemblax.ini", app.GetCatalogPath());
    ASSERT_TRUE(app.Initialize("C:\\Data\\"));
    EXPECT_EQ("C:\\Data\\Template\\Zemblax.ini", app.GetCatalogPath());
    EXPECT_FALSE(app.Initialize(""));
    EXPECT_EQ("C:\\Data\\Template\\Zemblax.ini", app.GetCatalogPath());
    app.Uninitialize();
}

class Preview : public testing::Test {
protected:
    void SetUp() override {
        CreateDirectoryA(dir.File("Template").c_str(), nullptr);
        ini = dir.File("Template\\Zemblax.ini");
    }
    void TearDown() override {
        TheApp().StopRun();
        TheApp().Uninitialize();
        if (host) DestroyWindow(host);
    }
    // The host's main window, destroyed with the test.
    HWND MakeHost(int x, int y, int w, int h) {
        host = CreateWindowExA(0, "STATIC", "host", WS_POPUP | WS_VISIBLE, x, y, w, h, nullptr,
                               nullptr, nullptr, nullptr);
        return host;
    }
    void Write(const std::string& application) {
        testing_support::WriteText(
            ini, "[Application]\r\n" + application + StandardSettings() +
                     "[Template1]\r\nName=Drei\r\n");
        testing_support::WriteText(
            dir.File("Template\\Template1.ini"),
            "[Take_1_1]\r\nSensor=2\r\nTeeth=11,12\r\nWindowPositionX=100\r\nWindowPositionY=100\r\n"
            "ZoomDenominator=4\r\nHolder=1\r\n[Take_1_2]\r\nSensor=2\r\nTeeth=21\r\nWindowPositionX=400\r\n"
            "WindowPositionY=100\r\nZoomDenominator=4\r\nHolder=1\r\n[Take_1_3]\r\nSensor=2\r\nTeeth=36\r\n"
            "WindowPositionX=400\r\nWindowPositionY=400\r\nZoomDenominator=4\r\n");
    }
    bool Start(HWND host) {
        TheApp().Initialize(dir.path().c_str());
        DialogDriver driver;
        auto user = std::async(std::launch::async, [&] {
            HWND dlg = driver.WaitFor(IDC_SELECTION_LIST);
            if (dlg) DialogDriver::Click(dlg, IDOK);
        });
        const BOOL ok = TheApp().Start(host);
        user.get();
        return ok != FALSE;
    }
    // The colour at the centre of a take as the preview shows it on screen.
    COLORREF ShownAt(int position) {
        CLayoutCanvas& canvas = TheApp().GetPreview()->Canvas();
        RedrawWindow(canvas.hwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
        for (int i = 0; i < canvas.GetTrackerCount(); ++i) {
            CTakeTracker* t = canvas.GetTracker(i);
            if (t->GetItemTake()->GetPosition() != position) continue;
            const RECT r = t->GetTrackerRect();
            fw::WindowDC dc(canvas.hwnd());
            return GetPixel(dc.get(), (r.left + r.right) / 2, (r.top + r.bottom) / 2 + 4);
        }
        return CLR_INVALID;
    }
    int Marked() {
        CTake* t = TheApp().GetPreview()->Canvas().GetSelectedTake();
        return t ? t->GetPosition() : -1;
    }
    testing_support::ScratchDir dir;
    std::string ini;
    HWND host = nullptr;
};

TEST_F(Preview, SitsAtTheHostsLeftEdgeAndMarksTheCurrentTake) {
    Write("");
    MakeHost(0, 0, 1024, 768);
    ASSERT_TRUE(Start(host));
    CPreviewDlg* preview = TheApp().GetPreview();
    ASSERT_NE(nullptr, preview);
    EXPECT_EQ((RECT{0, 520, 342, 768}), preview->GetWindowRect())
        << "342 x 248, flush with the host's bottom edge";
    RECT canvas, client;
    GetWindowRect(preview->Canvas().hwnd(), &canvas);
    GetClientRect(preview->hwnd(), &client);
    EXPECT_EQ(client.right, canvas.right - canvas.left) << "the canvas fills the window";
    EXPECT_EQ(client.bottom, canvas.bottom - canvas.top);
    EXPECT_FALSE(preview->Canvas().IsOrderMode()) << "ShowToothNumbers=1 labels teeth";

    EXPECT_EQ(2, Marked()) << "until the first delivery the last take is marked";
    std::string label;
    int orientation;
    RECT out, hostRect{0, 0, 844, 698};
    EXPECT_EQ(2, TheApp().DeliverTake(&hostRect, &label, &orientation, &out));
    EXPECT_EQ(0, Marked());
    EXPECT_EQ(RGB(255, 0, 0), ShownAt(0)) << "the active take in its holder's colour";
    EXPECT_EQ(RGB(0, 0, 0), ShownAt(1)) << "the others in its inactive colour";
    EXPECT_EQ(3, TheApp().DeliverTake(&hostRect, &label, &orientation, &out));
    EXPECT_EQ(1, Marked());
    EXPECT_TRUE(TheApp().StepBack());  // P 3 -> 2
    EXPECT_EQ(1, Marked()) << "the take Weiter would deliver next";
    EXPECT_FALSE(TheApp().StepBack());
    EXPECT_EQ(0, Marked());
    EXPECT_TRUE(TheApp().StepForward());
    EXPECT_FALSE(TheApp().StepForward());
    EXPECT_EQ(2, Marked());
    EXPECT_FALSE(TheApp().StepForward()) << "never beyond N";
    EXPECT_EQ(3u, TheApp().GetPosition());
}

TEST_F(Preview, HostLowerOnTheScreenAndOrderLabels) {
    Write("ShowToothNumbers=0\r\nTakeDlgWidth=400\r\nTakeDlgHeight=300\r\n");
    MakeHost(50, 100, 1000, 768);
    ASSERT_TRUE(Start(host));
    EXPECT_EQ((RECT{50, 468, 450, 768}), TheApp().GetPreview()->GetWindowRect())
        << "400 x 300 at the host's height, not its bottom edge";
    EXPECT_TRUE(TheApp().GetPreview()->Canvas().IsOrderMode());
    EXPECT_TRUE(TheApp().StopRun());
    EXPECT_EQ(nullptr, TheApp().GetPreview());
    EXPECT_EQ(nullptr, TheApp().GetTemplate());
}

TEST_F(Preview, EscapeHidesThePreviewButTheRunGoesOn) {
    Write("");
    MakeHost(0, 0, 800, 600);
    ASSERT_TRUE(Start(host));
    HWND preview = TheApp().GetPreview()->hwnd();
    SendMessageA(preview, WM_COMMAND, IDCANCEL, 0);
    EXPECT_FALSE(IsWindowVisible(preview));
    EXPECT_EQ(2, TheApp().GetRunState());
    EXPECT_TRUE(TheApp().StopRun());
    EXPECT_FALSE(IsWindow(preview));
}

}  // namespace
