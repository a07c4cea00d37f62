#include "fw/Module.h"

namespace fw {
namespace {
HINSTANCE g_instance = nullptr;
HINSTANCE g_resource = nullptr;
}  // namespace

HINSTANCE Module::Instance() {
    return g_instance ? g_instance : ::GetModuleHandleA(nullptr);
}

void Module::SetInstance(HINSTANCE h) { g_instance = h; }

HINSTANCE Module::ResourceHandle() { return g_resource ? g_resource : Instance(); }

void Module::SetResourceHandle(HINSTANCE h) { g_resource = h; }

std::string Module::LoadStr(UINT id) {
    char buf[1024];
    int n = ::LoadStringA(ResourceHandle(), id, buf, sizeof buf);
    return n > 0 ? std::string(buf, n) : std::string();
}

ModuleState::ModuleState() : m_saved(g_resource) { g_resource = Module::Instance(); }

ModuleState::~ModuleState() { g_resource = m_saved; }

}  // namespace fw
