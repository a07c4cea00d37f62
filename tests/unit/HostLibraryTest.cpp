// Without the host's utility library the module answers with its own
// stand-ins and keeps working.
#include <gtest/gtest.h>
#include <thread>
#include "TestSupport.h"
#include "hostlib/HostLibrary.h"

namespace {

TEST(HostLibrary, StandInsWhenTheHostsLibraryIsMissing) {
    EXPECT_FALSE(HostLibraryBound());
    char out[8] = "garbage";
    HostGetTakeTypeDisp("11XI", out);
    EXPECT_STREQ("11", out);
    HostGetTakeTypeDisp(" 5XI", out);
    EXPECT_STREQ(" 5", out);
}

TEST(HostLibrary, StandInBoxShowsTheModulesGermanText) {
    std::string text;
    std::thread user([&] {
        for (int i = 0; i < 200; ++i) {
            Sleep(20);
            HWND box = FindWindowA("#32770", "Zemblax");
            if (!box) continue;
            HWND label = FindWindowExA(box, nullptr, "Static", nullptr);
            for (; label; label = FindWindowExA(box, label, "Static", nullptr)) {
                char buf[512] = {};
                GetWindowTextA(label, buf, sizeof buf);
                if (*buf) text = buf;
            }
            PostMessageA(box, WM_COMMAND, IDYES, 0);
            return;
        }
    });
    const int answer = HostBoxQuestion(nullptr, 32779);
    user.join();
    EXPECT_EQ("Es wurden \xC4nderungen vorgenommen. Soll gespeichert werden?", text);
    EXPECT_NE(0, answer) << "Ja is yes";
}

}  // namespace
