#include "chart/ToothChart.h"
#include "chart/ToothChartOwner.h"
#include "dib/Dib.h"
#include "fw/Gdi.h"
#include "fw/IniFile.h"
#include "fw/Module.h"
#include "fw/OffscreenBuffer.h"
#include "res/resource.h"
#include "settings/IniNames.h"
#include "settings/Settings.h"
#include "templates/Take.h"

POINT CToothChart::s_polygons[kTeeth][4];

namespace {

// Every permanent tooth's FDI number, whatever the chart's mode: the pictures
// are those of the permanent teeth.
int PermanentTooth(int index) { return (index & 7) + (index >> 3) * 10 + 11; }

HBITMAP LoadPicture(int id) {
    return ::LoadBitmapA(fw::Module::ResourceHandle(), MAKEINTRESOURCEA(id));
}

// A monochrome mask that is white where the picture is pure black.
fw::UniqueBitmap BlackMask(HDC reference, HBITMAP picture) {
    BITMAP bm{};
    if (!picture || !::GetObjectA(picture, sizeof bm, &bm)) return {};
    fw::UniqueBitmap mask(::CreateBitmap(bm.bmWidth, bm.bmHeight, 1, 1, nullptr));
    fw::UniqueDC from(::CreateCompatibleDC(reference)), to(::CreateCompatibleDC(reference));
    fw::SelectObj s1(from.get(), picture), s2(to.get(), mask.get());
    ::SetBkColor(from.get(), RGB(0, 0, 0));
    ::BitBlt(to.get(), 0, 0, bm.bmWidth, bm.bmHeight, from.get(), 0, 0, SRCCOPY);
    return mask;
}

// The mouse may wander 150 pixels from a tooth before its highlight needs
// repainting: the square around the cursor covers the largest tooth.
constexpr int kRepaintReach = 150;

}  // namespace

CToothChart::CToothChart() {
    for (int i = 0; i < kTeeth; ++i) {
        m_assigned[i].reset(LoadPicture(IDB_TOOTH_ASSIGNED_BASE + PermanentTooth(i)));
        m_highlight[i].reset(LoadPicture(IDB_TOOTH_HIGHLIGHT_BASE + PermanentTooth(i)));
    }
    // Loaded once and kept: painting only copies it.
    m_dentition.reset(LoadPicture(IDB_DENTITION));
    BITMAP bm{};
    if (m_dentition && ::GetObjectA(m_dentition.get(), sizeof bm, &bm))
        m_szPicture = {bm.bmWidth, bm.bmHeight};
}

CToothChart::~CToothChart() = default;

int CToothChart::IndexToTooth(int index) const {
    return PermanentTooth(index) + (m_bMixedDentition ? 40 : 0);
}

int CToothChart::ToothToIndex(BYTE tooth) {
    // Deciduous teeth use the places of the permanent ones: 56 is where 16 is.
    if (tooth > 50) tooth = static_cast<BYTE>(tooth - 40);
    return tooth % 10 + tooth / 10 * 8 - 9;
}

BOOL CToothChart::IsValidIndex(UINT index) const {
    if (!m_bMixedDentition) return index < kTeeth;
    // Teeth 1 to 5 of each quadrant; indices beyond the table never come here.
    return index >= kTeeth || index % 8 < 5;
}

int CToothChart::ToothAt(int x, int y) const {
    // Kept: while a sensor is dragged every point is a hit, so that each move
    // repaints the highlight under the footprint.
    if (m_pOwner && m_pOwner->IsDragging()) return 0;
    // Overlaps go to the lower index; a region that cannot be chosen in this
    // mode is passed over, even when it lies on top.
    for (int i = 0; i < kTeeth; ++i)
        if (m_regions[i] && ::PtInRegion(m_regions[i].get(), x, y) && IsValidIndex(i)) return i;
    return kNoTooth;
}

void CToothChart::LoadToothPolygons(int quadrant, const std::string& settingsFile) {
    const fw::IniFile ini(settingsFile);
    for (unsigned tooth = 1; tooth <= 8; ++tooth) {
        const std::string section = ini::Tooth(quadrant, tooth);
        POINT* row = s_polygons[8 * (quadrant - 1) + (tooth - 1)];
        for (unsigned v = 1; v <= 4; ++v) {
            row[v - 1].x = ini.Int(section, ("PolygonX" + std::to_string(v)).c_str(), 0);
            row[v - 1].y = ini.Int(section, ("PolygonY" + std::to_string(v)).c_str(), 0);
        }
    }
}

void CToothChart::Init(CToothChartOwner* owner, const std::string& settingsFile) {
    m_pOwner = owner;
    fw::WindowDC dc(hwnd());
    m_rcClient = GetClientRect();
    if (m_szPicture.cx > 0 && m_szPicture.cy > 0) {
        m_dScaleX = static_cast<double>(fw::Width(m_rcClient)) / m_szPicture.cx;
        m_dScaleY = static_cast<double>(fw::Height(m_rcClient)) / m_szPicture.cy;
    }
    for (int q = 1; q <= 4; ++q) LoadToothPolygons(q, settingsFile);
    for (int i = 0; i < kTeeth; ++i) {
        for (POINT& p : s_polygons[i]) {
            p.x = static_cast<LONG>(p.x * m_dScaleX);
            p.y = static_cast<LONG>(p.y * m_dScaleY);
        }
        m_regions[i].reset(::CreatePolygonRgn(s_polygons[i], 4, WINDING));
        m_boxes[i] = {};
        if (m_regions[i]) ::GetRgnBox(m_regions[i].get(), &m_boxes[i]);
        // In place, once: painting never stretches a picture.
        StretchBitmapInPlace(dc.get(), m_assigned[i].get(), m_dScaleX, m_dScaleY);
        StretchBitmapInPlace(dc.get(), m_highlight[i].get(), m_dScaleX, m_dScaleY);
        m_assignedMask[i] = BlackMask(dc.get(), m_assigned[i].get());
        m_highlightMask[i] = BlackMask(dc.get(), m_highlight[i].get());
    }
    PrepareBackground(dc.get());
    m_clip.reset(::CreateRectRgnIndirect(&m_rcClient));
    if (fw::IniFile(settingsFile).Int(ini::kDebug, "ShowRegions", 0)) m_bShowRegions = TRUE;
}

LRESULT CToothChart::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    const POINT pt{static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp))};
    switch (msg) {
    case WM_NCHITTEST:
        return HTCLIENT;  // a static control would let the mouse through
    case WM_ERASEBKGND:
        return 1;  // painting covers every pixel
    case WM_PAINT:
        OnPaint();
        return 0;
    case WM_LBUTTONDOWN:
        if (!m_pTake) return 0;  // not even the default handling
        OnLButtonDown(pt);
        break;
    case WM_MOUSEMOVE:
        OnMouseMove(pt);
        break;
    case WM_LBUTTONUP:
        if (m_pOwner && m_pOwner->IsDragging()) {
            OnLButtonUp(pt);
            return 0;
        }
        break;
    default:
        break;
    }
    return Default(msg, wp, lp);
}

void CToothChart::OnPaint() {
    fw::PaintDC paint(hwnd());
    const int cw = fw::Width(m_rcClient), ch = fw::Height(m_rcClient);
    fw::OffscreenBuffer buffer(paint.get(), {0, 0, cw, ch});
    if (!buffer || !m_dentition) return;
    HDC dc = buffer.dc();
    {
        fw::UniqueDC picture(::CreateCompatibleDC(paint.get()));
        fw::SelectObj selected(picture.get(), m_background.get());
        ::BitBlt(dc, 0, 0, cw, ch, picture.get(), 0, 0, SRCCOPY);
    }
    if (m_bShowRegions) {
        fw::UniqueBrush frame(::CreateSolidBrush(0xFF0000));
        for (const fw::UniqueRgn& region : m_regions)
            if (region) ::FrameRgn(dc, region.get(), frame.get(), 1, 1);
    }
    PaintHover(dc);
    PaintAssigned(dc);
    ::SelectClipRgn(paint.get(), m_clip.get());
    buffer.Flush();
}

// The dentition stretched over the client area once: every paint then starts
// with a plain copy, pixel for pixel what stretching at each paint would give.
void CToothChart::PrepareBackground(HDC reference) {
    const int cw = fw::Width(m_rcClient), ch = fw::Height(m_rcClient);
    m_background.reset(::CreateCompatibleBitmap(reference, cw, ch));
    if (!m_background || !m_dentition) return;
    fw::UniqueDC picture(::CreateCompatibleDC(reference)), target(::CreateCompatibleDC(reference));
    fw::SelectObj s1(picture.get(), m_dentition.get()), s2(target.get(), m_background.get());
    HDC dc = target.get();
    ::SetMapMode(dc, MM_ANISOTROPIC);
    ::SetWindowExtEx(dc, m_szPicture.cx, m_szPicture.cy, nullptr);
    ::SetViewportExtEx(dc, cw, ch, nullptr);
    ::SetStretchBltMode(dc, COLORONCOLOR);
    ::BitBlt(dc, 0, 0, m_szPicture.cx, m_szPicture.cy, picture.get(), 0, 0, SRCCOPY);
    ::SetMapMode(dc, MM_TEXT);
}

// A tooth picture with its black background left out. Its mask was made once,
// so this is two blits where a general transparent draw makes four bitmaps
// per call; the pixels are the same.
void CToothChart::DrawTooth(HDC dc, HBITMAP picture, HBITMAP mask, POINT at) {
    BITMAP bm{};
    if (!picture || !mask || !::GetObjectA(picture, sizeof bm, &bm)) return;
    fw::UniqueDC source(::CreateCompatibleDC(dc));
    {
        fw::SelectObj selected(source.get(), mask);
        const COLORREF bk = ::SetBkColor(dc, RGB(255, 255, 255));
        const COLORREF text = ::SetTextColor(dc, RGB(0, 0, 0));
        ::BitBlt(dc, at.x, at.y, bm.bmWidth, bm.bmHeight, source.get(), 0, 0, SRCAND);
        ::SetBkColor(dc, bk);
        ::SetTextColor(dc, text);
    }
    fw::SelectObj selected(source.get(), picture);
    ::BitBlt(dc, at.x, at.y, bm.bmWidth, bm.bmHeight, source.get(), 0, 0, SRCPAINT);
}

bool CToothChart::SideFor(POINT pt, bool bVertical) const {
    return bVertical ? pt.y > fw::Height(m_rcClient) / 2 : pt.x < fw::Width(m_rcClient) / 2;
}

// The tooth under the cursor in grey, or while a sensor is dragged the teeth
// under its footprint and the sensor's outline.
void CToothChart::PaintHover(HDC dc) {
    POINT cursor;
    ::GetCursorPos(&cursor);
    ::ScreenToClient(hwnd(), &cursor);
    if (!::PtInRect(&m_rcClient, cursor)) return;
    const bool dragging = m_pOwner && m_pOwner->IsDragging();
    fw::UniqueRgn footprint, marker;
    bool hasFootprint = false, hasMarker = false;
    if (dragging) {
        const bool side = SideFor(cursor, m_pOwner->IsDragVertical());
        hasMarker = m_pOwner->GetDragMarkerRegion(marker, cursor.x, cursor.y, side, m_dScaleX,
                                                  m_dScaleY);
        hasFootprint = m_pOwner->GetDragRegion(footprint, cursor.x, cursor.y, side, m_dScaleX,
                                               m_dScaleY);
    }
    for (int i = 0; i < kTeeth; ++i) {
        const RECT& box = m_boxes[i];
        if (dragging) {
            if (hasFootprint && ::RectInRegion(footprint.get(), &box) && IsValidIndex(i))
                DrawTooth(dc, m_highlight[i].get(), m_highlightMask[i].get(), {box.left, box.top});
            continue;
        }
        // Unlike a click, the first region under the cursor ends the search
        // even when its tooth cannot be chosen in this mode: kept, so the
        // highlight never shows a tooth hidden under another one.
        if (m_regions[i] && ::PtInRegion(m_regions[i].get(), cursor.x, cursor.y)) {
            if (IsValidIndex(i))
                DrawTooth(dc, m_highlight[i].get(), m_highlightMask[i].get(), {box.left, box.top});
            break;
        }
    }
    HBRUSH black = static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH));
    if (m_bShowRegions && footprint) ::FrameRgn(dc, footprint.get(), black, 2, 2);
    if (dragging && hasMarker) ::FrameRgn(dc, marker.get(), black, 2, 2);
}

// The current take's teeth in green, also those this mode cannot choose.
void CToothChart::PaintAssigned(HDC dc) const {
    if (!m_pTake) return;
    for (BYTE tooth : m_pTake->GetTeeth()) {
        const int i = ToothToIndex(tooth);
        if (i < 0 || i >= kTeeth) continue;  // tooth 0 of a trailing comma, or no tooth at all
        DrawTooth(dc, m_assigned[i].get(), m_assignedMask[i].get(), {m_boxes[i].left, m_boxes[i].top});
    }
}

void CToothChart::InvalidateAround(POINT pt) const {
    const RECT r{pt.x - kRepaintReach, pt.y - kRepaintReach, pt.x + kRepaintReach,
                 pt.y + kRepaintReach};
    Invalidate(&r, true);
}

void CToothChart::OnLButtonDown(POINT pt) {
    const int i = ToothAt(pt.x, pt.y);
    if (i == kNoTooth) return;
    m_pTake->ToggleTooth(IndexToTooth(i));
    InvalidateAround(pt);
    ::UpdateWindow(hwnd());
    if (m_pOwner) m_pOwner->UpdateSelectedItem();
}

// Kept: only the square around the new position is repainted, so after a
// jump of more than its reach the old highlight stays until something else
// repaints there.
void CToothChart::OnMouseMove(POINT pt) {
    m_ptLast = pt;
    InvalidateAround(pt);
    if (ToothAt(pt.x, pt.y) != kNoTooth) InvalidateAround(pt);
    ::UpdateWindow(hwnd());
}

// The drop of a palette entry: a new take for the selectable teeth whose
// boxes meet the entry's footprint, in ascending index order.
void CToothChart::OnLButtonUp(POINT pt) {
    const RECT client = GetClientRect();
    const int index = m_pOwner->EndDrag();
    const CSensor* entry = TheSettings().GetPaletteEntry(index);
    if (!entry) return;
    if (::PtInRect(&client, pt)) {
        // Kept: asked after EndDrag, this describes palette entry 0, not the
        // dropped one; the preview while dragging used the dropped entry.
        const bool side = SideFor(pt, m_pOwner->IsDragVertical());
        fw::UniqueRgn footprint;
        std::vector<BYTE> teeth;
        if (entry->GetFootprintRegion(footprint, pt.x, pt.y, side, m_dScaleX, m_dScaleY))
            for (int i = 0; i < kTeeth; ++i)
                if (::RectInRegion(footprint.get(), &m_boxes[i]) && IsValidIndex(i))
                    teeth.push_back(static_cast<BYTE>(IndexToTooth(i)));
        m_pOwner->AddTakeFromPalette(teeth, index);
    }
    Default(WM_LBUTTONUP, 0, MAKELPARAM(pt.x, pt.y));
}
