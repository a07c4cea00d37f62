// The exported interface as a host sees it: version, states, gates and the
// failure paths, through the real DLL.
#include <gtest/gtest.h>
#include "RunSupport.h"

namespace {

BOOL CALLBACK CountPreview(HWND h, LPARAM lp) {
    if (IsWindowVisible(h) && GetDlgItem(h, IDC_PREVIEW_CANVAS)) ++*reinterpret_cast<int*>(lp);
    return TRUE;
}

// Visible preview windows of this thread.
int PreviewWindows() {
    int n = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountPreview, reinterpret_cast<LPARAM>(&n));
    return n;
}

class Interface : public ModuleTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(ModuleTest::SetUp());
        cat.AddTemplate(1, "A", ThreeTakes());
    }
};

TEST_F(Interface, VersionIsOneWhateverTheHostAsks) {
    UINT v = 0;
    EXPECT_FALSE(p.CheckVersion(2, &v));
    EXPECT_EQ(1u, v);
    v = 0;
    EXPECT_TRUE(p.CheckVersion(1, &v));
    EXPECT_EQ(1u, v);
    EXPECT_TRUE(p.CheckVersion(1, nullptr));
    EXPECT_FALSE(p.CheckVersion(0, nullptr));
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, NotInitialisedOrNoWindowRefusesWithTheHandBeep) {
    HWND gone;
    {
        HostWindow temporary;
        gone = temporary.hwnd();
    }
    const struct {
        const char* name;
        bool initialised;
        HWND window;
    } cases[] = {{"loaded only", false, host.hwnd()}, {"destroyed window", true, gone}};
    for (const auto& c : cases) {
        ResetModule();
        if (c.initialised) {
            ASSERT_TRUE(p.Initialize(cat.base().c_str()));
        }
        Images im = MakeImages();
        EXPECT_FALSE(p.Start(c.window)) << c.name;
        EXPECT_FALSE(p.Configure(c.window)) << c.name;
        EXPECT_EQ(-1, Next(c.window, im).result) << c.name;
        EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits)) << c.name;
        EXPECT_EQ((std::vector<UINT>{MB_ICONHAND, MB_ICONHAND, MB_ICONHAND}), TakeBeeps()) << c.name;
        EXPECT_FALSE(p.Stop()) << c.name << ": nothing to stop, and no beep";
        EXPECT_EQ(3, p.GetState()) << c.name;
    }
    EXPECT_TRUE(TakeBeeps().empty());
}

// The designer opens; the user ends it at once with Beenden.
BOOL ConfigureAndFinish(HWND host) {
    return WithUser<BOOL>([&] { return PluginHost::Get().Configure(host); },
                          [](DialogDriver& d) {
                              HWND dlg = d.WaitFor(IDC_TOOTH_CHART);
                              ASSERT_NE(nullptr, dlg);
                              DialogDriver::Click(dlg, IDCANCEL);
                          });
}

TEST_F(Interface, EmptyBasePathIsRefusedSilentlyAndKeepsThePrevious) {
    EXPECT_FALSE(p.Initialize(""));
    EXPECT_FALSE(p.Initialize(nullptr));
    EXPECT_FALSE(p.Configure(host.hwnd()));  // still not initialised
    TakeBeeps();
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    EXPECT_FALSE(p.Initialize(""));
    EXPECT_TRUE(ConfigureAndFinish(host.hwnd())) << "the earlier initialisation must stay";
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, CancelledSelectionLeavesNoRun) {
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    BOOL started = WithUser<BOOL>([&] { return p.Start(host.hwnd()); }, [](DialogDriver& d) {
        HWND dlg = d.WaitFor(IDC_SELECTION_LIST);
        ASSERT_NE(nullptr, dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_FALSE(started);
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(p.Stop());
}

TEST_F(Interface, ATemplateThatDoesNotLoadStartsNoRun) {
    cat.AddTemplate(2, "Kaputt", {{"11"}, {"12", 9}});  // take 2 names a sensor that is not there
    EXPECT_FALSE(StartOn(cat, host.hwnd(), 1));
    EXPECT_EQ(3, p.GetState());
    EXPECT_EQ(0, PreviewWindows());
    EXPECT_FALSE(p.Stop());
    EXPECT_TRUE(TakeBeeps().empty()) << "no message, no beep";
}

TEST_F(Interface, ATemplateWithoutFileRunsEmptyAndEndsAtOnce) {
    cat.AddTemplate(2, "Leer", {});  // a catalog entry, but no Template2.ini
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 1)) << "a missing file reads as a template without takes";
    EXPECT_EQ(2, p.GetState());
    EXPECT_EQ(1, PreviewWindows());
    std::string states;
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), {}); }, [&](DialogDriver& u) {
        HWND fin = u.WaitFor(IDC_FINISH_ACCEPT);
        ASSERT_NE(nullptr, fin);
        states = EnabledStates(fin, kFinishButtons);
        DialogDriver::Click(fin, IDC_FINISH_QUIT);
    });
    EXPECT_EQ("10101", states) << "the first call finds the end of the template";
    EXPECT_EQ(-1, d.result);
    EXPECT_TRUE(d.done);
    EXPECT_EQ(3, p.GetState());
}

TEST_F(Interface, APreviewThatCannotBeCreatedLeavesTheRunActiveUntilStop) {
    // The host hands over a child of its main window and closes that child when
    // the main window is enabled again, i.e. as the selection dialog ends: the
    // preview's parent is gone by the time the preview is created.
    HWND view = CreateWindowExA(0, "STATIC", "view", WS_CHILD | WS_VISIBLE, 0, 0, 800, 600,
                                host.hwnd(), nullptr, nullptr, nullptr);
    SetPropA(host.hwnd(), kCloseOnEnable, view);
    EXPECT_FALSE(StartOn(cat, view, 0));
    ASSERT_FALSE(IsWindow(view)) << "the host did not close its window during Start";
    EXPECT_EQ(2, p.GetState()) << "the run counts as active once the template is loaded";
    EXPECT_EQ(0, PreviewWindows());
    EXPECT_TRUE(p.Stop());
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(p.Stop());
}

TEST_F(Interface, ConfigureDuringARunLeavesTheRunAlone) {
    ASSERT_TRUE(StartOn(cat, host.hwnd()));
    EXPECT_EQ(2, Next(host.hwnd(), {}).result);
    // The settings are read again, and now have no sensor at all.
    WritePrivateProfileStringA("Sensor1", nullptr, nullptr, cat.ini().c_str());
    EXPECT_TRUE(ConfigureAndFinish(host.hwnd()));
    EXPECT_EQ(2, p.GetState());
    EXPECT_EQ(1, PreviewWindows());
    HWND preview = DialogDriver().WaitFor(IDC_PREVIEW_CANVAS, 2000);
    ASSERT_NE(nullptr, preview);
    RedrawWindow(preview, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    // The run goes on where it was: take 2 comes next (the review is skipped
    // without images, so no dialog needs an answer).
    Delivery d = Next(host.hwnd(), {});
    EXPECT_EQ(3, d.result);
    EXPECT_EQ("11", d.label);
    EXPECT_TRUE(p.Stop());
    EXPECT_FALSE(p.Stop()) << "Stop twice: 1, then 0";
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, UninitializeDuringARunOrphansIt) {
    ASSERT_TRUE(StartOn(cat, host.hwnd()));
    HWND preview = DialogDriver().WaitFor(IDC_PREVIEW_CANVAS, 2000);
    EXPECT_TRUE(p.Uninitialize());
    EXPECT_EQ(2, p.GetState());
    EXPECT_FALSE(p.Stop()) << "Stop must not end an orphaned run";
    EXPECT_EQ(2, p.GetState());
    EXPECT_FALSE(p.Start(host.hwnd()));
    EXPECT_FALSE(p.Configure(host.hwnd()));
    Images im = MakeImages();
    EXPECT_EQ(-1, Next(host.hwnd(), im).result);
    EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits));
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND, MB_ICONHAND, MB_ICONHAND}), TakeBeeps());
    EXPECT_TRUE(preview && IsWindowVisible(preview)) << "the preview stays on screen";
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    EXPECT_TRUE(p.Stop());
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(IsWindow(preview));
}

TEST_F(Interface, StartingAgainWithoutStopReplacesTheRun) {
    cat.AddTemplate(2, "B", {{"46"}});
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    EXPECT_EQ(2, Next(host.hwnd(), {}).result);
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 1)) << "a host that forgot ZEMBLAX_Stop";
    EXPECT_EQ(1, PreviewWindows()) << "the first run's preview is gone";
    Delivery d = Next(host.hwnd(), {});
    EXPECT_EQ(2, d.result);
    EXPECT_EQ("46", d.label);
    EXPECT_TRUE(p.Stop());
    EXPECT_EQ(0, PreviewWindows());
}

TEST_F(Interface, GetNextWithoutARunReportsThePositionAndFreesAnyBlock) {
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    Images im = MakeImages();
    GlobalFree(im.bits);
    im.bits = nullptr;
    Delivery d = Next(host.hwnd(), im);  // one block: no dialog may open, nobody would answer it
    EXPECT_EQ(0, d.result);
    EXPECT_EQ("", d.label);
    EXPECT_EQ(-1, d.orientation) << "no take, no orientation written";
    EXPECT_TRUE(IsFreed(im.header));
    EXPECT_TRUE(TakeBeeps().empty());
}

}  // namespace
