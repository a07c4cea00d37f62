// Feeds the module hostile input from outside, as a careless or broken host
// would. Every choice comes from one seed, printed first, so that a failure
// replays with --seed=N (and the same --rounds=M).
#include <gtest/gtest.h>
#include <ole2.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include "GuardedBlock.h"
#include "StressOptions.h"
#include "../unit/TestSupport.h"

namespace {
std::mutex g_contextMutex;
char g_context[256] = "start-up";

std::string WindowsFolder(std::string p) {
    if (!p.empty() && p[0] == '/') p = "Z:" + p;
    for (char& c : p)
        if (c == '/') c = '\\';
    if (!p.empty() && p.back() != '\\') p += '\\';
    return p;
}

LONG WINAPI ReportCrash(EXCEPTION_POINTERS* info) {
    const EXCEPTION_RECORD& r = *info->ExceptionRecord;
    const bool guard = r.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && r.NumberParameters >= 2 &&
                       GuardedBlock::IsGuardPage(reinterpret_cast<void*>(r.ExceptionInformation[1]));
    std::fprintf(stderr, "CRASH: exception 0x%08lX at %p%s during %s\nreplay: --seed=%llu --rounds=%d\n",
                 r.ExceptionCode, r.ExceptionAddress,
                 guard ? " (a read past a host's block, into its guard page)" : "", g_context,
                 Options().seed, Options().rounds);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}
}  // namespace

StressOptions& Options() {
    static StressOptions options;
    return options;
}

void SetContext(const std::string& what) {
    std::lock_guard<std::mutex> lock(g_contextMutex);
    std::snprintf(g_context, sizeof g_context, "%s", what.c_str());
}

unsigned long long SubSeed(const char* part, int round) {
    unsigned long long h = Options().seed * 0x9E3779B97F4A7C15ull + static_cast<unsigned>(round);
    for (const char* c = part; *c; ++c) h = (h ^ static_cast<unsigned char>(*c)) * 0x100000001B3ull;
    return h;
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing_support::ParseArgs(argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--seed=", 7) == 0)
            Options().seed = std::strtoull(argv[i] + 7, nullptr, 10);
        else if (std::strncmp(argv[i], "--rounds=", 9) == 0)
            Options().rounds = std::atoi(argv[i] + 9) > 0 ? std::atoi(argv[i] + 9) : 1;
        else if (std::strncmp(argv[i], "--bmpsuite=", 11) == 0)
            Options().bmpsuite = WindowsFolder(argv[i] + 11);
    }
    std::printf("stress: seed=%llu rounds=%d (replay with --seed=%llu --rounds=%d)\n",
                Options().seed, Options().rounds, Options().seed, Options().rounds);
    std::fflush(stdout);
    SetUnhandledExceptionFilter(ReportCrash);
    AddVectoredExceptionHandler(0, [](EXCEPTION_POINTERS* info) -> LONG {
        // A touch of a guard page is reported at once, before any handler of
        // the system's own code could swallow the read past a block.
        const EXCEPTION_RECORD& r = *info->ExceptionRecord;
        if (r.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && r.NumberParameters >= 2 &&
            GuardedBlock::IsGuardPage(reinterpret_cast<void*>(r.ExceptionInformation[1])))
            ReportCrash(info);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    OleInitialize(nullptr);
    const int rc = RUN_ALL_TESTS();
    OleUninitialize();
    std::printf("stress: seed=%llu rounds=%d %s\n", Options().seed, Options().rounds,
                rc == 0 ? "passed" : "FAILED");
    return rc;
}
