#include <gtest/gtest.h>
#include <ole2.h>
#include "TestSupport.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing_support::ParseArgs(argc, argv);
    OleInitialize(nullptr);
    int rc = RUN_ALL_TESTS();
    OleUninitialize();
    return rc;
}
