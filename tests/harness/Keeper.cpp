// Holds one hidden window in a message loop for the whole test run, so that
// Wine keeps its desktop open between the test programs.
#include <windows.h>

int WINAPI WinMain(HINSTANCE inst, HINSTANCE, LPSTR, int) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = inst;
    wc.lpszClassName = "ZemblaxTestKeeper";
    RegisterClassA(&wc);
    CreateWindowExA(WS_EX_TOOLWINDOW, wc.lpszClassName, "", WS_POPUP, 0, 0, 1, 1, nullptr,
                    nullptr, inst, nullptr);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) DispatchMessageA(&msg);
    return 0;
}
