#include "GuardedBlock.h"
#include <atomic>
#include <cstring>

namespace {
// Guard pages of the live blocks, read by the exception handler, which must
// not wait for a lock.
constexpr int kSlots = 64;
std::atomic<const BYTE*> g_guards[kSlots];

SIZE_T PageSize() {
    SYSTEM_INFO si;
    GetSystemInfo(&si);
    return si.dwPageSize;
}
}  // namespace

GuardedBlock::GuardedBlock(const std::string& bytes) : m_size(bytes.size()) {
    const SIZE_T page = PageSize();
    m_committed = (m_size + page - 1) / page * page;
    if (m_committed == 0) m_committed = page;
    m_base = static_cast<BYTE*>(
        VirtualAlloc(nullptr, m_committed + page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (!m_base) return;
    DWORD old;
    VirtualProtect(m_base + m_committed, page, PAGE_NOACCESS, &old);
    m_data = m_base + m_committed - m_size;
    if (m_size) std::memcpy(m_data, bytes.data(), m_size);
    for (int i = 0; i < kSlots; ++i) {
        const BYTE* expected = nullptr;
        if (g_guards[i].compare_exchange_strong(expected, m_base + m_committed)) {
            m_slot = i;
            break;
        }
    }
}

GuardedBlock::~GuardedBlock() {
    if (m_slot >= 0) g_guards[m_slot] = nullptr;
    if (m_base) VirtualFree(m_base, 0, MEM_RELEASE);
}

bool GuardedBlock::IsGuardPage(const void* address) {
    const auto* a = static_cast<const BYTE*>(address);
    static const SIZE_T page = PageSize();
    for (const auto& slot : g_guards) {
        const BYTE* guard = slot.load();
        if (guard && a >= guard && a < guard + page) return true;
    }
    return false;
}

bool GuardedBlock::Guarded() const {
    if (!m_base) return false;
    MEMORY_BASIC_INFORMATION mbi{};
    return VirtualQuery(m_base + m_committed, &mbi, sizeof mbi) == sizeof mbi &&
           (mbi.Protect & PAGE_NOACCESS) && m_data + m_size == m_base + m_committed;
}
