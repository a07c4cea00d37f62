// The dentition chart: the picture of a full set of teeth in which the user
// clicks the teeth of the current take and onto which sensors are dropped
// from the palette. Teeth are addressed by an index 0..31, quadrant by
// quadrant from the midline; outside the chart only FDI numbers exist.
#pragma once
#include <windows.h>
#include <array>
#include <string>
#include <vector>
#include "fw/Handle.h"
#include "fw/Window.h"

class CTake;
class CToothChartOwner;

class CToothChart : public fw::Window {
public:
    static constexpr int kTeeth = 32;
    static constexpr int kNoTooth = -1;

    // Loads both sets of single-tooth pictures and notes the picture size.
    CToothChart();
    ~CToothChart() override;

    // Once, after the window has its final size: reads and scales the tooth
    // outlines of the settings file, scales the tooth pictures.
    void Init(CToothChartOwner* owner, const std::string& settingsFile);
    void SetCurrentTake(CTake* take) { m_pTake = take; }
    CTake* GetCurrentTake() const { return m_pTake; }
    void SetMixedDentition(BOOL bMixed) { m_bMixedDentition = bMixed; }
    BOOL GetMixedDentition() const { return m_bMixedDentition; }

    int IndexToTooth(int index) const;
    static int ToothToIndex(BYTE tooth);
    BOOL IsValidIndex(UINT index) const;
    int ToothAt(int x, int y) const;
    static void LoadToothPolygons(int quadrant, const std::string& settingsFile);

    double GetScaleX() const { return m_dScaleX; }
    double GetScaleY() const { return m_dScaleY; }
    RECT GetToothBox(int index) const { return m_boxes[index]; }
    // The shared outline table as Init left it (scaled), for tests.
    static POINT GetToothVertex(int index, int vertex) { return s_polygons[index][vertex]; }
    bool GetShowRegions() const { return m_bShowRegions != 0; }

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;

private:
    void OnPaint();
    void OnLButtonDown(POINT pt);
    void OnMouseMove(POINT pt);
    void OnLButtonUp(POINT pt);
    void PaintHover(HDC dc);
    void PaintAssigned(HDC dc) const;
    bool SideFor(POINT pt, bool bVertical) const;
    void InvalidateAround(POINT pt) const;
    void PrepareBackground(HDC reference);
    static void DrawTooth(HDC dc, HBITMAP picture, HBITMAP mask, POINT at);

    // Raw outlines of the 32 teeth, four vertices each, shared by every chart
    // and refilled by each Init.
    static POINT s_polygons[kTeeth][4];

    CToothChartOwner* m_pOwner = nullptr;
    CTake* m_pTake = nullptr;
    BOOL m_bMixedDentition = FALSE;
    RECT m_rcClient{};
    double m_dScaleX = 0.0, m_dScaleY = 0.0;
    SIZE m_szPicture{};
    std::array<fw::UniqueRgn, kTeeth> m_regions;
    std::array<RECT, kTeeth> m_boxes{};
    fw::UniqueRgn m_clip;
    BOOL m_bShowRegions = FALSE;
    std::array<fw::UniqueBitmap, kTeeth> m_highlight;
    std::array<fw::UniqueBitmap, kTeeth> m_assigned;
    fw::UniqueBitmap m_dentition;
    // Made once in Init, for speed: the dentition already stretched to the
    // client size, and a mask of each tooth picture's black background.
    fw::UniqueBitmap m_background;
    std::array<fw::UniqueBitmap, kTeeth> m_highlightMask;
    std::array<fw::UniqueBitmap, kTeeth> m_assignedMask;
    POINT m_ptLast{};
};
