// The small borderless window beside the host during a run: the whole
// template on the layout picture with the current take marked.
#pragma once
#include <windows.h>
#include "fw/Dialog.h"
#include "layout/LayoutCanvas.h"

class CTemplate;

class CPreviewDlg : public fw::Dialog {
public:
    explicit CPreviewDlg(HWND parent);

    // Before Create: the canvas takes the template while the window opens.
    void SetTemplate(CTemplate* pTemplate) { m_pTemplate = pTemplate; }
    void SetActiveTake(int nIndex);
    void PlaceWindow(int x, int y, int cx, int cy, BOOL bRepaint);
    CLayoutCanvas& Canvas() { return m_canvas; }

protected:
    void DoDataExchange() override;
    BOOL OnInitDialog() override;

private:
    CTemplate* m_pTemplate = nullptr;
    CLayoutCanvas m_canvas;
};
