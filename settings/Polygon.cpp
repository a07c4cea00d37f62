#include "settings/Polygon.h"
#include <algorithm>
#include <utility>

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
    return MakeRegion(region, std::move(pts));
}

namespace {

// One Sutherland-Hodgman pass: keeps the side of the line where inside()
// holds. Points inside the line keep their winding number, so the region
// there does not change.
template <typename Inside, typename Cross>
std::vector<POINT> ClipPass(const std::vector<POINT>& in, Inside inside, Cross cross) {
    std::vector<POINT> out;
    if (in.empty()) return out;
    POINT prev = in.back();
    for (const POINT& cur : in) {
        if (inside(cur)) {
            if (!inside(prev)) out.push_back(cross(prev, cur));
            out.push_back(cur);
        } else if (inside(prev)) {
            out.push_back(cross(prev, cur));
        }
        prev = cur;
    }
    return out;
}

// Where the edge a-b meets the vertical line x = at (or horizontal, swapped).
POINT CrossX(const POINT& a, const POINT& b, LONG at) {
    const double t = (static_cast<double>(at) - a.x) / (static_cast<double>(b.x) - a.x);
    return {at, static_cast<LONG>(a.y + t * (static_cast<double>(b.y) - a.y))};
}
POINT CrossY(const POINT& a, const POINT& b, LONG at) {
    const double t = (static_cast<double>(at) - a.y) / (static_cast<double>(b.y) - a.y);
    return {static_cast<LONG>(a.x + t * (static_cast<double>(b.x) - a.x)), at};
}

// Only a polygon larger than the limit's window is cut; a small one far out
// costs little and stays as it is.
void ClipToLimit(std::vector<POINT>& pts, LONG lim) {
    if (pts.empty()) return;
    LONG minX = pts[0].x, maxX = minX, minY = pts[0].y, maxY = minY;
    for (const POINT& p : pts) {
        minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
    }
    const long long window = 2ll * lim;
    if (static_cast<long long>(maxX) - minX <= window && static_cast<long long>(maxY) - minY <= window)
        return;
    pts = ClipPass(pts, [lim](const POINT& p) { return p.x >= -lim; },
                   [lim](const POINT& a, const POINT& b) { return CrossX(a, b, -lim); });
    pts = ClipPass(pts, [lim](const POINT& p) { return p.x <= lim; },
                   [lim](const POINT& a, const POINT& b) { return CrossX(a, b, lim); });
    pts = ClipPass(pts, [lim](const POINT& p) { return p.y >= -lim; },
                   [lim](const POINT& a, const POINT& b) { return CrossY(a, b, -lim); });
    pts = ClipPass(pts, [lim](const POINT& p) { return p.y <= lim; },
                   [lim](const POINT& a, const POINT& b) { return CrossY(a, b, lim); });
}

}  // namespace

// A polygon without area (all vertices on one line) gives no usable region.
bool CPolygon::MakeRegion(fw::UniqueRgn& region, std::vector<POINT> pts) {
    ClipToLimit(pts, kRegionLimit);
    region.reset();
    if (pts.size() < 3) return false;
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
    return MakeRegion(region, std::move(pts));
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
