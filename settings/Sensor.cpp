#include "settings/Sensor.h"
#include <algorithm>
#include <map>
#include <vector>
#include "fw/IniSection.h"
#include "fw/Module.h"
#include "res/resource.h"
#include "settings/Settings.h"

CSensor::CSensor(bool bVertical) : m_bVertical(bVertical) {}

HICON CSensor::GetIcon() const {
    if (!m_bIconTried) {
        m_bIconTried = true;
        const UINT id = m_bVertical ? IDI_SENSOR_VERTICAL : IDI_SENSOR_HORIZONTAL;
        m_hIcon.reset(static_cast<HICON>(::LoadImageA(
            fw::Module::ResourceHandle(), MAKEINTRESOURCEA(id), IMAGE_ICON, 32, 32, 0)));
    }
    return m_hIcon.get();
}

namespace {

struct OutlineVertex {
    int x = 0, y = 0;
};

// Index of a key "PolygonX<n>" or "PolygonY<n>" spelt as "%d" spells n
// (1..last); 0 for every other key.
int VertexKeyIndex(const std::string& key, char axis, int last) {
    static const char kPrefix[] = "PolygonX";
    const size_t prefix = sizeof kPrefix - 2;  // without the axis letter
    if (key.size() <= prefix + 1 || key.size() > prefix + 11) return 0;
    for (size_t i = 0; i < prefix; ++i)
        if ((key[i] | 0x20) != (kPrefix[i] | 0x20)) return 0;
    if ((key[prefix] | 0x20) != (axis | 0x20) || key[prefix + 1] == '0') return 0;
    long long n = 0;
    for (size_t i = prefix + 1; i < key.size(); ++i) {
        if (key[i] < '0' || key[i] > '9') return 0;
        n = n * 10 + (key[i] - '0');
    }
    return n <= last ? static_cast<int>(n) : 0;
}

// The outline's vertices 1..count, each key defaulting to 0. Only vertices
// that the section backs with a key are held one by one; a run of vertices
// without keys is the point (0, 0) repeated, which one (0, 0) outlines
// alike. A huge count on a short section thus costs nothing.
std::vector<OutlineVertex> ReadOutlineVertices(const fw::IniSection& section, int count) {
    struct Keyed {
        OutlineVertex v;
        bool hasX = false, hasY = false;
    };
    std::map<int, Keyed> keyed;
    // The first line of a key counts, with or without a value.
    for (const fw::IniSection::Entry& e : section.Entries()) {
        if (int n = VertexKeyIndex(e.key, 'X', count)) {
            Keyed& k = keyed[n];
            if (!k.hasX) k.v.x = fw::IniSection::IntValue(e.value, 0), k.hasX = true;
        } else if (int n = VertexKeyIndex(e.key, 'Y', count)) {
            Keyed& k = keyed[n];
            if (!k.hasY) k.v.y = fw::IniSection::IntValue(e.value, 0), k.hasY = true;
        }
    }
    std::vector<OutlineVertex> vertices;
    int previous = 0;
    for (const auto& [n, k] : keyed) {
        if (n > previous + 1) vertices.push_back({});
        vertices.push_back(k.v);
        previous = n;
    }
    if (count > previous) vertices.push_back({});
    return vertices;
}

// Outlines are a few hundred units across; one far larger is reduced to this
// size, keeping its shape. It only ever shows scaled to its picture, and the
// system builds regions scanline by scanline.
constexpr long long kMaxOutlineExtent = 1 << 16;

void ReduceHugeOutline(std::vector<POINT>& pts) {
    if (pts.empty()) return;
    long long minX = pts[0].x, maxX = minX, minY = pts[0].y, maxY = minY;
    for (const POINT& p : pts) {
        minX = std::min<long long>(minX, p.x), maxX = std::max<long long>(maxX, p.x);
        minY = std::min<long long>(minY, p.y), maxY = std::max<long long>(maxY, p.y);
    }
    const long long extent = std::max(maxX - minX, maxY - minY);
    if (extent <= kMaxOutlineExtent) return;
    const double f = static_cast<double>(kMaxOutlineExtent) / static_cast<double>(extent);
    for (POINT& p : pts) {
        p.x = static_cast<LONG>(p.x * f);
        p.y = static_cast<LONG>(p.y * f);
    }
}

// Appends the cable bar to a copy of the outline; (dx, dy) points along the
// bar, the bar is 2 units thick and a units long.
void MakeMarker(CPolygon& marker, const CPolygon& outline, int variant) {
    marker.CopyFrom(outline);
    POINT l = outline.GetPoint(outline.GetCount() - 1);
    switch (variant) {
    case 0: {
        int a = outline.GetHeight() / 2;
        marker.AddPoint(l.x, l.y - a + 1);
        marker.AddPoint(l.x - a, l.y - a + 1);
        marker.AddPoint(l.x - a, l.y - a - 1);
        marker.AddPoint(l.x, l.y - a - 1);
        break;
    }
    case 1: {
        int a = outline.GetWidth() / 2;
        marker.AddPoint(l.x - a + 1, l.y);
        marker.AddPoint(l.x - a + 1, l.y - a);
        marker.AddPoint(l.x - a - 1, l.y - a);
        marker.AddPoint(l.x - a - 1, l.y);
        break;
    }
    case 2: {
        int a = outline.GetHeight() / 2;
        marker.AddPoint(l.x, l.y + a - 1);
        marker.AddPoint(l.x + a, l.y + a - 1);
        marker.AddPoint(l.x + a, l.y + a + 1);
        marker.AddPoint(l.x, l.y + a + 1);
        break;
    }
    default: {
        int a = outline.GetWidth() / 2;
        marker.AddPoint(l.x + a - 1, l.y);
        marker.AddPoint(l.x + a - 1, l.y + a);
        marker.AddPoint(l.x + a + 1, l.y + a);
        marker.AddPoint(l.x + a + 1, l.y);
        break;
    }
    }
}

}  // namespace

bool CSensor::Read(const std::string& section, const std::string& file) {
    return Read(fw::IniSection(file, section));
}

bool CSensor::Read(const fw::IniSection& section) {
    if (m_bLoaded) return false;
    const std::string name = section.Str("Name");
    if (name.empty()) return false;
    m_strName = name;
    int vertices = section.Int("PolygonVertices", 0);
    if (vertices == 0) return false;
    m_nDimension = static_cast<UINT>(section.Int("Dimension", 0));
    m_dDimensionFactor = m_nDimension ? 3527.0 / m_nDimension : 1.0;
    m_nPictureWidth = section.Int("PictureWidth", 0);
    m_nPictureHeight = section.Int("PictureHeight", 0);
    m_dWidthFactor = m_nPictureWidth * 0.0001;
    for (int i = 0; i < 4; ++i) {
        m_outlines[i].Clear();
        m_markers[i].Clear();
    }
    // A negative count reads no vertex at all.
    if (vertices < 0) return false;
    std::vector<POINT> pts;
    for (const OutlineVertex& v : ReadOutlineVertices(section, vertices))
        pts.push_back({static_cast<LONG>(static_cast<LONG>(v.x * m_dWidthFactor) * m_dDimensionFactor),
                       static_cast<LONG>(static_cast<LONG>(v.y * m_dWidthFactor) * m_dDimensionFactor)});
    ReduceHugeOutline(pts);
    const int count = static_cast<int>(pts.size());
    m_outlines[0].SetPoints(pts.data(), count);
    MakeMarker(m_markers[0], m_outlines[0], 0);

    fw::UniqueRgn rgn;
    if (!m_outlines[0].CreateRegion(rgn)) return false;
    RECT box;
    ::GetRgnBox(rgn.get(), &box);
    const LONG w = box.right - box.left, h = box.bottom - box.top;
    std::vector<POINT> v1, v2, v3;
    for (const POINT& p : pts) {
        v1.push_back({p.y, p.x});
        v2.push_back({w - p.x, h - p.y});
        v3.push_back({h - p.y, w - p.x});
    }
    m_outlines[1].SetPoints(v1.data(), count);
    m_outlines[2].SetPoints(v2.data(), count);
    m_outlines[3].SetPoints(v3.data(), count);
    for (int i = 1; i < 4; ++i) MakeMarker(m_markers[i], m_outlines[i], i);
    m_bLoaded = TRUE;
    return true;
}

void CSensor::GetOutlinePoints(POINT* target, int count, int variant) const {
    for (int i = 0; i < count; ++i) target[i] = m_outlines[variant].GetPoint(i);
}

int CSensor::VariantFor(bool bSide) const {
    return m_bVertical ? (bSide ? 1 : 3) : (bSide ? 2 : 0);
}

bool CSensor::GetFootprintRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                                 double sy) const {
    CPolygon outline;
    outline.CopyFrom(m_outlines[VariantFor(bSide)]);
    double s = TheSettings().GetSensorSensitivity();
    outline.SetScale(s * sx, s * sy);
    return outline.CreateRegionCentered(region, x, y);
}

bool CSensor::GetMarkerRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                              double sy) const {
    int variant = VariantFor(bSide);
    CPolygon outline, marker;
    outline.CopyFrom(m_outlines[variant]);
    marker.CopyFrom(m_markers[variant]);
    outline.SetScale(sx, sy);
    marker.SetScale(sx, sy);
    int w = outline.GetWidth(), h = outline.GetHeight();
    marker.SetOffset(x - w / 2, y - h / 2);
    return marker.CreateRegion(region);
}
