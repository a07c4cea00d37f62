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
#include "fw/OffscreenBuffer.h"
#include "fw/Window.h"

class CTake;
class CToothChartOwner;
namespace fw {
class IniSnapshot;
}

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
    static void LoadToothPolygons(int quadrant, const fw::IniSnapshot& file);

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
    bool PaintHover(HDC dc, const RECT& area);
    void PaintAssigned(HDC dc, const RECT& area);
    HDC AssignedLayer(HDC reference);
    bool SideFor(POINT pt, bool bVertical) const;
    void InvalidateAround(POINT pt) const;
    void PrepareBackground(HDC reference);
    void PreparePictures(HDC reference);
    bool PreparePicture(int k);
    void DrawTooth(HDC dc, int picture, POINT at, const RECT& area);

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
    BOOL m_bShowRegions = FALSE;
    fw::UniqueBitmap m_dentition;
    // Made in Init and kept, so that a paint creates no GDI object and selects
    // no bitmap (under Wine a selection costs more than the drawing): the
    // dentition stretched to the client size with the regions' frames, all
    // tooth pictures side by side (highlights, then the green ones) with a
    // mask of their black background, where each picture lies there, its
    // resource, whether it is there yet, and room for one unscaled picture.
    fw::OffscreenBuffer m_background;
    fw::OffscreenBuffer m_pictures;
    fw::OffscreenBuffer m_masks;
    std::array<RECT, 2 * kTeeth> m_pictureAt{};
    std::array<const BITMAPINFO*, 2 * kTeeth> m_pictureInfo{};
    std::array<bool, 2 * kTeeth> m_pictureReady{};
    fw::OffscreenBuffer m_unscaled;
    // The background with the green teeth of m_layerTeeth, made again when
    // the take's teeth differ; and the buffer each paint composes in.
    fw::OffscreenBuffer m_layer;
    std::vector<BYTE> m_layerTeeth;
    bool m_layerValid = false;
    fw::OffscreenBuffer m_frame;
    POINT m_ptLast{};
};
