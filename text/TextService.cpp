#include "text/TextService.h"
#include <cstdio>
#include <vector>
#include "fw/Module.h"

namespace {
// Dispatch ids of the host's automation objects.
constexpr DISPID kOpenSection = 1, kCloseSection = 2;
constexpr DISPID kSetDatabasePath = 4, kUseDefaultDatabase = 6;
constexpr DISPID kGetTextById = 8, kGetTextByKey = 9;
constexpr DISPID kGetValue = 2;
constexpr int kEnglishUS = 1033;

std::string FromBstr(BSTR b) {
    if (!b) return {};
    int n = ::WideCharToMultiByte(CP_ACP, 0, b, -1, nullptr, 0, nullptr, nullptr);
    std::string s(n > 0 ? n - 1 : 0, '\0');
    if (n > 1) ::WideCharToMultiByte(CP_ACP, 0, b, -1, s.data(), n, nullptr, nullptr);
    return s;
}
}  // namespace

CTextService& GetTextService() {
    static CTextService service;
    return service;
}

void BeginTexts(const std::string& section, int nLanguage, HINSTANCE hResource,
                const std::string& databasePath) {
    CTextService& ts = GetTextService();
    ts.Open(section, databasePath);
    if (hResource) ts.SetResourceHandle(hResource);
    ts.SetLanguage(nLanguage != 0 ? nLanguage : ts.GetUserLanguage());
}

void EndTexts() {
    CTextService& ts = GetTextService();
    if (ts.HasSavedResource()) ts.RestoreResourceHandle();
    ts.Disconnect();
}

void TranslateDialog(HWND dialog, UINT dialogId, std::initializer_list<int> controlIds) {
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    CTextService& ts = GetTextService();
    ts.TranslateWindow(dialog, dialogId, kTextDialog);
    for (int id : controlIds) ts.TranslateControl(::GetDlgItem(dialog, id), kTextDialog);
    EndTexts();
}

CTextService::CTextService() = default;

CTextService::~CTextService() {
    // The automation objects belong to Disconnect; at unload COM may be gone.
    if (m_pTexts) (void)m_pTexts.release();
    if (m_pServer) (void)m_pServer.release();
}

BOOL CTextService::Open(const std::string& section, const std::string& databasePath) {
    const std::string oldPath = m_strDatabasePath;
    std::string path = databasePath;
    if (path == "!local!") {
        char exe[MAX_PATH] = {};
        ::GetModuleFileNameA(nullptr, exe, MAX_PATH);
        std::string folder(exe);
        size_t slash = folder.find_last_of('\\');
        path = (slash == std::string::npos ? std::string() : folder.substr(0, slash + 1)) +
               "!langdb\\";
    }
    if (path.empty() && !oldPath.empty()) path = oldPath;
    m_strDatabasePath = path;
    if (IsConnected() && lstrcmpiA(section.c_str(), m_strSection.c_str()) == 0) return TRUE;
    Disconnect();
    m_strSection = section;
    fw::DispArg progId("VELMORAXI.LexiconServer");
    const bool known = SUCCEEDED(::CLSIDFromProgID(progId.get().bstrVal, &m_clsidServer));
    m_bUnavailable = !known;
    return known;
}

// A failed connection stays failed until the next Open: every text of a
// dialog would otherwise try to create the objects again, and each text
// falls back to the resource's own the same way whether it tried or not.
BOOL CTextService::Connect() {
    if (m_pTexts) return TRUE;
    if (m_bUnavailable) return FALSE;
    m_bUnavailable = true;
    if (!m_pServer) {
        m_pServer = std::make_unique<fw::Dispatch>();
        if (FAILED(m_pServer->Create(m_clsidServer))) {
            m_pServer.reset();
            return FALSE;
        }
    }
    IDispatch* texts = nullptr;
    long scode = -1;
    fw::DispArg section(m_strSection.c_str()), outTexts(&texts), outCookie(&m_nCookie);
    HRESULT hr = m_pServer->Call(kOpenSection, {&section, &outTexts, &outCookie}, &scode);
    if (FAILED(hr) || scode < 0 || !texts) {
        if (texts) texts->Release();
        m_pServer.reset();
        return FALSE;
    }
    m_pTexts = std::make_unique<fw::Dispatch>(texts);
    long result = -1;
    if (!m_strDatabasePath.empty()) {
        fw::DispArg path(m_strDatabasePath.c_str());
        hr = m_pTexts->Call(kSetDatabasePath, {&path}, &result);
    } else {
        hr = m_pTexts->Call(kUseDefaultDatabase, {}, &result);
    }
    if (SUCCEEDED(hr) && result >= 0) {
        m_bUnavailable = false;
        return TRUE;
    }
    fw::DispArg cookie(m_nCookie);
    m_pServer->Call(kCloseSection, {&cookie}, nullptr);
    m_pTexts.reset();
    m_pServer.reset();
    return FALSE;
}

void CTextService::Disconnect() {
    if (m_pServer && m_pTexts) {
        fw::DispArg cookie(m_nCookie);
        m_pServer->Call(kCloseSection, {&cookie}, nullptr);
        m_pTexts.reset();
        m_pServer.reset();
    }
}

BOOL CTextService::LookupById(std::string& out, UINT nId, int nKind, int nLanguage) {
    BSTR text = nullptr;
    long scode = -1;
    fw::DispArg id(static_cast<long>(nId)), kind(static_cast<long>(nKind)),
        lang(static_cast<long>(nLanguage)), outText(&text);
    HRESULT hr = m_pTexts->Call(kGetTextById, {&id, &kind, &lang, &outText}, &scode);
    const bool found = SUCCEEDED(hr) && scode == 0;
    if (found) out = FromBstr(text);
    ::SysFreeString(text);
    return found;
}

BOOL CTextService::GetText(std::string& out, UINT nId, int nKind) {
    out.clear();
    if (!Connect()) return FALSE;
    if (m_nLanguage <= 0) m_nLanguage = GetUserLanguage();
    if (m_nLanguage <= 0) return FALSE;
    return LookupById(out, nId, nKind, m_nLanguage) || LookupById(out, nId, nKind, kEnglishUS);
}

BOOL CTextService::LoadText(std::string& out, UINT nId, int nKind) {
    out.clear();
    if (nId == 0) return FALSE;
    if (GetText(out, nId, nKind)) return TRUE;
    out = fw::Module::LoadStr(nId);
    return !out.empty();
}

BOOL CTextService::GetTextByKey(std::string& out, const std::string& key, int nKind) {
    out.clear();
    if (!IsConnected()) return FALSE;
    if (m_nLanguage <= 0) m_nLanguage = GetUserLanguage();
    if (m_nLanguage <= 0) {
        out = key;
        return TRUE;
    }
    for (int lang : {m_nLanguage, kEnglishUS}) {
        BSTR text = nullptr;
        long scode = -1;
        fw::DispArg k(key.c_str()), kind(static_cast<long>(nKind)),
            src(static_cast<long>(m_nSourceLanguage)), l(static_cast<long>(lang)), o(&text);
        HRESULT hr = m_pTexts->Call(kGetTextByKey, {&k, &kind, &src, &l, &o}, &scode);
        const bool found = SUCCEEDED(hr) && scode == 0;
        if (found) out = FromBstr(text);
        ::SysFreeString(text);
        if (found) return TRUE;
    }
    return FALSE;
}

BOOL CTextService::TranslateWindow(HWND hwnd, UINT nId, int nKind) {
    if (!hwnd || !nId) return FALSE;
    std::string text;
    if (!GetText(text, nId, nKind)) return FALSE;
    ::SetWindowTextA(hwnd, text.c_str());
    return TRUE;
}

BOOL CTextService::TranslateControl(HWND control, int nKind) {
    if (!control) return FALSE;
    return TranslateWindow(control, static_cast<UINT>(::GetDlgCtrlID(control)), nKind);
}

BOOL CTextService::TranslateMenu(HMENU menu, int nKind, bool bTopLevel) {
    if (!menu) return FALSE;
    const int count = ::GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i)
        if (HMENU sub = ::GetSubMenu(menu, i)) TranslateMenu(sub, nKind, false);
    for (int i = 0; i < count; ++i) {
        const bool byKey = bTopLevel || ::GetSubMenu(menu, i) != nullptr;
        char current[256] = {};
        ::GetMenuStringA(menu, i, current, sizeof current, MF_BYPOSITION);
        std::string text;
        UINT id = ::GetMenuItemID(menu, i);
        if (byKey) {
            GetTextByKey(text, current, nKind);
        } else {
            if (id == 0 || id == static_cast<UINT>(-1)) continue;
            if (GetText(text, id, nKind)) {
                for (size_t p; (p = text.find("\\t")) != std::string::npos;) text.replace(p, 2, "\t");
            }
        }
        if (text.empty()) continue;
        MENUITEMINFOA mii{sizeof mii};
        mii.fMask = MIIM_STRING;
        mii.dwTypeData = text.data();
        ::SetMenuItemInfoA(menu, i, TRUE, &mii);
    }
    return TRUE;
}

BOOL CTextService::ShowMessage(UINT nId, int nKind, UINT nType, int* pResult) {
    std::string text;
    if (nId == 0 || !LoadText(text, nId, nKind)) return FALSE;
    if (text.empty()) {
        // The database holds the id with an empty text.
        ::MessageBoxA(::GetActiveWindow(),
                      "Internal error. The system can't determine the text to be displayed.", "",
                      MB_OK | MB_ICONHAND);
        return FALSE;
    }
    int answer = ::MessageBoxA(::GetActiveWindow(), text.c_str(), "", nType);
    if (pResult) *pResult = answer;
    return TRUE;
}

int CTextService::GetUserLanguage() {
    fw::Dispatch options;
    std::string error;
    if (SUCCEEDED(options.Create("VELMORAXI.OptionsManager", &error))) {
        long value = kEnglishUS;
        fw::DispArg name("UserLanguage"), def(static_cast<long>(kEnglishUS));
        if (SUCCEEDED(options.Call(kGetValue, {&name, &def}, &value))) return value;
        return kEnglishUS;
    }
    if (error.empty()) error = "unknown";
    char line[1200];
    std::snprintf(line, sizeof line, "Creation of options manager failed. Cause: '%s'",
                  error.c_str());
    ::OutputDebugStringA(line);
    return kEnglishUS;
}

BOOL CTextService::SetResourceHandle(HINSTANCE h) {
    if (!h) return FALSE;
    m_hSavedResource = fw::Module::ResourceHandle();
    fw::Module::SetResourceHandle(h);
    return TRUE;
}

BOOL CTextService::RestoreResourceHandle() {
    if (!m_hSavedResource) return FALSE;
    fw::Module::SetResourceHandle(m_hSavedResource);
    m_hSavedResource = nullptr;
    return TRUE;
}

void CTextService::SetSourceLanguage(int nLanguage) {
    m_nSourceLanguage = nLanguage;
    m_pFont.reset();
}

BYTE CTextService::GetCharSet() {
    if (m_nLanguage <= 0) m_nLanguage = GetUserLanguage();
    switch (m_nLanguage) {
    case 1025: return ARABIC_CHARSET;
    case 1031: case 1033: case 1034: case 1036: case 1040:
    case 1043: case 2057: case 2060: case 2067: return ANSI_CHARSET;
    case 1041: return SHIFTJIS_CHARSET;
    case 1042: return HANGUL_CHARSET;
    case 1049: return RUSSIAN_CHARSET;
    default: {
        LOGFONTA lf{};
        if (::GetObjectA(::GetStockObject(SYSTEM_FONT), sizeof lf, &lf)) return lf.lfCharSet;
        return 0;
    }
    }
}

HFONT CTextService::CreateLanguageFont(std::string& faceName, int& nHeight) {
    LOGFONTA lf{};
    if (faceName.size() >= 32 || !::GetObjectA(::GetStockObject(SYSTEM_FONT), sizeof lf, &lf))
        return nullptr;
    lf.lfCharSet = GetCharSet();
    if (faceName.empty())
        faceName = lf.lfCharSet == RUSSIAN_CHARSET ? "Arial Cyr" : "Arial";
    else if (lstrcmpiA(faceName.c_str(), "SYSTEM") == 0)
        faceName = lf.lfFaceName;
    lstrcpynA(lf.lfFaceName, faceName.c_str(), LF_FACESIZE);
    if (nHeight == -1)
        nHeight = lf.lfHeight;
    else
        lf.lfHeight = nHeight;
    return ::CreateFontIndirectA(&lf);
}
