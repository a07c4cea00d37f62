#include "plugin/TemplateApp.h"
#include <new>
#include "fw/Beep.h"
#include "templates/Template.h"
#include "ui/ConfigureDlg.h"
#include "ui/PreviewDlg.h"
#include "ui/SelectionDlg.h"

namespace {
CTemplateApp theApp;
}

CTemplateApp& TheApp() { return theApp; }

CTemplateApp::CTemplateApp() { RegisterTheSettings(&m_settings); }

CTemplateApp::~CTemplateApp() {
    RegisterTheSettings(nullptr);
    delete m_pTemplate;
    m_pTemplate = nullptr;
    delete m_pPreviewDlg;
    m_pPreviewDlg = nullptr;
}

BOOL CTemplateApp::Initialize(const char* pszBasePath) {
    std::string base = pszBasePath ? pszBasePath : "";
    if (base.empty()) return FALSE;
    if (base.back() != '\\') base += '\\';
    return InitPaths(base);
}

BOOL CTemplateApp::InitPaths(const std::string& base) {
    m_strBasePath = base;
    m_strCatalogPath = m_strBasePath + "Template\\" + "Zemblax.ini";
    m_bInitialized = TRUE;
    return TRUE;
}

bool CTemplateApp::Admit(HWND hwndHost) const {
    if (::IsWindow(hwndHost) && m_bInitialized) return true;
    fw::Beep(MB_ICONHAND);
    return false;
}

BOOL CTemplateApp::Start(HWND hwndHost) { return Admit(hwndHost) ? StartRun(hwndHost) : FALSE; }

BOOL CTemplateApp::Stop() { return m_bInitialized ? StopRun() : FALSE; }

BOOL CTemplateApp::Uninitialize() {
    m_bInitialized = FALSE;
    return TRUE;
}

BOOL CTemplateApp::Configure(HWND hwndHost) {
    return Admit(hwndHost) ? RunConfiguration(hwndHost) : FALSE;
}

BOOL CTemplateApp::StartRun(HWND host) {
    CSelectionDlg selection(m_strCatalogPath, host);
    if (!m_settings.Load(m_strCatalogPath)) return FALSE;
    if (selection.DoModal() != IDOK) return FALSE;
    // A host that starts again without stopping: the old preview still shows
    // the template deleted next, so it goes first.
    ClosePreview();
    delete m_pTemplate;
    m_pTemplate = new (std::nothrow) CTemplate;
    if (!m_pTemplate) return FALSE;
    if (!m_pTemplate->Load(selection.GetSelectedNumber(), m_strCatalogPath)) return FALSE;
    m_nPosition = 1;
    m_bRunActive = TRUE;
    if (!m_pPreviewDlg) m_pPreviewDlg = new (std::nothrow) CPreviewDlg(host);
    if (!m_pPreviewDlg) return FALSE;
    m_pPreviewDlg->SetTemplate(m_pTemplate);
    if (!m_pPreviewDlg->Create(host)) return FALSE;
    RECT r;
    ::GetWindowRect(host, &r);
    const SIZE size = m_settings.GetTakeDlgSize();
    // The host's height, not its bottom edge: on a host at the top of the
    // screen this is its bottom-left corner.
    m_pPreviewDlg->PlaceWindow(r.left, (r.bottom - r.top) - size.cy, size.cx, size.cy, TRUE);
    ::ShowWindow(m_pPreviewDlg->hwnd(), SW_SHOW);
    ::UpdateWindow(m_pPreviewDlg->hwnd());
    return TRUE;
}

BOOL CTemplateApp::StopRun() {
    if (!m_bRunActive) return FALSE;
    m_bRunActive = FALSE;
    m_nPosition = 0;
    ClosePreview();
    delete m_pTemplate;
    m_pTemplate = nullptr;
    return TRUE;
}

void CTemplateApp::ClosePreview() {
    if (!m_pPreviewDlg) return;
    m_pPreviewDlg->EndDialog(1);
    m_pPreviewDlg->DestroyWindow();
    delete m_pPreviewDlg;
    m_pPreviewDlg = nullptr;
}

BOOL CTemplateApp::RunConfiguration(HWND host) {
    CConfigureDlg dialog(m_strCatalogPath, host);
    if (!m_settings.Load(m_strCatalogPath)) return FALSE;
    dialog.DoModal();
    return TRUE;
}
