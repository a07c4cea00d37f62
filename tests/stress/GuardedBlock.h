// Bytes that end right before a page the process may not touch: a read one
// byte past them faults at once instead of going unnoticed.
#pragma once
#include <windows.h>
#include <string>

class GuardedBlock {
public:
    explicit GuardedBlock(const std::string& bytes);
    ~GuardedBlock();
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;

    BYTE* data() const { return m_data; }
    SIZE_T size() const { return m_size; }
    // True when the page after the data really is inaccessible.
    bool Guarded() const;
    // True when the address lies in the guard page of a live block.
    static bool IsGuardPage(const void* address);

private:
    BYTE* m_base = nullptr;
    BYTE* m_data = nullptr;
    SIZE_T m_size = 0;
    SIZE_T m_committed = 0;
    int m_slot = -1;
};
