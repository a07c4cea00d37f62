#include "settings/Sensor.h"
#include <cstdio>
#include "fw/Module.h"
#include "res/resource.h"
#include "settings/Settings.h"

CSensor::CSensor(bool bVertical) : m_bVertical(bVertical) {
    UINT id = bVertical ? IDI_SENSOR_VERTICAL : IDI_SENSOR_HORIZONTAL;
    m_hIcon.reset(static_cast<HICON>(::LoadImageA(fw::Module::ResourceHandle(),
                                                  MAKEINTRESOURCEA(id), IMAGE_ICON, 32, 32, 0)));
}

namespace {

int ReadInt(const std::string& section, const char* key, const std::string& file) {
    return static_cast<int>(::GetPrivateProfileIntA(section.c_str(), key, 0, file.c_str()));
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
    if (m_bLoaded) return false;
    char name[256];
    ::GetPrivateProfileStringA(section.c_str(), "Name", "", name, sizeof name, file.c_str());
    if (!*name) return false;
    m_strName = name;
    int vertices = ReadInt(section, "PolygonVertices", file);
    if (vertices == 0) return false;
    m_nDimension = static_cast<UINT>(ReadInt(section, "Dimension", file));
    m_dDimensionFactor = m_nDimension ? 3527.0 / m_nDimension : 1.0;
    m_nPictureWidth = ReadInt(section, "PictureWidth", file);
    m_nPictureHeight = ReadInt(section, "PictureHeight", file);
    m_dWidthFactor = m_nPictureWidth * 0.0001;
    for (int i = 0; i < 4; ++i) {
        m_outlines[i].Clear();
        m_markers[i].Clear();
    }
    // Negative counts read as huge unsigned values; nothing sensible has more.
    if (vertices < 0 || vertices > 4096) return false;
    std::vector<POINT> pts;
    for (int i = 1; i <= vertices; ++i) {
        char kx[32], ky[32];
        std::snprintf(kx, sizeof kx, "PolygonX%d", i);
        std::snprintf(ky, sizeof ky, "PolygonY%d", i);
        double x = ReadInt(section, kx, file), y = ReadInt(section, ky, file);
        pts.push_back({static_cast<LONG>(static_cast<LONG>(x * m_dWidthFactor) * m_dDimensionFactor),
                       static_cast<LONG>(static_cast<LONG>(y * m_dWidthFactor) * m_dDimensionFactor)});
    }
    m_outlines[0].SetPoints(pts.data(), vertices);
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
    m_outlines[1].SetPoints(v1.data(), vertices);
    m_outlines[2].SetPoints(v2.data(), vertices);
    m_outlines[3].SetPoints(v3.data(), vertices);
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
