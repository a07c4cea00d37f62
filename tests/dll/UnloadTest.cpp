// A host that unloads the library in the middle of a run, without Stop. The
// module must not call into windows under the loader lock; it leaves the
// preview alone. That window's procedure is gone with the library, so the
// run happens in a child process that ends before any message reaches it.
#include <gtest/gtest.h>
#include <cstdlib>
#include "RunSupport.h"
#include "res/resource.h"

namespace {

enum ChildResult { kUnloadedWindowsUntouched = 0, kNoPreview = 2, kStillLoaded = 3, kDestroyed = 4 };

BOOL CALLBACK FindPreview(HWND h, LPARAM lp) {
    if (!GetDlgItem(h, IDC_PREVIEW_CANVAS)) return TRUE;
    *reinterpret_cast<HWND*>(lp) = h;
    return FALSE;
}

[[noreturn]] void UnloadDuringRun() {
    int result;
    {
        Catalog cat;
        cat.AddTemplate(1, "Drei", ThreeTakes());
        auto* host = new HostWindow;  // never destroyed: it owns the orphaned preview
        PluginHost& p = PluginHost::Get();
        HWND preview = nullptr;
        if (StartOn(cat, host->hwnd(), 0)) {
            Next(host->hwnd(), {});
            EnumThreadWindows(GetCurrentThreadId(), FindPreview, reinterpret_cast<LPARAM>(&preview));
        }
        FreeLibrary(p.module());
        if (!preview)
            result = kNoPreview;
        else if (GetModuleHandleA("Zemblax.dll"))
            result = kStillLoaded;
        else
            result = IsWindow(preview) ? kUnloadedWindowsUntouched : kDestroyed;
    }
    TerminateProcess(GetCurrentProcess(), result);
    for (;;) Sleep(1000);
}

TEST(Unload, DuringARunTheModuleLeavesItsWindowsAlone) {
    if (std::getenv("ZEMBLAX_UNLOAD_CHILD")) UnloadDuringRun();
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string cmd = std::string("\"") + exe + "\" --gtest_filter=Unload.*";
    SetEnvironmentVariableA("ZEMBLAX_UNLOAD_CHILD", "1");
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    const BOOL started = CreateProcessA(nullptr, cmd.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                        nullptr, &si, &pi);
    SetEnvironmentVariableA("ZEMBLAX_UNLOAD_CHILD", nullptr);
    ASSERT_TRUE(started);
    fw::UniqueHandle process(pi.hProcess), thread(pi.hThread);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(pi.hProcess, 60000));
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    EXPECT_EQ(static_cast<DWORD>(kUnloadedWindowsUntouched), code)
        << "2: no preview, 3: not unloaded, 4: the preview was destroyed under the loader lock";
}

}  // namespace
