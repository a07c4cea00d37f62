#include "fw/Dispatch.h"
#include <vector>

namespace fw {
namespace {

std::string Narrow(const wchar_t* w) {
    if (!w) return {};
    int n = ::WideCharToMultiByte(CP_ACP, 0, w, -1, nullptr, 0, nullptr, nullptr);
    std::string s(n > 0 ? n - 1 : 0, '\0');
    if (n > 1) ::WideCharToMultiByte(CP_ACP, 0, w, -1, s.data(), n, nullptr, nullptr);
    return s;
}

std::string ErrorText(HRESULT hr) {
    IErrorInfo* info = nullptr;
    std::string text;
    if (::GetErrorInfo(0, &info) == S_OK && info) {
        BSTR desc = nullptr;
        if (SUCCEEDED(info->GetDescription(&desc))) text = Narrow(desc);
        ::SysFreeString(desc);
        info->Release();
    }
    if (text.empty()) {
        char* msg = nullptr;
        if (::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                 FORMAT_MESSAGE_IGNORE_INSERTS,
                             nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<char*>(&msg), 0,
                             nullptr) && msg) {
            text = msg;
            ::LocalFree(msg);
        }
    }
    if (text.size() > 1024) text.resize(1024);
    return text;
}

}  // namespace

DispArg::DispArg(long value) {
    ::VariantInit(&m_v);
    m_v.vt = VT_I4;
    m_v.lVal = value;
}

DispArg::DispArg(const char* text) {
    ::VariantInit(&m_v);
    m_v.vt = VT_BSTR;
    int n = ::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::vector<wchar_t> w(n > 0 ? n : 1);
    ::MultiByteToWideChar(CP_ACP, 0, text, -1, w.data(), n);
    m_v.bstrVal = ::SysAllocString(w.data());
}

DispArg::DispArg(long* out) {
    ::VariantInit(&m_v);
    m_v.vt = VT_I4 | VT_BYREF;
    m_v.plVal = out;
}

DispArg::DispArg(IDispatch** out) {
    ::VariantInit(&m_v);
    m_v.vt = VT_DISPATCH | VT_BYREF;
    m_v.ppdispVal = out;
}

DispArg::DispArg(BSTR* out) {
    ::VariantInit(&m_v);
    m_v.vt = VT_BSTR | VT_BYREF;
    m_v.pbstrVal = out;
}

DispArg::~DispArg() {
    if (m_v.vt == VT_BSTR) ::VariantClear(&m_v);
}

HRESULT Dispatch::Create(const CLSID& clsid, std::string* error) {
    Release();
    HRESULT hr = ::CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IDispatch,
                                    reinterpret_cast<void**>(&m_p));
    if (FAILED(hr)) {
        m_p = nullptr;
        if (error) *error = ErrorText(hr);
    }
    return hr;
}

HRESULT Dispatch::Create(const char* progId, std::string* error) {
    CLSID clsid;
    DispArg name(progId);
    HRESULT hr = ::CLSIDFromProgID(name.get().bstrVal, &clsid);
    if (FAILED(hr)) {
        if (error) *error = ErrorText(hr);
        return hr;
    }
    return Create(clsid, error);
}

void Dispatch::Release() {
    if (m_p) m_p->Release();
    m_p = nullptr;
}

HRESULT Dispatch::Call(DISPID id, std::initializer_list<const DispArg*> args, long* result,
                       std::string* error) {
    if (!m_p) return E_POINTER;
    // Automation takes the arguments in reverse order.
    std::vector<VARIANT> v(args.size());
    size_t i = args.size();
    for (const DispArg* a : args) v[--i] = a->get();
    DISPPARAMS params{v.empty() ? nullptr : v.data(), nullptr, static_cast<UINT>(v.size()), 0};
    VARIANT ret;
    ::VariantInit(&ret);
    EXCEPINFO ex{};
    HRESULT hr = m_p->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, &ret,
                             &ex, nullptr);
    if (FAILED(hr)) {
        if (error) *error = ex.bstrDescription ? Narrow(ex.bstrDescription) : ErrorText(hr);
        ::SysFreeString(ex.bstrSource);
        ::SysFreeString(ex.bstrDescription);
        ::SysFreeString(ex.bstrHelpFile);
        return hr;
    }
    if (result) {
        if (ret.vt == VT_ERROR)
            *result = ret.scode;
        else if (SUCCEEDED(::VariantChangeType(&ret, &ret, 0, VT_I4)))
            *result = ret.lVal;
        else
            *result = 0;
    }
    ::VariantClear(&ret);
    return hr;
}

}  // namespace fw
