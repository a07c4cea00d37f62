// With the host's utility library in the process, the module uses it: its
// boxes get the module's instance and string ids, its take types the labels.
#include <gtest/gtest.h>
#include <windows.h>
#include "fw/Module.h"
#include "hostlib/HostLibrary.h"
#include "res/resource.h"
#include "templates/Take.h"

namespace {

using LastBoxFn = int(WINAPI*)(char*, HINSTANCE*, HWND*, UINT*, int*);

class BoundHost : public testing::Test {
protected:
    static void SetUpTestSuite() { s_lib = LoadLibraryA("MEBRAKIT.dll"); }
    void SetUp() override { ASSERT_NE(nullptr, s_lib) << "MEBRAKIT.dll beside the test program"; }
    static inline HMODULE s_lib = nullptr;
};

TEST_F(BoundHost, BoxesGoToTheHostWithTheModulesInstanceAndId) {
    ASSERT_TRUE(HostLibraryBound());
    auto last = reinterpret_cast<LastBoxFn>(reinterpret_cast<void*>(GetProcAddress(s_lib, "FakeLastBox")));
    ASSERT_NE(nullptr, last);
    HWND owner = reinterpret_cast<HWND>(0x1234);
    EXPECT_NE(0, HostBoxQuestion(owner, IDS_ASK_SAVE));
    char kind[16];
    HINSTANCE instance;
    HWND gotOwner;
    UINT id;
    int extra = -1;
    EXPECT_EQ(1, last(kind, &instance, &gotOwner, &id, &extra));
    EXPECT_STREQ("question", kind);
    EXPECT_EQ(fw::Module::Instance(), instance);
    EXPECT_EQ(owner, gotOwner);
    EXPECT_EQ(static_cast<UINT>(IDS_ASK_SAVE), id);
    EXPECT_EQ(0, extra);
    HostBoxWarning(nullptr, IDS_HOLDER_ORIENTATION);
    EXPECT_EQ(2, last(kind, &instance, &gotOwner, &id, &extra));
    EXPECT_STREQ("warning", kind);
    EXPECT_EQ(static_cast<UINT>(IDS_HOLDER_ORIENTATION), id);
}

TEST_F(BoundHost, LabelsUseTheHostsToothNotation) {
    CTake t;
    t.SetTeeth({11, 12, 21});
    EXPECT_EQ("8,7,9", t.GetToothLabel()) << "in stored order; two characters kept, blanks removed";
    t.SetTeeth({48, 19});  // 19 is no tooth: the host answers " 0"
    EXPECT_EQ("0,32", t.GetToothLabel());
    EXPECT_EQ("19,48", t.GetTeethString()) << "the file keeps FDI numbers";
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
