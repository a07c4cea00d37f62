#include "plugin/TemplateApp.h"
#include <cstring>
#include <new>
#include "fw/Beep.h"
#include "fw/Handle.h"
#include "templates/LayoutSpace.h"
#include "templates/Template.h"
#include "ui/ConfigureDlg.h"
#include "ui/FinishDlg.h"
#include "ui/PreviewDlg.h"
#include "ui/SelectionDlg.h"
#include "ui/TakeDlg.h"

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

// ---- stepping through a run: the review of each exposure, the decisions at
// the end of the template, and the delivery of the next take to the host ----

BOOL CTemplateApp::StepBack() {
    if (m_nPosition > 1) --m_nPosition;
    if (m_pPreviewDlg) m_pPreviewDlg->SetActiveTake(static_cast<int>(m_nPosition) - 1);
    return m_nPosition > 1;
}

BOOL CTemplateApp::StepForward() {
    const UINT count = m_pTemplate ? static_cast<UINT>(m_pTemplate->GetTakeCount()) : 0;
    if (m_nPosition < count) ++m_nPosition;
    if (m_pPreviewDlg) m_pPreviewDlg->SetActiveTake(static_cast<int>(m_nPosition) - 1);
    return m_nPosition < count;
}

int CTemplateApp::DeliverTake(const RECT* prcHost, std::string* pLabel, int* pnOrientation,
                              RECT* prcOut) {
    if (!m_pTemplate || !m_pPreviewDlg) return static_cast<int>(m_nPosition);
    const CTake* take = m_pTemplate->GetTake(static_cast<int>(m_nPosition) - 1);
    if (!take) return -1;
    *pnOrientation = take->IsVertical() ? 1 : 0;
    *pLabel = take->GetCenterToothString();
    m_pPreviewDlg->SetActiveTake(static_cast<int>(m_nPosition) - 1);
    *prcOut = layout::MapToHost(take->GetRect(), *prcHost);
    return static_cast<int>(++m_nPosition);
}

// Shows the exposure until the user goes on; ends the run on Beenden.
// Returns 0 to go on delivering, -1 when the run was ended.
int CTemplateApp::ShowTakeReview(HGLOBAL hDibHeader, HGLOBAL hDibBits) {
    CTakeDlg dlg(nullptr);
    dlg.SetImages(hDibHeader, hDibBits);
    for (;;) {
        switch (dlg.Show()) {
        case CTakeDlg::Result::Quit:
            fw::Beep(MB_ICONHAND);
            StopRun();
            return -1;
        case CTakeDlg::Result::Next:
            return 0;
        case CTakeDlg::Result::Back:
            StepBack();
            dlg.SetNoAutoAdvance(TRUE);
            break;
        case CTakeDlg::Result::Skip:
            StepForward();
            dlg.SetNoAutoAdvance(TRUE);
            break;
        default:
            break;
        }
    }
}

int CTemplateApp::RunFinishLoop(bool bAskVariant, const RECT& host, std::string& label,
                                int* pnOrientation, RECT& mapped) {
    // Asked by the host: middle of the template; otherwise its end.
    CFinishDlg dlg(bAskVariant ? 0 : 1, nullptr);
    // Kept: the result is ignored, so at take 1 the dialog still starts in
    // the middle state with Zurück enabled.
    if (bAskVariant) StepBack();
    for (;;) {
        switch (dlg.Show()) {
        case CFinishDlg::Result::Quit:
        case CFinishDlg::Result::Accept:
            if (bAskVariant) fw::Beep(MB_OK);
            StopRun();
            return -1;
        case CFinishDlg::Result::Next:
            return DeliverTake(&host, &label, pnOrientation, &mapped);
        case CFinishDlg::Result::Back:
            if (StepBack())
                dlg.SetStateMiddle();
            else
                dlg.SetStateFirst();
            break;
        case CFinishDlg::Result::Skip:
            if (StepForward())
                dlg.SetStateMiddle();
            else
                dlg.SetStateLast();
            break;
        default:
            break;
        }
    }
}

int CTemplateApp::GetNext(HWND hwndHost, HGLOBAL hDibHeader, HGLOBAL hDibBits,
                          const RECT* prcHost, LPSTR pszLabel, int* pnOrientation, RECT* prcTake,
                          BOOL bStepBackAndAsk, BOOL* pbTemplateDone) {
    // The blocks are ours from here on and go on every way out.
    const fw::UniqueGlobal header(hDibHeader), bits(hDibBits);
    if (!Admit(hwndHost)) return -1;
    if (!prcHost) {
        fw::Beep(MB_ICONHAND);
        return -1;
    }
    int orientationIgnored = 0;
    if (!pnOrientation) pnOrientation = &orientationIgnored;
    const RECT host = *prcHost;
    std::string label;
    RECT mapped{};
    int result;
    if (bStepBackAndAsk) {
        result = RunFinishLoop(true, host, label, pnOrientation, mapped);
        if (result == -1 && !m_bRunActive) return -1;
    } else {
        if (header && bits && ShowTakeReview(header.get(), bits.get()) < 0) return -1;
        result = DeliverTake(&host, &label, pnOrientation, &mapped);
        if (result == -1) {
            if (pbTemplateDone) *pbTemplateDone = TRUE;
            result = RunFinishLoop(false, host, label, pnOrientation, mapped);
            if (result == -1 && !m_bRunActive) return -1;
        }
    }
    if (prcTake) *prcTake = mapped;
    if (pszLabel) lstrcpyA(pszLabel, label.c_str());
    return result;
}
