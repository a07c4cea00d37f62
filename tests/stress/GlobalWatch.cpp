#include "GlobalWatch.h"
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include "GuardedBlock.h"

namespace global_watch {
namespace {

struct Watched {
    std::unique_ptr<GuardedBlock> guarded;  // null for a plain block
    int frees = 0;
};

std::mutex g_mutex;
std::map<HGLOBAL, Watched> g_watched;
int g_useAfterFree = 0;

HGLOBAL WINAPI HookFree(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    auto it = g_watched.find(h);
    if (it == g_watched.end()) return GlobalFree(h);
    ++it->second.frees;
    return nullptr;
}

LPVOID WINAPI HookLock(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    auto it = g_watched.find(h);
    if (it == g_watched.end()) return GlobalLock(h);
    if (it->second.frees) {
        ++g_useAfterFree;
        return nullptr;
    }
    return it->second.guarded ? it->second.guarded->data() : GlobalLock(h);
}

BOOL WINAPI HookUnlock(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    auto it = g_watched.find(h);
    if (it == g_watched.end() || !it->second.guarded) return GlobalUnlock(h);
    SetLastError(NO_ERROR);
    return FALSE;
}

SIZE_T WINAPI HookSize(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    auto it = g_watched.find(h);
    if (it == g_watched.end() || !it->second.guarded) return GlobalSize(h);
    return it->second.frees ? 0 : it->second.guarded->size();
}

bool PatchImport(HMODULE module, const char* dll, const char* name, void* replacement) {
    auto* base = reinterpret_cast<BYTE*>(module);
    auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    auto* nt = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& dir = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* imp = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + dir.VirtualAddress);
         imp->Name; ++imp) {
        if (lstrcmpiA(reinterpret_cast<char*>(base + imp->Name), dll) != 0) continue;
        auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            auto* byName = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<char*>(byName->Name), name) != 0) continue;
            DWORD old;
            VirtualProtect(&slots->u1.Function, sizeof(void*), PAGE_READWRITE, &old);
            slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
            VirtualProtect(&slots->u1.Function, sizeof(void*), old, &old);
            return true;
        }
    }
    return false;
}

}  // namespace

bool Install(HMODULE module) {
    static const bool ok = module &&
        PatchImport(module, "kernel32.dll", "GlobalFree", reinterpret_cast<void*>(&HookFree)) &&
        PatchImport(module, "kernel32.dll", "GlobalLock", reinterpret_cast<void*>(&HookLock)) &&
        PatchImport(module, "kernel32.dll", "GlobalUnlock", reinterpret_cast<void*>(&HookUnlock)) &&
        PatchImport(module, "kernel32.dll", "GlobalSize", reinterpret_cast<void*>(&HookSize));
    return ok;
}

HGLOBAL MakeGuarded(const std::string& bytes) {
    HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, 1);
    if (!h) return nullptr;
    std::lock_guard<std::mutex> lock(g_mutex);
    g_watched[h] = Watched{std::make_unique<GuardedBlock>(bytes), 0};
    return h;
}

HGLOBAL MakeExact(const std::string& bytes) {
    HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    if (!h) return nullptr;
    if (void* p = bytes.empty() ? nullptr : GlobalLock(h)) {
        if (!bytes.empty()) std::memcpy(p, bytes.data(), bytes.size());
        GlobalUnlock(h);
    }
    std::lock_guard<std::mutex> lock(g_mutex);
    g_watched[h] = Watched{};
    return h;
}

int Frees(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    auto it = g_watched.find(h);
    return it == g_watched.end() ? -1 : it->second.frees;
}

int UseAfterFree() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_useAfterFree;
}

void Release(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_watched.erase(h);
    GlobalFree(h);
}

}  // namespace global_watch
