#include "hostlib/HostLibrary.h"
#include <cstring>
#include <string>
#include "fw/Module.h"

namespace {

using BoxFn = int(WINAPI*)(HINSTANCE, HWND, UINT, int);
using TakeTypeFn = int(WINAPI*)(LPCSTR, LPSTR);

struct Binding {
    BoxFn error = nullptr, info = nullptr, question = nullptr, warning = nullptr;
    TakeTypeFn takeType = nullptr;
    bool bound = false;
};

const Binding& Bind() {
    static const Binding binding = [] {
        Binding b;
        HMODULE lib = ::GetModuleHandleA("MEBRAKIT.dll");
        if (!lib) lib = ::LoadLibraryA("MEBRAKIT.dll");  // kept for the process's life
        if (!lib) return b;
        b.error = reinterpret_cast<BoxFn>(::GetProcAddress(lib, "BoxError"));
        b.info = reinterpret_cast<BoxFn>(::GetProcAddress(lib, "BoxInfo"));
        b.question = reinterpret_cast<BoxFn>(::GetProcAddress(lib, "BoxQuestion"));
        b.warning = reinterpret_cast<BoxFn>(::GetProcAddress(lib, "BoxWarning"));
        b.takeType = reinterpret_cast<TakeTypeFn>(::GetProcAddress(lib, "UTL_GetTakeTypeDisp"));
        b.bound = b.error || b.info || b.question || b.warning || b.takeType;
        return b;
    }();
    return binding;
}

int StandInBox(HWND owner, UINT id, UINT type) {
    std::string text = fw::Module::LoadStr(id);
    return ::MessageBoxA(owner, text.c_str(), "Zemblax", type | MB_TASKMODAL);
}

int Box(BoxFn fn, HWND owner, UINT id, UINT type) {
    return fn ? fn(fw::Module::Instance(), owner, id, 0) : StandInBox(owner, id, type);
}

}  // namespace

int HostBoxError(HWND owner, UINT id) { return Box(Bind().error, owner, id, MB_OK | MB_ICONHAND); }

int HostBoxInfo(HWND owner, UINT id) {
    return Box(Bind().info, owner, id, MB_OK | MB_ICONINFORMATION);
}

int HostBoxQuestion(HWND owner, UINT id) {
    if (Bind().question) return Box(Bind().question, owner, id, 0);
    return StandInBox(owner, id, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

int HostBoxWarning(HWND owner, UINT id) {
    return Box(Bind().warning, owner, id, MB_OK | MB_ICONEXCLAMATION);
}

void HostGetTakeTypeDisp(const char* takeType, char* out8) {
    if (Bind().takeType) {
        Bind().takeType(takeType, out8);
        out8[7] = '\0';
        return;
    }
    // The host writes the tooth in the user's notation; ours is FDI's two digits.
    std::memset(out8, 0, 8);
    std::strncpy(out8, takeType, 2);
}

bool HostLibraryBound() { return Bind().bound; }
