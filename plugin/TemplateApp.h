// The module object: run state, paths, settings, the template of the current
// run and the progress preview window. One instance lives from loading to
// unloading the library; the exported functions are thin calls into it.
#pragma once
#include <windows.h>
#include <string>
#include "settings/Settings.h"

class CPreviewDlg;
class CTemplate;

class CTemplateApp {
public:
    CTemplateApp();
    virtual ~CTemplateApp();
    CTemplateApp(const CTemplateApp&) = delete;
    CTemplateApp& operator=(const CTemplateApp&) = delete;

    // Exported interface.
    BOOL Initialize(const char* pszBasePath);
    BOOL Start(HWND hwndHost);
    int GetRunState() const { return m_bRunActive ? 2 : 3; }
    BOOL Stop();
    BOOL Uninitialize();
    BOOL Configure(HWND hwndHost);
    int GetNext(HWND hwndHost, HGLOBAL hDibHeader, HGLOBAL hDibBits, const RECT* prcHost,
                LPSTR pszLabel, int* pnOrientation, RECT* prcTake, BOOL bStepBackAndAsk,
                BOOL* pbTemplateDone);

    BOOL InitPaths(const std::string& base);
    BOOL StartRun(HWND host);
    BOOL StopRun();
    BOOL RunConfiguration(HWND host);

    // Position arithmetic of a run.
    BOOL StepBack();
    BOOL StepForward();
    int DeliverTake(const RECT* prcHost, std::string* pLabel, int* pnOrientation, RECT* prcOut);

    bool IsInitialized() const { return m_bInitialized != 0; }
    const std::string& GetBasePath() const { return m_strBasePath; }
    const std::string& GetCatalogPath() const { return m_strCatalogPath; }
    UINT GetPosition() const { return m_nPosition; }
    CTemplate* GetTemplate() const { return m_pTemplate; }
    CPreviewDlg* GetPreview() const { return m_pPreviewDlg; }

    CSettings m_settings;

private:
    // The gate of the calls that need a host window and an initialised module.
    bool Admit(HWND hwndHost) const;
    void ClosePreview();
    int ShowTakeReview(HGLOBAL hDibHeader, HGLOBAL hDibBits);
    int RunFinishLoop(bool bAskVariant, const RECT& host, std::string& label, int* pnOrientation,
                      RECT& mapped);

    BOOL m_bRunActive = FALSE;
    CPreviewDlg* m_pPreviewDlg = nullptr;
    CTemplate* m_pTemplate = nullptr;
    std::string m_strBasePath;
    std::string m_strCatalogPath;
    UINT m_nPosition = 0;
    BOOL m_bInitialized = FALSE;
};

CTemplateApp& TheApp();
