// The exported interface as a host sees it: version, states, gates and the
// failure paths, through the real DLL.
#include <gtest/gtest.h>
#include "RunSupport.h"

namespace {

BOOL CALLBACK CountPreview(HWND h, LPARAM lp) {
    if (IsWindowVisible(h) && GetDlgItem(h, 15039)) ++*reinterpret_cast<int*>(lp);
    return TRUE;
}

// Visible preview windows of this thread.
int PreviewWindows() {
    int n = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountPreview, reinterpret_cast<LPARAM>(&n));
    return n;
}

class Interface : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(p.loaded) << "Zemblax.dll not loaded or not all eight functions found";
        ResetModule();
    }
    void TearDown() override { ResetModule(); }
    PluginHost& p = PluginHost::Get();
    HostWindow host;
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

TEST_F(Interface, LoadedStateRefusesWithTheHandBeep) {
    Images im = MakeImages();
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(p.Start(host.hwnd()));
    EXPECT_FALSE(p.Configure(host.hwnd()));
    Delivery d = Next(host.hwnd(), im);
    EXPECT_EQ(-1, d.result);
    EXPECT_TRUE(IsFreed(im.header));
    EXPECT_TRUE(IsFreed(im.bits));
    EXPECT_FALSE(p.Stop());
    EXPECT_TRUE(p.Uninitialize());
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND, MB_ICONHAND, MB_ICONHAND}), TakeBeeps());
    EXPECT_EQ(3, p.GetState());
}

TEST_F(Interface, EmptyBasePathIsRefusedSilentlyAndKeepsThePrevious) {
    EXPECT_FALSE(p.Initialize(""));
    EXPECT_FALSE(p.Initialize(nullptr));
    EXPECT_FALSE(p.Configure(host.hwnd()));  // still not initialised
    TakeBeeps();
    Catalog cat;
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    EXPECT_FALSE(p.Initialize(""));
    EXPECT_TRUE(p.Configure(host.hwnd())) << "the earlier initialisation must stay";
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, InvalidHostWindowBeepsEvenWhenInitialised) {
    Catalog cat;
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    HWND gone;
    {
        HostWindow temporary;
        gone = temporary.hwnd();
    }
    Images im = MakeImages();
    EXPECT_FALSE(p.Start(gone));
    EXPECT_FALSE(p.Configure(gone));
    EXPECT_EQ(-1, Next(gone, im).result);
    EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits));
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND, MB_ICONHAND, MB_ICONHAND}), TakeBeeps());
    EXPECT_EQ(3, p.GetState());
}

TEST_F(Interface, CancelledSelectionLeavesNoRun) {
    Catalog cat;
    cat.AddTemplate(1, "A", ThreeTakes());
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    BOOL started = WithUser<BOOL>([&] { return p.Start(host.hwnd()); }, [](DialogDriver& d) {
        HWND dlg = d.WaitFor(15014);
        ASSERT_NE(nullptr, dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_FALSE(started);
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(p.Stop());
}

TEST_F(Interface, ConfigureDuringARunLeavesTheRunAlone) {
    Catalog cat;
    cat.AddTemplate(1, "A", ThreeTakes());
    ASSERT_TRUE(StartOn(cat, host.hwnd()));
    EXPECT_EQ(2, Next(host.hwnd(), {}).result);
    // The settings are read again, and now have no sensor at all.
    WritePrivateProfileStringA("Sensor1", nullptr, nullptr, cat.ini().c_str());
    EXPECT_TRUE(p.Configure(host.hwnd()));
    EXPECT_EQ(2, p.GetState());
    EXPECT_EQ(1, PreviewWindows());
    HWND preview = DialogDriver().WaitFor(15039, 2000);
    ASSERT_NE(nullptr, preview);
    RedrawWindow(preview, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    // The run goes on where it was: take 2 comes next (the review is skipped
    // without images, so no dialog needs an answer).
    Delivery d = Next(host.hwnd(), {});
    EXPECT_EQ(3, d.result);
    EXPECT_EQ("11", d.label);
}

TEST_F(Interface, StopTwiceGivesOneThenZero) {
    Catalog cat;
    cat.AddTemplate(1, "A", ThreeTakes());
    ASSERT_TRUE(StartOn(cat, host.hwnd()));
    EXPECT_EQ(2, p.GetState());
    EXPECT_TRUE(p.Stop());
    EXPECT_EQ(3, p.GetState());
    EXPECT_FALSE(p.Stop());
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, UninitializeDuringARunOrphansIt) {
    Catalog cat;
    cat.AddTemplate(1, "A", ThreeTakes());
    ASSERT_TRUE(StartOn(cat, host.hwnd()));
    HWND preview = DialogDriver().WaitFor(15039, 2000);
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
    Catalog cat;
    cat.AddTemplate(1, "A", ThreeTakes());
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

TEST_F(Interface, VersionResourceNamesTheProduct) {
    char path[MAX_PATH];
    GetModuleFileNameA(p.module(), path, MAX_PATH);
    DWORD ignored = 0;
    std::vector<char> info(GetFileVersionInfoSizeA(path, &ignored));
    ASSERT_FALSE(info.empty());
    ASSERT_TRUE(GetFileVersionInfoA(path, 0, static_cast<DWORD>(info.size()), info.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT len = 0;
    ASSERT_TRUE(VerQueryValueA(info.data(), "\\", reinterpret_cast<void**>(&fixed), &len));
    EXPECT_EQ(0x00010000u, fixed->dwFileVersionMS);
    char* product = nullptr;
    ASSERT_TRUE(VerQueryValueA(info.data(), "\\StringFileInfo\\040704B0\\ProductName",
                               reinterpret_cast<void**>(&product), &len));
    EXPECT_STREQ("Zemblax", product);
}

TEST_F(Interface, GetNextWithoutARunReportsThePosition) {
    Catalog cat;
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    Delivery d = Next(host.hwnd(), {});
    EXPECT_EQ(0, d.result);
    EXPECT_EQ("", d.label);
    EXPECT_EQ(-1, d.orientation) << "no take, no orientation written";
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Interface, OneImageBlockSkipsTheReviewAndIsFreed) {
    Catalog cat;
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    Images im = MakeImages();
    GlobalFree(im.bits);
    im.bits = nullptr;
    Delivery d = Next(host.hwnd(), im);  // no dialog may open: nobody would answer it
    EXPECT_EQ(0, d.result);
    EXPECT_TRUE(IsFreed(im.header));
}

TEST_F(Interface, ConfigureLoadsTheSettingsAndReturnsOne) {
    Catalog cat;
    ASSERT_TRUE(p.Initialize(cat.base().c_str()));
    EXPECT_TRUE(p.Configure(host.hwnd()));
    EXPECT_EQ(3, p.GetState());
}

}  // namespace
