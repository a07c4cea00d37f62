// One sensor type of the settings file: name, picture size and the outline in
// four variants (as defined, transposed, turned, turned and transposed), each
// with a marker that adds a bar for the cable.
#pragma once
#include <windows.h>
#include <string>
#include "settings/Polygon.h"
#include "fw/Handle.h"

namespace fw {
class IniSection;
}

class CSensor {
public:
    explicit CSensor(bool bVertical);
    virtual ~CSensor() = default;

    bool Read(const std::string& section, const std::string& file);
    // From a section already read: the settings build three sensors of each.
    bool Read(const fw::IniSection& section);

    const std::string& GetName() const { return m_strName; }
    HICON GetIcon() const;
    UINT GetDimension() const { return m_nDimension; }
    SIZE GetPictureSize() const { return {m_nPictureWidth, m_nPictureHeight}; }
    bool IsVertical() const { return m_bVertical != 0; }
    int GetVertexCount() const { return m_outlines[0].GetCount(); }
    void GetOutlinePoints(POINT* target, int count, int variant) const;
    const CPolygon& GetOutline(int variant) const { return m_outlines[variant]; }
    const CPolygon& GetMarker(int variant) const { return m_markers[variant]; }

    // bSide: which half of the dentition chart the sensor is over.
    bool GetFootprintRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                            double sy) const;
    bool GetMarkerRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                         double sy) const;
    int VariantFor(bool bSide) const;

private:
    std::string m_strName;
    UINT m_nDimension = 0;
    int m_nPictureWidth = 0;
    int m_nPictureHeight = 0;
    CPolygon m_outlines[4];
    CPolygon m_markers[4];
    BOOL m_bVertical;
    // Loaded when first asked for: of the nine sensors a settings file makes,
    // only the palette's ever show theirs.
    mutable fw::UniqueIcon m_hIcon;
    mutable bool m_bIconTried = false;
    BOOL m_bLoaded = FALSE;
    double m_dDimensionFactor = 1.0;
    double m_dWidthFactor = 1.0;
};
