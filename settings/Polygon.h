// A polygon of integer vertices that becomes a GDI region, scaled and moved.
#pragma once
#include <windows.h>
#include <vector>
#include "fw/Handle.h"

class CPolygon {
public:
    CPolygon();
    virtual ~CPolygon() = default;

    void Clear();
    void CopyFrom(const CPolygon& other);
    int GetCount() const { return static_cast<int>(m_points.size()); }
    POINT GetPoint(int index) const { return m_points[index]; }
    // Resets offset and scale, like every SetPoints.
    bool AddPoint(int x, int y);
    bool SetPoints(const POINT* points, int count);
    void SetOffset(int x, int y);
    void SetScale(double x, double y);
    double GetScaleX() const { return m_dScaleX; }
    double GetScaleY() const { return m_dScaleY; }
    int GetOffsetX() const { return m_nOffsetX; }
    int GetOffsetY() const { return m_nOffsetY; }

    bool CreateRegion(fw::UniqueRgn& region) const;
    // A winding polygon region of any points. The system builds polygon
    // regions scanline by scanline, so a polygon reaching far beyond anything
    // drawn is first cut to kRegionLimit around the origin: inside, only the
    // edges that were cut may move by a pixel. Fails for a region without area.
    static bool MakeRegion(fw::UniqueRgn& region, std::vector<POINT> pts);
    static constexpr LONG kRegionLimit = 1 << 17;
    // Region with the bounding box of CreateRegion centred on (cx, cy).
    bool CreateRegionCentered(fw::UniqueRgn& region, int cx, int cy) const;
    int GetWidth() const;
    int GetHeight() const;

private:
    std::vector<POINT> Scaled() const;
    RECT Box() const;

    std::vector<POINT> m_points;
    int m_nOffsetX = 0;
    int m_nOffsetY = 0;
    double m_dScaleX = 1.0;
    double m_dScaleY = 1.0;
};
