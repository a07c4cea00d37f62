// Without the host's utility library the module answers with its own
// stand-ins and keeps working.
#include <gtest/gtest.h>
#include <future>
#include "../dll/DialogDriver.h"
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
    const DialogDriver user;
    std::string caption;
    auto text =
        std::async(std::launch::async, [&] { return user.AnswerBox(IDYES, 4000, &caption); });
    const int answer = HostBoxQuestion(nullptr, 32779);
    EXPECT_EQ("Es wurden \xC4nderungen vorgenommen. Soll gespeichert werden?", text.get());
    EXPECT_EQ("Zemblax", caption);
    EXPECT_NE(0, answer) << "Ja is yes";
}

}  // namespace
