// Runs the module's exported calls on the test thread while a DialogDriver
// answers its dialogs from a second thread.
#pragma once
#include <gtest/gtest.h>
#include <atomic>
#include <functional>
#include <ostream>
#include <future>
#include <string>
#include <vector>
#include "Catalog.h"
#include "DialogDriver.h"
#include "PluginHost.h"
#include "res/resource.h"

inline bool operator==(const RECT& a, const RECT& b) { return EqualRect(&a, &b) != FALSE; }
inline std::ostream& operator<<(std::ostream& os, const RECT& r) {
    return os << "(" << r.left << "," << r.top << "," << r.right << "," << r.bottom << ")";
}

// Runs `call` here and `user` on a second thread; returns call's result.
template <typename R>
R WithUser(const std::function<R()>& call, const std::function<void(DialogDriver&)>& user) {
    DialogDriver driver;
    std::atomic<bool> returned{false};
    auto done = std::async(std::launch::async, [&] {
        user(driver);
        for (int i = 0; !returned && i < 100; ++i) {
            Sleep(100);
            if (i >= 20) driver.DismissAll();  // the script failed or gave up
        }
    });
    R r = call();
    returned = true;
    done.get();
    return r;
}

// Selects list entry `index` of the selection dialog; -1 clears the selection.
void SelectEntry(HWND dlg, int index);
// Picks the list entry `index` of the selection dialog and presses OK.
void ChooseTemplate(DialogDriver& d, int index);
// The finish dialog's buttons in the order EnabledStates writes them: Zurück,
// Diese Aufnahme überspringen, Letzte Aufnahme akzeptieren, Weiter, Beenden.
const std::vector<int> kFinishButtons{IDC_BACK, IDC_FINISH_SKIP, IDC_FINISH_ACCEPT,
                                      IDC_FINISH_NEXT, IDC_FINISH_QUIT};
// '1' or '0' per button, whether it is enabled.
std::string EnabledStates(HWND dlg, const std::vector<int>& ids);

struct Delivery {
    int result = 0;
    std::string label;
    int orientation = -1;
    RECT rect{};
    BOOL done = FALSE;
};

// An exposure: an 8-bit DIB in two global blocks, as a host passes it; a grey
// ramp, or all of one colour when `colour` is given.
struct Images {
    HGLOBAL header = nullptr;
    HGLOBAL bits = nullptr;
};
Images MakeImages(int width = 64, int height = 48, COLORREF colour = CLR_INVALID);
bool IsFreed(HGLOBAL h);

// The smallest rectangle holding every pixel of `colour` that the window paints
// into a memory DC (PrintWindow, client area); empty when there is none.
RECT PaintedBox(HWND window, COLORREF colour);

// One GetNext call with a host rectangle of 844 x 698.
Delivery Next(HWND host, Images images, bool stepBackAndAsk = false,
              const RECT& hostRect = {0, 0, 844, 698});

// Starts a run on `cat`, choosing list entry `index`; asserts that it started.
bool StartOn(const Catalog& cat, HWND host, int index = 0);
// Resets the module between tests: no run, not initialised.
void ResetModule();

// A test of the loaded DLL with a host window and a data folder of its own;
// the module is reset before and after.
class ModuleTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(p.loaded) << "Zemblax.dll not loaded or not all eight functions found";
        ResetModule();
    }
    void TearDown() override { ResetModule(); }

    PluginHost& p = PluginHost::Get();
    HostWindow host;
    Catalog cat;
};
