#include "settings/Polygon.h"

CPolygon::CPolygon() { Clear(); }

void CPolygon::Clear() {
    m_points.clear();
    m_nOffsetX = m_nOffsetY = 0;
    m_dScaleX = m_dScaleY = 1.0;
}

void CPolygon::CopyFrom(const CPolygon& other) {
    Clear();
    m_points = other.m_points;
    m_dScaleX = other.m_dScaleX;
    m_dScaleY = other.m_dScaleY;
    m_nOffsetX = other.m_nOffsetX;
    m_nOffsetY = other.m_nOffsetY;
}

bool CPolygon::AddPoint(int x, int y) {
    std::vector<POINT> points = m_points;
    points.push_back({x, y});
    return SetPoints(points.data(), static_cast<int>(points.size()));
}

bool CPolygon::SetPoints(const POINT* points, int count) {
    Clear();
    if (count <= 0 || !points) return true;
    m_points.assign(points, points + count);
    return true;
}

void CPolygon::SetOffset(int x, int y) {
    m_nOffsetX = x;
    m_nOffsetY = y;
}

void CPolygon::SetScale(double x, double y) {
    m_dScaleX = x;
    m_dScaleY = y;
}

std::vector<POINT> CPolygon::Scaled() const {
    std::vector<POINT> pts = m_points;
    for (POINT& p : pts) {
        p.x = static_cast<LONG>(p.x * m_dScaleX);
        p.y = static_cast<LONG>(p.y * m_dScaleY);
    }
    return pts;
}

bool CPolygon::CreateRegion(fw::UniqueRgn& region) const {
    if (m_points.empty()) return false;
    std::vector<POINT> pts = Scaled();
    for (POINT& p : pts) {
        p.x += m_nOffsetX;
        p.y += m_nOffsetY;
    }
    return Make(region, pts);
}

// A polygon without area (all vertices on one line) gives no usable region.
bool CPolygon::Make(fw::UniqueRgn& region, const std::vector<POINT>& pts) {
    region.reset(::CreatePolygonRgn(pts.data(), static_cast<int>(pts.size()), WINDING));
    RECT box;
    if (region && ::GetRgnBox(region.get(), &box) == NULLREGION) region.reset();
    return region.get() != nullptr;
}

bool CPolygon::CreateRegionCentered(fw::UniqueRgn& region, int cx, int cy) const {
    int w = GetWidth();
    int h = GetHeight();
    if (m_points.empty()) return false;
    std::vector<POINT> pts = Scaled();
    for (POINT& p : pts) {
        p.x += cx - w / 2;
        p.y += cy - h / 2;
    }
    return Make(region, pts);
}

RECT CPolygon::Box() const {
    RECT box{};
    fw::UniqueRgn rgn;
    if (CreateRegion(rgn)) ::GetRgnBox(rgn.get(), &box);
    return box;
}

int CPolygon::GetWidth() const {
    RECT b = Box();
    return b.right - b.left;
}

int CPolygon::GetHeight() const {
    RECT b = Box();
    return b.bottom - b.top;
}
