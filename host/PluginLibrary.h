// Zemblax.dll loaded by its path and its eight functions bound by name, as
// any host binds them. Shared by the demo host and the tests that act as one.
#pragma once
#include <windows.h>
#include <type_traits>
#include "fw/Handle.h"
#include "zemblax.h"

class PluginLibrary {
public:
    // True when the DLL loaded and exports all eight functions.
    bool Load(const char* path) {
        m_dll.reset(::LoadLibraryA(path));
        return m_dll && Bind(CheckVersion, "ZEMBLAX_CheckVersion") &&
               Bind(Initialize, "ZEMBLAX_Initialize") && Bind(Start, "ZEMBLAX_Start") &&
               Bind(GetState, "ZEMBLAX_GetState") && Bind(Stop, "ZEMBLAX_Stop") &&
               Bind(Uninitialize, "ZEMBLAX_Uninitialize") && Bind(Configure, "ZEMBLAX_Configure") &&
               Bind(GetNext, "ZEMBLAX_GetNext");
    }
    HMODULE module() const { return m_dll.get(); }

    PFN_ZEMBLAX_CheckVersion CheckVersion = nullptr;
    PFN_ZEMBLAX_Initialize Initialize = nullptr;
    PFN_ZEMBLAX_Start Start = nullptr;
    PFN_ZEMBLAX_GetState GetState = nullptr;
    PFN_ZEMBLAX_Stop Stop = nullptr;
    PFN_ZEMBLAX_Uninitialize Uninitialize = nullptr;
    PFN_ZEMBLAX_Configure Configure = nullptr;
    PFN_ZEMBLAX_GetNext GetNext = nullptr;

private:
    template <typename F>
    bool Bind(F& fn, const char* name) {
        fn = reinterpret_cast<F>(reinterpret_cast<void*>(::GetProcAddress(m_dll.get(), name)));
        return fn != nullptr;
    }
    fw::UniqueModule m_dll;
};
