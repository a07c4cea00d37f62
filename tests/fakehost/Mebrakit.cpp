// A stand-in for the host's utility library MEBRAKIT.dll, for testing that
// the module binds it: boxes are recorded instead of shown, and take types
// come back in the Universal tooth numbering (FDI 11 is 8, 21 is 9).
#include <windows.h>
#include <cstdio>
#include <cstdlib>

namespace {
struct BoxCall {
    char kind[16];
    HINSTANCE instance;
    HWND owner;
    UINT id;
    int extra;
};
BoxCall g_last{};
int g_calls = 0;

int Record(const char* kind, HINSTANCE instance, HWND owner, UINT id, int extra) {
    lstrcpynA(g_last.kind, kind, sizeof g_last.kind);
    g_last.instance = instance;
    g_last.owner = owner;
    g_last.id = id;
    g_last.extra = extra;
    ++g_calls;
    return 1;
}
}  // namespace

extern "C" {
int WINAPI BoxError(HINSTANCE i, HWND o, UINT id, int x) { return Record("error", i, o, id, x); }
int WINAPI BoxInfo(HINSTANCE i, HWND o, UINT id, int x) { return Record("info", i, o, id, x); }
int WINAPI BoxQuestion(HINSTANCE i, HWND o, UINT id, int x) { return Record("question", i, o, id, x); }
int WINAPI BoxWarning(HINSTANCE i, HWND o, UINT id, int x) { return Record("warning", i, o, id, x); }

int WINAPI UTL_GetTakeTypeDisp(LPCSTR takeType, LPSTR out) {
    const int fdi = std::atoi(takeType);
    const int q = fdi / 10, n = fdi % 10;
    int universal = 0;
    if (q == 1) universal = 9 - n;
    if (q == 2) universal = 8 + n;
    if (q == 3) universal = 25 - n;
    if (q == 4) universal = 24 + n;
    std::snprintf(out, 8, "%2dU", universal);
    return 1;
}

// For the test: the last box asked for.
int WINAPI FakeLastBox(char* kind, HINSTANCE* instance, HWND* owner, UINT* id, int* extra) {
    lstrcpynA(kind, g_last.kind, 16);
    *instance = g_last.instance;
    *owner = g_last.owner;
    *id = g_last.id;
    *extra = g_last.extra;
    return g_calls;
}
}
