#include "hoststub/HostAutomation.h"
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace hoststub {
namespace {

// {6A3E1C20-7D41-4B8E-9C1F-2E5B7A9D0C11}, {6A3E1C21-...}: ours, not the host's.
const CLSID kLexiconClsid = {0x6a3e1c20, 0x7d41, 0x4b8e, {0x9c, 0x1f, 0x2e, 0x5b, 0x7a, 0x9d, 0x0c, 0x11}};
const CLSID kOptionsClsid = {0x6a3e1c21, 0x7d41, 0x4b8e, {0x9c, 0x1f, 0x2e, 0x5b, 0x7a, 0x9d, 0x0c, 0x11}};

AutomationOptions g_options;
DWORD g_lexiconCookie = 0, g_optionsCookie = 0;

std::string Narrow(BSTR b) {
    if (!b) return {};
    int n = WideCharToMultiByte(CP_ACP, 0, b, -1, nullptr, 0, nullptr, nullptr);
    std::string s(n > 0 ? n - 1 : 0, '\0');
    if (n > 1) WideCharToMultiByte(CP_ACP, 0, b, -1, s.data(), n, nullptr, nullptr);
    return s;
}

BSTR Wide(const std::string& s) {
    int n = MultiByteToWideChar(CP_ACP, 0, s.c_str(), -1, nullptr, 0);
    std::vector<wchar_t> w(n > 0 ? n : 1);
    MultiByteToWideChar(CP_ACP, 0, s.c_str(), -1, w.data(), n);
    return SysAllocString(w.data());
}

long ArgLong(const VARIANT& v) {
    VARIANT c;
    VariantInit(&c);
    if (FAILED(VariantChangeType(&c, const_cast<VARIANT*>(&v), 0, VT_I4))) return 0;
    return c.lVal;
}

std::string ArgString(const VARIANT& v) {
    if (v.vt == VT_BSTR) return Narrow(v.bstrVal);
    if (v.vt == (VT_BSTR | VT_BYREF)) return Narrow(*v.pbstrVal);
    return {};
}

// Reference counting and the IDispatch plumbing; Call does the work.
class DispatchBase : public IDispatch {
public:
    virtual ~DispatchBase() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch) {
            *out = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_refs; }
    ULONG STDMETHODCALLTYPE Release() override {
        ULONG r = --m_refs;
        if (!r) delete this;
        return r;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override {
        *n = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        // Arguments arrive last first; hand them over in call order.
        std::vector<VARIANT*> args;
        for (UINT i = p ? p->cArgs : 0; i > 0; --i) args.push_back(&p->rgvarg[i - 1]);
        long r = 0;
        HRESULT hr = Call(id, args, r);
        if (SUCCEEDED(hr) && result) {
            VariantInit(result);
            result->vt = VT_ERROR;
            result->scode = r;
        }
        return hr;
    }

protected:
    virtual HRESULT Call(DISPID id, const std::vector<VARIANT*>& args, long& result) = 0;

private:
    ULONG m_refs = 1;
};

class TextObject : public DispatchBase {
public:
    explicit TextObject(std::string section) : m_section(std::move(section)) {}

protected:
    HRESULT Call(DISPID id, const std::vector<VARIANT*>& a, long& result) override {
        switch (id) {
        case 4:  // SetDatabasePath(folder)
            if (a.size() != 1) return DISP_E_BADPARAMCOUNT;
            Stats().lastDatabasePath = ArgString(*a[0]);
            result = 0;
            return S_OK;
        case 6:  // UseDefaultDatabase()
            Stats().lastDatabasePath.clear();
            result = 0;
            return S_OK;
        case 8:  // GetTextById(id, kind, language, out text)
            if (a.size() != 4) return DISP_E_BADPARAMCOUNT;
            return Lookup(std::to_string(ArgLong(*a[1])) + "." + std::to_string(ArgLong(*a[0])),
                          ArgLong(*a[2]), a[3], result);
        case 9:  // GetTextByKey(key, kind, source language, language, out text)
            if (a.size() != 5) return DISP_E_BADPARAMCOUNT;
            return Lookup(std::to_string(ArgLong(*a[1])) + ".key." + ArgString(*a[0]),
                          ArgLong(*a[3]), a[4], result);
        }
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    HRESULT Lookup(const std::string& key, long language, VARIANT* out, long& result) {
        ++Stats().lookups;
        if (out->vt != (VT_BSTR | VT_BYREF)) return DISP_E_TYPEMISMATCH;
        char section[128], text[1024] = {};
        std::snprintf(section, sizeof section, "%s_%ld", m_section.c_str(), language);
        // A key that is there with no text is an empty translation, which a
        // database can hold; a missing key is no translation.
        const char* kMissing = "\x01";
        bool found = false;
        if (!g_options.lexiconFile.empty()) {
            GetPrivateProfileStringA(section, key.c_str(), kMissing, text, sizeof text,
                                     g_options.lexiconFile.c_str());
            found = std::strcmp(text, kMissing) != 0;
        }
        if (!found) {
            result = 1;  // not found
            return S_OK;
        }
        *out->pbstrVal = Wide(text);
        result = 0;
        return S_OK;
    }

    std::string m_section;
};

class LexiconServer : public DispatchBase {
protected:
    HRESULT Call(DISPID id, const std::vector<VARIANT*>& a, long& result) override {
        switch (id) {
        case 1: {  // OpenSection(name, out texts, out cookie)
            if (a.size() != 3 || a[1]->vt != (VT_DISPATCH | VT_BYREF) ||
                a[2]->vt != (VT_I4 | VT_BYREF))
                return DISP_E_TYPEMISMATCH;
            *a[1]->ppdispVal = new TextObject(ArgString(*a[0]));
            *a[2]->plVal = ++m_lastCookie;
            ++Stats().sectionsOpened;
            result = 0;
            return S_OK;
        }
        case 2:  // CloseSection(cookie)
            ++Stats().sectionsClosed;
            result = 0;
            return S_OK;
        }
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    long m_lastCookie = 0;
};

class OptionsManager : public DispatchBase {
protected:
    HRESULT Call(DISPID id, const std::vector<VARIANT*>& a, long& result) override {
        if (id != 2 || a.size() != 2) return DISP_E_MEMBERNOTFOUND;
        result = ArgString(*a[0]) == "UserLanguage" ? g_options.userLanguage : ArgLong(*a[1]);
        return S_OK;
    }
};

template <typename T>
class Factory : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (riid == IID_IUnknown || riid == IID_IClassFactory) {
            *out = this;
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
        if (outer) return CLASS_E_NOAGGREGATION;
        T* object = new T;
        Count(object);
        HRESULT hr = object->QueryInterface(riid, out);
        object->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    static void Count(LexiconServer*) { ++Stats().serversCreated; }
    static void Count(OptionsManager*) { ++Stats().optionsCreated; }
};

Factory<LexiconServer> g_lexiconFactory;
Factory<OptionsManager> g_optionsFactory;

// The merged classes view: Wine reads ProgIDs from HKEY_CLASSES_ROOT only;
// where that is not writable (no rights), the user's own classes serve.
bool SetValue(const std::string& subkey, const char* value) {
    const DWORD size = static_cast<DWORD>(strlen(value) + 1);
    if (RegSetKeyValueA(HKEY_CLASSES_ROOT, subkey.c_str(), nullptr, REG_SZ, value, size) ==
        ERROR_SUCCESS)
        return true;
    return RegSetKeyValueA(HKEY_CURRENT_USER, ("Software\\Classes\\" + subkey).c_str(), nullptr,
                           REG_SZ, value, size) == ERROR_SUCCESS;
}

bool ProgIdExists(const char* progId) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, (std::string(progId) + "\\CLSID").c_str(), 0, KEY_READ,
                      &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

// A machine with the host installed has these names already: they are the
// host's, never overwritten and never removed. Returns whether we wrote them.
bool RegisterProgId(const char* progId, const CLSID& clsid) {
    if (ProgIdExists(progId)) return false;
    wchar_t guid[64];
    StringFromGUID2(clsid, guid, 64);
    char guidA[64];
    WideCharToMultiByte(CP_ACP, 0, guid, -1, guidA, sizeof guidA, nullptr, nullptr);
    SetValue(std::string(progId) + "\\CLSID", guidA);
    SetValue(std::string("CLSID\\") + guidA + "\\ProgID", progId);
    return true;
}

void UnregisterClsid(const CLSID& clsid) {
    wchar_t guid[64];
    StringFromGUID2(clsid, guid, 64);
    char guidA[64];
    WideCharToMultiByte(CP_ACP, 0, guid, -1, guidA, sizeof guidA, nullptr, nullptr);
    const std::string key = std::string("CLSID\\") + guidA;
    RegDeleteTreeA(HKEY_CLASSES_ROOT, key.c_str());
    RegDeleteTreeA(HKEY_CURRENT_USER, ("Software\\Classes\\" + key).c_str());
}

bool g_lexiconProgIdOurs = false;
bool g_optionsProgIdOurs = false;

void UnregisterProgId(const char* progId) {
    RegDeleteTreeA(HKEY_CLASSES_ROOT, progId);
    RegDeleteTreeA(HKEY_CURRENT_USER, (std::string("Software\\Classes\\") + progId).c_str());
}

}  // namespace

AutomationStats& Stats() {
    static AutomationStats stats;
    return stats;
}

bool RegisterAutomation(const AutomationOptions& options) {
    RevokeAutomation();
    g_options = options;
    bool ok = true;
    if (options.registerLexicon) {
        g_lexiconProgIdOurs = RegisterProgId("VELMORAXI.LexiconServer", kLexiconClsid);
        ok &= SUCCEEDED(CoRegisterClassObject(kLexiconClsid, &g_lexiconFactory,
                                              CLSCTX_LOCAL_SERVER | CLSCTX_INPROC_SERVER,
                                              REGCLS_MULTIPLEUSE, &g_lexiconCookie));
    }
    if (options.registerOptions) {
        g_optionsProgIdOurs = RegisterProgId("VELMORAXI.OptionsManager", kOptionsClsid);
        ok &= SUCCEEDED(CoRegisterClassObject(kOptionsClsid, &g_optionsFactory,
                                              CLSCTX_LOCAL_SERVER | CLSCTX_INPROC_SERVER,
                                              REGCLS_MULTIPLEUSE, &g_optionsCookie));
    }
    return ok;
}

void RevokeAutomation() {
    if (g_lexiconCookie) CoRevokeClassObject(g_lexiconCookie);
    if (g_optionsCookie) CoRevokeClassObject(g_optionsCookie);
    g_lexiconCookie = g_optionsCookie = 0;
    if (std::exchange(g_lexiconProgIdOurs, false)) {
        UnregisterProgId("VELMORAXI.LexiconServer");
        UnregisterClsid(kLexiconClsid);
    }
    if (std::exchange(g_optionsProgIdOurs, false)) {
        UnregisterProgId("VELMORAXI.OptionsManager");
        UnregisterClsid(kOptionsClsid);
    }
}

}  // namespace hoststub
