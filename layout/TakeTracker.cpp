#include "layout/TakeTracker.h"
#include <algorithm>
#include <vector>
#include "fw/Gdi.h"
#include "layout/LayoutCanvas.h"
#include "settings/Polygon.h"
#include "settings/Settings.h"
#include "templates/LayoutSpace.h"
#include "templates/Take.h"

CTakeTracker::CTakeTracker(CLayoutCanvas* canvas, CTake* take, bool bSelected)
    : m_pCanvas(canvas), m_bSelected(bSelected) {
    SetTake(take);
    m_nStyle = bSelected ? hatchedBorder : solidLine;
    const CSettings& s = TheSettings();
    m_dragBrush.reset(::CreateSolidBrush(s.GetDragColor()));
    // Black with a white label until Paint finds the take's holder. Looking
    // the holder up by its raw number here, as an index, would find the wrong
    // holder for holder 0 and leave a black label on the black fill.
    m_crFill = RGB(0, 0, 0);
    m_crText = RGB(255, 255, 255);
    m_hFont = s.GetFont();
    if (m_pCanvas) {
        ScaleToCanvas();
        // Right and bottom limits are not where the layout area ends; they
        // never matter, since a move passes on only left and top.
        m_nLimitLeft = m_scale.PixelX(layout::kAreaLeft);
        m_nLimitTop = m_scale.PixelY(layout::kAreaTop);
        m_nLimitRight = m_scale.PixelX(110);
        m_nLimitBottom = m_scale.PixelY(20);
    }
}

CTakeTracker::~CTakeTracker() = default;

void CTakeTracker::SetTake(CTake* take) {
    m_pTake = take;
    Recalc();
    m_rectLast = m_rect;
    m_pSensor = take ? TheSettings().GetSensor(take->GetSensor() - 1) : nullptr;
}

void CTakeTracker::Recalc() {
    if (m_pTake) m_rcTake = m_pTake->GetRect();
    if (m_pCanvas) ScaleToCanvas();
    m_rect = m_scale.ToPixels(m_rcTake);
    m_rcItem = m_rect;
}

void CTakeTracker::ScaleToCanvas() {
    m_rcClient = m_pCanvas->GetClientRect();
    m_scale = layout::CanvasScale::For(m_rcClient);
}

void CTakeTracker::SetSelected(bool bSelected) {
    const UINT style = bSelected ? hatchedBorder : solidLine;
    // An item that keeps its look needs no repaint: deselecting all of a
    // template's items would otherwise ask the window system once per item.
    if ((m_bSelected != 0) == bSelected && m_nStyle == style) return;
    m_bSelected = bSelected;
    m_nStyle = style;
    InvalidateItem();
}

void CTakeTracker::InvalidateItem() const {
    if (!m_pCanvas) return;
    RECT r = m_rect;
    ::InflateRect(&r, 5, 5);
    m_pCanvas->Invalidate(&r, true);
}

template <typename Op>
void CTakeTracker::Transform(Op op) {
    if (!m_pTake) return;
    InvalidateItem();
    op(*m_pTake);
    Recalc();
    m_rectLast = m_rect;
    InvalidateItem();
}

void CTakeTracker::ZoomIn() { Transform([](CTake& t) { t.ZoomIn(); }); }
void CTakeTracker::ZoomOut() { Transform([](CTake& t) { t.ZoomOut(); }); }
void CTakeTracker::Rotate() { Transform([](CTake& t) { t.Rotate(); }); }

void CTakeTracker::OnChangedRect(const RECT& previous) {
    if (!m_pTake || ::EqualRect(&m_rect, &previous)) return;
    m_rect.left = std::max<LONG>(m_rect.left, m_nLimitLeft);
    m_rect.top = std::max<LONG>(m_rect.top, m_nLimitTop);
    m_rect.right = std::min<LONG>(m_rect.right, m_nLimitRight);
    m_rect.bottom = std::min<LONG>(m_rect.bottom, m_nLimitBottom);
    m_pTake->MoveTo(m_scale.LayoutX(m_rect.left), m_scale.LayoutY(m_rect.top));
    Recalc();
}

int CTakeTracker::OutlineVariant(const CTake& take) {
    const int q = take.GetQuadrant();
    if (take.IsVertical()) return (q == 1 || q == 2) ? 3 : 1;
    return (q == 1 || q == 4) ? 2 : 0;
}

bool CTakeTracker::BuildOutline(fw::UniqueRgn& region) const {
    const int n = m_pSensor->GetVertexCount();
    if (n <= 0) return false;
    std::vector<POINT> pts(n);
    m_pSensor->GetOutlinePoints(pts.data(), n, OutlineVariant(*m_pTake));
    fw::UniqueRgn raw;
    RECT box{};
    if (!CPolygon::MakeRegion(raw, pts) || !::GetRgnBox(raw.get(), &box) ||
        fw::Width(box) == 0 || fw::Height(box) == 0)
        return false;
    const double fx = static_cast<double>(fw::Width(m_rcItem) - 2) / fw::Width(box);
    const double fy = static_cast<double>(fw::Height(m_rcItem) - 2) / fw::Height(box);
    // Kept: scaled about the outline's origin, not its box's corner, so an
    // outline whose box does not start at (0, 0) shows shifted, as it always has.
    for (POINT& p : pts) {
        p.x = static_cast<LONG>(p.x * fx);
        p.y = static_cast<LONG>(p.y * fy);
    }
    // A thin spike far beyond the box would make the scaled outline huge.
    if (!CPolygon::MakeRegion(region, std::move(pts))) return false;
    ::OffsetRgn(region.get(), m_rcItem.left + 1, m_rcItem.top + 1);
    return true;
}

void CTakeTracker::Paint(HDC dc, bool bOrderMode, bool bShowOnlyActive, HRGN clip) {
    if (m_bTracking || !m_pTake) return;
    Recalc();
    // The settings may have been loaded again since the take was set (a
    // configuration during a run): what they own is looked up afresh.
    const CSettings& settings = TheSettings();
    m_pSensor = settings.GetSensor(m_pTake->GetSensor() - 1);
    m_hFont = settings.GetFont();
    if (const CHolder* h = settings.GetHolder(m_pTake->GetHolder() - 1)) {
        m_crFill = m_bSelected ? h->GetColor() : h->GetInactiveColor();
        m_crText = h->GetTextColor();
    }
    // The item's fill is black whatever the active and inactive colours are.
    // A brush of the active or inactive colour used to be selected and at
    // once covered by a new black one, before anything was drawn: the stock
    // black brush paints the same pixels.
    fw::SelectObj blackBrush(dc, ::GetStockObject(BLACK_BRUSH));
    ::Rectangle(dc, m_rcItem.left, m_rcItem.top, m_rcItem.right, m_rcItem.bottom);
    fw::UniqueRgn outline;
    if (m_pSensor && BuildOutline(outline)) {
        // Kept while the colour stays: the same brush, made once.
        if (!m_fillBrush || m_crFillBrush != m_crFill) {
            m_fillBrush.reset(::CreateSolidBrush(m_crFill));
            m_crFillBrush = m_crFill;
        }
        ::FillRgn(dc, outline.get(), m_fillBrush.get());
    }
    // The canvas selects the font once for all its items: selecting it again
    // would only cost time (under Wine a font selection is slow).
    fw::SelectObj font(dc, ::GetCurrentObject(dc, OBJ_FONT) == m_hFont ? nullptr : m_hFont);
    // The caller's clipping is put back where a label too wide for its item
    // changed it; elsewhere it still is `clip`, which the canvas selected.
    if (!bShowOnlyActive || m_bSelected) {
        if (PaintLabel(dc, bOrderMode)) ::SelectClipRgn(dc, clip);
    }
}

// True when the label was clipped to the item.
bool CTakeTracker::PaintLabel(HDC dc, bool bOrderMode) {
    const std::string text = bOrderMode ? std::to_string(m_pTake->GetPosition() + 1)
                                        : m_pTake->GetToothLabel();
    SIZE ext{};
    ::GetTextExtentPoint32A(dc, text.c_str(), static_cast<int>(text.size()), &ext);
    const COLORREF oldColor = ::SetTextColor(dc, m_crText);
    const int itemW = fw::Width(m_rcItem);
    int x = itemW / 2 - ext.cx / 2 + m_rcItem.left;
    const int clientW = fw::Width(m_rcClient);
    if (x + ext.cx > clientW) x = clientW - ext.cx - 1;
    if (x < 0) x = 0;
    const int y = m_rcItem.top + 1;
    const bool clipped = ext.cx >= itemW;
    if (clipped) {
        fw::UniqueRgn itemClip(::CreateRectRgnIndirect(&m_rect));
        ::SelectClipRgn(dc, itemClip.get());
    }
    ::TextOutA(dc, x, y, text.c_str(), static_cast<int>(text.size()));
    ::SetTextColor(dc, oldColor);
    return clipped;
}
