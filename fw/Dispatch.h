// Calls IDispatch methods by dispatch id with positional arguments, the way
// automation drivers of other toolkits do. Owns one reference.
#pragma once
#include <windows.h>
#include <ole2.h>
#include <oaidl.h>
#include <string>

namespace fw {

// One automation argument; strings become BSTRs owned by the argument.
class DispArg {
public:
    DispArg(long value);
    DispArg(const char* text);
    DispArg(long* out);
    DispArg(IDispatch** out);
    DispArg(BSTR* out);
    ~DispArg();
    DispArg(const DispArg&) = delete;
    DispArg& operator=(const DispArg&) = delete;
    const VARIANT& get() const { return m_v; }

private:
    VARIANT m_v;
};

class Dispatch {
public:
    Dispatch() = default;
    explicit Dispatch(IDispatch* attach) : m_p(attach) {}
    ~Dispatch() { Release(); }
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

    // Creates the object; the failure's description (or "") goes to *error.
    HRESULT Create(const CLSID& clsid, std::string* error = nullptr);
    HRESULT Create(const char* progId, std::string* error = nullptr);
    void Attach(IDispatch* p) { Release(); m_p = p; }
    void Release();
    IDispatch* get() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

    // Invokes a method; the return value is converted to a 32-bit integer
    // (SCODEs included). Fails when Invoke fails or the object is missing.
    HRESULT Call(DISPID id, std::initializer_list<const DispArg*> args, long* result,
                 std::string* error = nullptr);

private:
    IDispatch* m_p = nullptr;
};

}  // namespace fw
