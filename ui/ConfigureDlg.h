// The template designer. Sensors are dragged from the palette onto the tooth
// chart, each drop making a take; takes are arranged on the layout canvas and
// put into acquisition order; the template is saved, opened and deleted in
// the catalog. The dialog owns the one template it edits and is the owner
// its three controls call back.
#pragma once
#include <windows.h>
#include <memory>
#include <string>
#include <vector>
#include "chart/ToothChart.h"
#include "chart/ToothChartOwner.h"
#include "fw/Dialog.h"
#include "layout/LayoutCanvas.h"
#include "layout/LayoutOwner.h"
#include "ui/TakeListCtrl.h"
#include "ui/TakeListOwner.h"

class CTemplate;

class CConfigureDlg : public fw::Dialog,
                      private CTakeListOwner,
                      private CToothChartOwner,
                      private CLayoutOwner {
public:
    CConfigureDlg(const std::string& catalogPath, HWND parent);
    ~CConfigureDlg() override;

    CTemplate& GetTemplate() const { return *m_pTemplate; }

protected:
    void DoDataExchange() override;
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    void OnCancel() override;

private:
    // The palette's drag, as the take list starts it and the chart ends it.
    void BeginDrag(int nPaletteIndex) override;
    int EndDrag() override;
    bool IsDragging() const override { return m_bDragging != 0; }
    bool IsDragVertical() const override;
    bool GetDragRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                       double sy) const override;
    bool GetDragMarkerRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                             double sy) const override;
    bool AddTakeFromPalette(const std::vector<BYTE>& teeth, int nPaletteIndex) override;
    void UpdateSelectedItem() override;
    void UpdateChart() override;
    void UpdateView() override;
    HWND OwnerWindow() const override { return hwnd(); }
    void DeleteTake(int position) override;

    void OnNew();
    void OnOpen();
    void OnDelete();
    void OnDefineOrder();
    void OnMixedDentition();
    BOOL SaveTemplate();
    BOOL SaveTemplateAs();
    // Asks before unsaved changes are lost; false when the command must stop.
    bool SaveChangesFirst();
    // The checks that Save and Save as make before anything else.
    bool CanBeSaved() const;
    bool NameIsTaken(const std::string& name) const;
    void UpdateTitle();
    void ReadCheckBoxes();
    bool RefuseTake();

    std::string m_strCatalogPath;
    std::string m_strBaseTitle;
    std::unique_ptr<CTemplate> m_pTemplate;
    BOOL m_bDragging = FALSE;
    int m_nDragEntry = 0;
    CLayoutCanvas m_canvas;
    CTakeListCtrl m_takeList;
    CToothChart m_chart;
    BOOL m_bOrderMode = FALSE;
    BOOL m_bMixedDentition = FALSE;
};
