// Placement of a take in the layout: every operation keeps the rectangle
// consistent with picture size and zoom, and inside the layout area.
#include "fw/Beep.h"
#include "settings/Settings.h"
#include "templates/LayoutSpace.h"
#include "templates/Take.h"

void CTake::RecomputeRect() {
    const double ratio = static_cast<double>(m_nZoomNum) / static_cast<double>(m_nZoomDen);
    m_rect.right = m_rect.left + static_cast<LONG>(m_nPictureWidth * ratio);
    m_rect.bottom = m_rect.top + static_cast<LONG>(m_nPictureHeight * ratio);
}

bool CTake::MoveTo(int x, int y) {
    const RECT old = m_rect;
    const int w = old.right - old.left, h = old.bottom - old.top;
    if (static_cast<UINT>(x) < static_cast<UINT>(layout::kAreaLeft)) x = layout::kAreaLeft;
    if (static_cast<UINT>(y) < static_cast<UINT>(layout::kAreaTop)) y = layout::kAreaTop;
    if (w + x > layout::kAreaRight) x = layout::kAreaRight - w;
    if (h + y > layout::kAreaBottom) y = layout::kAreaBottom - h;
    m_rect = {x, y, x + w, y + h};
    if (EqualRect(&old, &m_rect)) return false;
    m_bModified = TRUE;
    return true;
}

bool CTake::MoveBy(int dx, int dy) {
    int x = m_rect.left + dx, y = m_rect.top + dy;
    if (x < 0) x = 0;
    if (y < 0) y = 0;
    return MoveTo(x, y);
}

bool CTake::FitPosition(int& x, int& y) const {
    const int w = m_rect.right - m_rect.left, h = m_rect.bottom - m_rect.top;
    x = m_rect.left > layout::kAreaLeft ? m_rect.left : layout::kAreaLeft;
    y = m_rect.top > layout::kAreaTop ? m_rect.top : layout::kAreaTop;
    if (w + x > layout::kAreaRight) x = layout::kAreaRight - w;
    if (h + y > layout::kAreaBottom) y = layout::kAreaBottom - h;
    return x >= layout::kAreaLeft && y >= layout::kAreaTop && w + x <= layout::kAreaRight && h + y <= layout::kAreaBottom;
}

bool CTake::FitsLayoutArea() const {
    int x, y;
    return FitPosition(x, y);
}

bool CTake::ClampToLayoutArea() {
    int x, y;
    if (!FitPosition(x, y)) return false;
    const int w = m_rect.right - m_rect.left, h = m_rect.bottom - m_rect.top;
    m_rect = {x, y, x + w, y + h};
    return true;
}

bool CTake::SetSensor(int n) {
    const CSensor* sensor = n > 0 ? TheSettings().GetSensor(n - 1) : nullptr;
    if (!sensor) return false;
    m_bModified = TRUE;
    SIZE pic = sensor->GetPictureSize();
    m_nPictureWidth = m_bVertical ? pic.cy : pic.cx;
    m_nPictureHeight = m_bVertical ? pic.cx : pic.cy;
    m_nSensor = n;
    if (m_nZoomDen == 0) m_nZoomNum = m_nZoomDen = 1;
    RecomputeRect();
    ClampToLayoutArea();
    return true;
}

void CTake::ClipZoom() {
    if (m_nZoomNum > 10) {
        m_nZoomNum = 10;
        m_nZoomDen = 1;
        fw::Beep(MB_ICONHAND);
    }
    if (m_nZoomDen > 10) {
        m_nZoomNum = 1;
        m_nZoomDen = 10;
        fw::Beep(MB_ICONHAND);
    }
}

void CTake::FinishZoom(UINT oldNum, UINT oldDen) {
    ClipZoom();
    RecomputeRect();
    if (!FitsLayoutArea()) {
        m_nZoomNum = oldNum;
        m_nZoomDen = oldDen;
        RecomputeRect();
        fw::Beep(MB_ICONHAND);
    } else {
        ClampToLayoutArea();
    }
}

void CTake::ZoomIn() {
    const UINT oldNum = m_nZoomNum, oldDen = m_nZoomDen;
    m_bModified = TRUE;
    if (m_nZoomNum != 1) {
        ++m_nZoomNum;
    } else if (--m_nZoomDen == 0) {
        m_nZoomNum = 2;
        m_nZoomDen = 1;
    }
    FinishZoom(oldNum, oldDen);
}

void CTake::ZoomOut() {
    const UINT oldNum = m_nZoomNum, oldDen = m_nZoomDen;
    m_bModified = TRUE;
    if (m_nZoomNum == 1)
        ++m_nZoomDen;
    else if (m_nZoomNum > 1)
        --m_nZoomNum;
    FinishZoom(oldNum, oldDen);
}

void CTake::Rotate() {
    m_bModified = TRUE;
    const RECT oldRect = m_rect;
    const int oldW = m_nPictureWidth, oldH = m_nPictureHeight;
    std::swap(m_nPictureWidth, m_nPictureHeight);
    const LONG w = m_rect.right - m_rect.left, h = m_rect.bottom - m_rect.top;
    m_rect.right = m_rect.left + h;
    m_rect.bottom = m_rect.top + w;
    if (!FitsLayoutArea()) {
        m_rect = oldRect;
        m_nPictureWidth = oldW;
        m_nPictureHeight = oldH;
        return;
    }
    if (ClampToLayoutArea()) m_bVertical = !m_bVertical;
}

bool CTake::Place(int x, int y, UINT num, UINT den) {
    m_rect = {0, 0, 0, 0};
    m_nZoomNum = num;
    m_nZoomDen = den;
    MoveTo(x, y);
    const CSensor* sensor = m_nSensor > 0 ? TheSettings().GetSensor(m_nSensor - 1) : nullptr;
    if (!sensor) return false;
    SIZE pic = sensor->GetPictureSize();
    m_nPictureWidth = pic.cx;
    m_nPictureHeight = pic.cy;
    const double ratio = static_cast<double>(num) / static_cast<double>(den);
    LONG w = static_cast<LONG>(pic.cx * ratio), h = static_cast<LONG>(pic.cy * ratio);
    if (m_bVertical) std::swap(w, h);
    m_rect.right = m_rect.left + w;
    m_rect.bottom = m_rect.top + h;
    MoveTo(x, y);
    return true;
}
