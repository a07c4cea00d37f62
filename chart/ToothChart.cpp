#include "chart/ToothChart.h"
#include <algorithm>
#include "chart/ToothChartOwner.h"
#include "dib/Dib.h"
#include "fw/Gdi.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
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

// A picture resource's packed bitmap, where the module keeps it; null for a
// missing or impossible one.
const BITMAPINFO* PictureResource(int id) {
    const HMODULE module = fw::Module::ResourceHandle();
    const HRSRC found = ::FindResourceA(module, MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(2));
    const HGLOBAL loaded = found ? ::LoadResource(module, found) : nullptr;
    const auto* info = loaded ? static_cast<const BITMAPINFO*>(::LockResource(loaded)) : nullptr;
    const DWORD size = found ? ::SizeofResource(module, found) : 0;
    if (!info || size < sizeof(BITMAPINFOHEADER)) return nullptr;
    const BITMAPINFOHEADER& h = info->bmiHeader;
    if (h.biSize < sizeof h || h.biWidth <= 0 || h.biWidth > 4096 || h.biHeight == 0 ||
        std::abs(h.biHeight) > 4096 || h.biCompression != BI_RGB || h.biBitCount > 32)
        return nullptr;
    const unsigned long long stride = (h.biWidth * static_cast<unsigned long long>(h.biBitCount) + 31) / 32 * 4;
    const unsigned long long needed = h.biSize + DibColorTableSize(&h) + stride * std::abs(h.biHeight);
    return needed <= size ? info : nullptr;
}

// The mouse may wander 150 pixels from a tooth before its highlight needs
// repainting: the square around the cursor covers the largest tooth.
constexpr int kRepaintReach = 150;

}  // namespace

CToothChart::CToothChart() {
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

void CToothChart::LoadToothPolygons(int quadrant, const fw::IniSnapshot& file) {
    for (unsigned tooth = 1; tooth <= 8; ++tooth) {
        const fw::IniSection section = file.Section(ini::Tooth(quadrant, tooth));
        POINT* row = s_polygons[8 * (quadrant - 1) + (tooth - 1)];
        for (unsigned v = 1; v <= 4; ++v) {
            row[v - 1].x = section.Int(("PolygonX" + std::to_string(v)).c_str(), 0);
            row[v - 1].y = section.Int(("PolygonY" + std::to_string(v)).c_str(), 0);
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
    // The file read once for all outlines; their keys read as the system would.
    const fw::IniSnapshot file(settingsFile);
    for (int q = 1; q <= 4; ++q) LoadToothPolygons(q, file);
    for (int i = 0; i < kTeeth; ++i) {
        for (POINT& p : s_polygons[i]) {
            p.x = static_cast<LONG>(p.x * m_dScaleX);
            p.y = static_cast<LONG>(p.y * m_dScaleY);
        }
        m_regions[i].reset(::CreatePolygonRgn(s_polygons[i], 4, WINDING));
        m_boxes[i] = {};
        if (m_regions[i]) ::GetRgnBox(m_regions[i].get(), &m_boxes[i]);
    }
    if (file.Section(ini::kDebug).Int("ShowRegions", 0)) m_bShowRegions = TRUE;
    PrepareBackground(dc.get());
    PreparePictures(dc.get());
    m_layerValid = false;
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

// Only the box of the update region is composed and copied: the paint DC
// clips to the update region, so the pixels outside it stayed as they were
// when the whole client area was composed, and inside it they are the same.
void CToothChart::OnPaint() {
    fw::PaintDC paint(hwnd());
    RECT area{};
    if (!m_dentition || !::IntersectRect(&area, &paint.ps().rcPaint, &m_rcClient)) return;
    HDC layer = AssignedLayer(paint.get());
    HDC dc = m_frame.Prepare(paint.get(), {fw::Width(m_rcClient), fw::Height(m_rcClient)});
    if (!layer || !dc) return;
    ::BitBlt(dc, area.left, area.top, fw::Width(area), fw::Height(area), layer, area.left,
             area.top, SRCCOPY);
    // The green teeth lie over the highlight: drawn once more where it came.
    if (PaintHover(dc, area)) PaintAssigned(dc, area);
    m_frame.CopyTo(paint.get(), area);
}

// What every paint starts from: the background and the current take's teeth
// in green over it, in the order painting always drew them. Made again only
// when the teeth differ from those it shows, however they changed.
HDC CToothChart::AssignedLayer(HDC reference) {
    static const std::vector<BYTE> kNone;
    const std::vector<BYTE>& teeth = m_pTake ? m_pTake->GetTeeth() : kNone;
    if (m_layerValid && teeth == m_layerTeeth) return m_layer.dc();
    m_layerValid = false;
    HDC dc = m_layer.Prepare(reference, {fw::Width(m_rcClient), fw::Height(m_rcClient)});
    if (!dc || !m_background) return nullptr;
    m_background.CopyTo(dc, m_rcClient);
    PaintAssigned(dc, m_rcClient);
    m_layerTeeth = teeth;
    m_layerValid = true;
    return dc;
}

// The dentition stretched over the client area once, with the regions'
// frames when they are shown: every paint then starts with a plain copy,
// pixel for pixel what stretching and framing at each paint would give.
void CToothChart::PrepareBackground(HDC reference) {
    const int cw = fw::Width(m_rcClient), ch = fw::Height(m_rcClient);
    HDC dc = m_background.Prepare(reference, {cw, ch});
    if (!dc || !m_dentition) return;
    {
        fw::UniqueDC picture(::CreateCompatibleDC(reference));
        fw::SelectObj selected(picture.get(), m_dentition.get());
        ::SetMapMode(dc, MM_ANISOTROPIC);
        ::SetWindowExtEx(dc, m_szPicture.cx, m_szPicture.cy, nullptr);
        ::SetViewportExtEx(dc, cw, ch, nullptr);
        ::SetStretchBltMode(dc, COLORONCOLOR);
        ::BitBlt(dc, 0, 0, m_szPicture.cx, m_szPicture.cy, picture.get(), 0, 0, SRCCOPY);
        ::SetMapMode(dc, MM_TEXT);
    }
    if (m_bShowRegions) {
        fw::UniqueBrush frame(::CreateSolidBrush(0xFF0000));
        for (const fw::UniqueRgn& region : m_regions)
            if (region) ::FrameRgn(dc, region.get(), frame.get(), 1, 1);
    }
}

// The tooth pictures, highlights first, side by side in one bitmap, each in
// a box of its resource's size and scaled once: painting never stretches a
// picture. Here the boxes are laid out; a picture is stretched into its box
// when it is first drawn (see PreparePicture). Of the 128 pictures a session
// shows a few, and stretching all of them took half the opening of the
// designer; the pixels drawn are the same.
void CToothChart::PreparePictures(HDC reference) {
    LONG width = 0, height = 0, widest = 0;
    for (int k = 0; k < 2 * kTeeth; ++k) {
        const int tooth = PermanentTooth(k % kTeeth);
        m_pictureInfo[k] = PictureResource(k < kTeeth ? IDB_TOOTH_HIGHLIGHT_BASE + tooth
                                                      : IDB_TOOTH_ASSIGNED_BASE + tooth);
        m_pictureAt[k] = {};
        m_pictureReady[k] = false;
        if (!m_pictureInfo[k]) continue;
        const BITMAPINFOHEADER& h = m_pictureInfo[k]->bmiHeader;
        m_pictureAt[k] = {width, 0, width + h.biWidth, std::abs(h.biHeight)};
        width += h.biWidth;
        widest = std::max(widest, h.biWidth);
        height = std::max(height, std::abs(h.biHeight));
    }
    const bool made = m_unscaled.Prepare(reference, {widest, height}) &&
                      m_pictures.Prepare(reference, {width, height}) &&
                      m_masks.Prepare(reference, {width, height}, true);
    if (!made) m_pictureAt = {};
}

// Picture k stretched from its resource's pixels (put into a bitmap of the
// screen's format one to one) into its box as a picture loaded on its own
// and stretched in place would be: the same stretch mode, size and top-left
// corner, the rest of the box black; and its part of the mask, white where
// the picture is pure black. False when it cannot be drawn.
bool CToothChart::PreparePicture(int k) {
    RECT& at = m_pictureAt[k];
    if (m_pictureReady[k]) return true;
    const int w = fw::Width(at), h = fw::Height(at);
    if (w <= 0 || h <= 0) return false;
    const BITMAPINFO* info = m_pictureInfo[k];
    const BYTE* bits = reinterpret_cast<const BYTE*>(info) + info->bmiHeader.biSize +
                       DibColorTableSize(&info->bmiHeader);
    HDC pictures = m_pictures.dc();
    if (!::SetDIBitsToDevice(m_unscaled.dc(), 0, 0, w, h, 0, 0, 0, h, bits, info,
                             DIB_RGB_COLORS)) {
        at = {};
        return false;
    }
    ::PatBlt(pictures, at.left, at.top, w, h, BLACKNESS);
    ::SetStretchBltMode(pictures, BLACKONWHITE);  // what a new DC stretches with
    ::IntersectClipRect(pictures, at.left, at.top, at.right, at.bottom);
    ::StretchBlt(pictures, at.left, at.top, static_cast<int>(w * m_dScaleX),
                 static_cast<int>(h * m_dScaleY), m_unscaled.dc(), 0, 0, w, h, SRCCOPY);
    ::SelectClipRgn(pictures, nullptr);
    ::SetBkColor(pictures, RGB(0, 0, 0));
    ::BitBlt(m_masks.dc(), at.left, at.top, w, h, pictures, at.left, at.top, SRCCOPY);
    m_pictureReady[k] = true;
    return true;
}

// Picture k (see m_pictureAt) with its black background left out, where it
// meets `area`. Its mask was made once, so this is two blits where a general
// transparent draw makes four bitmaps per call; the pixels are the same.
// Non-black pixels replace what lies below: drawing a picture once more on
// top changes nothing.
void CToothChart::DrawTooth(HDC dc, int picture, POINT at, const RECT& area) {
    const RECT& from = m_pictureAt[picture];
    const RECT whole{at.x, at.y, at.x + fw::Width(from), at.y + fw::Height(from)};
    RECT r;
    if (!::IntersectRect(&r, &whole, &area) || !PreparePicture(picture)) return;
    const int w = fw::Width(r), h = fw::Height(r);
    const int sx = from.left + r.left - at.x, sy = from.top + r.top - at.y;
    const COLORREF bk = ::SetBkColor(dc, RGB(255, 255, 255));
    const COLORREF text = ::SetTextColor(dc, RGB(0, 0, 0));
    ::BitBlt(dc, r.left, r.top, w, h, m_masks.dc(), sx, sy, SRCAND);
    ::SetBkColor(dc, bk);
    ::SetTextColor(dc, text);
    ::BitBlt(dc, r.left, r.top, w, h, m_pictures.dc(), sx, sy, SRCPAINT);
}

bool CToothChart::SideFor(POINT pt, bool bVertical) const {
    return bVertical ? pt.y > fw::Height(m_rcClient) / 2 : pt.x < fw::Width(m_rcClient) / 2;
}

// The tooth under the cursor in grey, or while a sensor is dragged the teeth
// under its footprint and the sensor's outline; true when anything was drawn.
bool CToothChart::PaintHover(HDC dc, const RECT& area) {
    POINT cursor;
    ::GetCursorPos(&cursor);
    ::ScreenToClient(hwnd(), &cursor);
    if (!::PtInRect(&m_rcClient, cursor)) return false;
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
    bool drawn = false;
    for (int i = 0; i < kTeeth; ++i) {
        const RECT& box = m_boxes[i];
        if (dragging) {
            if (hasFootprint && ::RectInRegion(footprint.get(), &box) && IsValidIndex(i)) {
                DrawTooth(dc, i, {box.left, box.top}, area);
                drawn = true;
            }
            continue;
        }
        // Unlike a click, the first region under the cursor ends the search
        // even when its tooth cannot be chosen in this mode: kept, so the
        // highlight never shows a tooth hidden under another one.
        if (m_regions[i] && ::PtInRegion(m_regions[i].get(), cursor.x, cursor.y)) {
            if (IsValidIndex(i)) {
                DrawTooth(dc, i, {box.left, box.top}, area);
                drawn = true;
            }
            break;
        }
    }
    HBRUSH black = static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH));
    if (m_bShowRegions && footprint) drawn = ::FrameRgn(dc, footprint.get(), black, 2, 2) || drawn;
    if (dragging && hasMarker) drawn = ::FrameRgn(dc, marker.get(), black, 2, 2) || drawn;
    return drawn;
}

// The current take's teeth in green, also those this mode cannot choose.
void CToothChart::PaintAssigned(HDC dc, const RECT& area) {
    if (!m_pTake) return;
    for (BYTE tooth : m_pTake->GetTeeth()) {
        const int i = ToothToIndex(tooth);
        if (i < 0 || i >= kTeeth) continue;  // tooth 0 of a trailing comma, or no tooth at all
        DrawTooth(dc, kTeeth + i, {m_boxes[i].left, m_boxes[i].top}, area);
    }
}

// Without asking for WM_ERASEBKGND: the chart answers it without drawing,
// so the request only cost a message (under Wine a message to a subclassed
// window is several server calls).
void CToothChart::InvalidateAround(POINT pt) const {
    const RECT r{pt.x - kRepaintReach, pt.y - kRepaintReach, pt.x + kRepaintReach,
                 pt.y + kRepaintReach};
    Invalidate(&r, false);
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
// repaints there. (Over a tooth the square used to be invalidated twice; the
// second time added nothing to the update region.)
void CToothChart::OnMouseMove(POINT pt) {
    m_ptLast = pt;
    InvalidateAround(pt);
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
