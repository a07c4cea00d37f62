// One take on the layout canvas: converts its layout rectangle to canvas
// pixels, moves it with the mouse inside the layout area and paints it.
#pragma once
#include <windows.h>
#include "fw/Handle.h"
#include "fw/RectTracker.h"
#include "templates/LayoutSpace.h"

class CLayoutCanvas;
class CTake;
class CHolder;
class CSensor;

class CTakeTracker : public fw::RectTracker {
public:
    CTakeTracker(CLayoutCanvas* canvas, CTake* take, bool bSelected);
    ~CTakeTracker() override;

    void SetTake(CTake* take);
    void Recalc();
    void SetSelected(bool bSelected);
    bool IsSelected() const { return m_bSelected != 0; }
    void SetTracking(bool bTracking) { m_bTracking = bTracking; }
    bool IsTracking() const { return m_bTracking != 0; }
    RECT GetTrackerRect() const { return m_rect; }
    CTake* GetItemTake() const { return m_pTake; }
    void InvalidateItem() const;
    void ZoomIn();
    void ZoomOut();
    void Rotate();
    void Paint(HDC dc, bool bOrderMode, bool bShowOnlyActive, HRGN clip);

    // Outline variant that matches the take's orientation and quadrant.
    static int OutlineVariant(const CTake& take);

protected:
    void OnChangedRect(const RECT& previous) override;

private:
    // Client rectangle and layout scales from the canvas as it is now.
    void ScaleToCanvas();
    template <typename Op> void Transform(Op op);
    bool PaintLabel(HDC dc, bool bOrderMode);
    bool BuildOutline(fw::UniqueRgn& region) const;

    CLayoutCanvas* m_pCanvas;
    RECT m_rcClient{};
    int m_nLimitLeft = 0, m_nLimitTop = 0, m_nLimitRight = 0, m_nLimitBottom = 0;
    BOOL m_bTracking = FALSE;
    RECT m_rcTake{};
    layout::CanvasScale m_scale;
    BOOL m_bSelected;
    RECT m_rcItem{};
    CTake* m_pTake = nullptr;
    const CSensor* m_pSensor = nullptr;
    COLORREF m_crFill = 0, m_crText = 0;
    HFONT m_hFont = nullptr;
    fw::UniqueBrush m_dragBrush;
    fw::UniqueBrush m_fillBrush;  // of m_crFillBrush
    COLORREF m_crFillBrush = 0;
};
