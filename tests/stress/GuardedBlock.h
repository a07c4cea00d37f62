// Bytes that end right before a page the process may not touch: a read one
// byte past them faults at once instead of going unnoticed.
#pragma once
#include <windows.h>
#include <atomic>
#include <cstring>
#include <string>

// A value's bytes, as a block of a host holds them.
template <typename T>
std::string Bytes(const T& v) {
    return std::string(reinterpret_cast<const char*>(&v), sizeof v);
}

class GuardedBlock {
public:
    explicit GuardedBlock(const std::string& bytes) : m_size(bytes.size()) {
        const SIZE_T committed = (m_size / kPage + 1) * kPage;
        m_base = static_cast<BYTE*>(VirtualAlloc(nullptr, committed + kPage, MEM_COMMIT, PAGE_READWRITE));
        DWORD old;
        VirtualProtect(m_base + committed, kPage, PAGE_NOACCESS, &old);
        m_data = m_base + committed - m_size;
        std::memcpy(m_data, bytes.data(), m_size);
        for (auto& slot : s_guards) {  // for the crash report, which must take no lock
            const BYTE* expected = nullptr;
            if (slot.compare_exchange_strong(expected, m_base + committed)) break;
        }
    }
    ~GuardedBlock() {
        for (auto& slot : s_guards)
            if (slot == m_data + m_size) slot = nullptr;
        VirtualFree(m_base, 0, MEM_RELEASE);
    }
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;
    BYTE* data() const { return m_data; }
    SIZE_T size() const { return m_size; }
    // True when the address lies in the guard page of a live block.
    static bool IsGuardPage(ULONG_PTR address) {
        for (const auto& slot : s_guards)
            if (const BYTE* guard = slot.load(); guard && address - ULONG_PTR(guard) < kPage) return true;
        return false;
    }

private:
    static constexpr SIZE_T kPage = 4096;  // x86 and x64 Windows
    inline static std::atomic<const BYTE*> s_guards[64];
    BYTE* m_base;
    BYTE* m_data;
    SIZE_T m_size;
};
