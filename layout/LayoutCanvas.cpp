#include "layout/LayoutCanvas.h"
#include <algorithm>
#include "fw/Beep.h"
#include "fw/Gdi.h"
#include "fw/Module.h"
#include "hostlib/HostLibrary.h"
#include "layout/LayoutOwner.h"
#include "res/resource.h"
#include "settings/Settings.h"
#include "templates/Template.h"

CLayoutCanvas::CLayoutCanvas() = default;

CLayoutCanvas::~CLayoutCanvas() = default;

void CLayoutCanvas::Init(CLayoutOwner* owner, const std::string* settingsFile) {
    if (owner) {
        m_pOwner = owner;
        BuildMenu();
    }
    m_rcClient = GetClientRect();
    BuildClipRegion();
    if (settingsFile && !settingsFile->empty() &&
        ::GetPrivateProfileIntA("Debug", "ShowOnlyActive", 0, settingsFile->c_str()))
        m_bShowOnlyActive = TRUE;
}

void CLayoutCanvas::BuildMenu() {
    auto menu = std::make_unique<CLayoutMenu>();
    if (!menu->Build()) {
        fw::Beep(MB_ICONHAND);
        m_pMenu.reset();
        return;
    }
    m_pMenu = std::move(menu);
}

void CLayoutCanvas::BuildClipRegion() {
    const LONG w = fw::Width(m_rcClient), h = fw::Height(m_rcClient);
    POINT corners[4] = {{0, 0}, {w, 0}, {w, h}, {0, h}};
    m_clipRegion.reset(::CreatePolygonRgn(corners, 4, WINDING));
}

void CLayoutCanvas::SetTemplate(CTemplate* pTemplate) {
    if (!pTemplate) return;
    m_pSelected = nullptr;
    m_pTemplate = pTemplate;
    m_trackers.clear();
    // One item per take, the last one selected, as adding them one by one
    // leaves them. Made so at once, no item asks for a repaint of its own
    // (each a call to the window system): the whole canvas repaints.
    std::vector<CTake*> takes;
    for (int i = 0; i < pTemplate->GetTakeCount(); ++i)
        if (CTake* take = pTemplate->GetTake(i)) takes.push_back(take);
    for (size_t i = 0; i < takes.size(); ++i)
        m_trackers.push_back(std::make_unique<CTakeTracker>(this, takes[i], i + 1 == takes.size()));
    if (!m_trackers.empty()) m_pSelected = m_trackers.back().get();
    Invalidate();
}

BOOL CLayoutCanvas::AddTakeItem(CTake* take) {
    auto tracker = std::make_unique<CTakeTracker>(this, take, true);
    CTakeTracker* added = tracker.get();
    m_trackers.push_back(std::move(tracker));
    if (m_pSelected) m_pSelected->SetSelected(false);
    m_pSelected = added;
    return TRUE;
}

BOOL CLayoutCanvas::RemoveTakeItem(int position) {
    if (m_pSelected) m_pSelected->SetSelected(false);
    m_pSelected = nullptr;
    auto it = std::find_if(m_trackers.begin(), m_trackers.end(), [&](const auto& t) {
        return t->GetItemTake() && t->GetItemTake()->GetPosition() == position;
    });
    if (it == m_trackers.end()) return FALSE;
    m_trackers.erase(it);
    return TRUE;
}

void CLayoutCanvas::SelectTake(int position) {
    if (m_pSelected) m_pSelected->SetSelected(false);
    m_pSelected = nullptr;
    if (position < 0) return;
    for (const auto& t : m_trackers) {
        if (t->GetItemTake() && t->GetItemTake()->GetPosition() == position) {
            t->SetSelected(true);
            m_pSelected = t.get();
        }
    }
}

void CLayoutCanvas::SetOrderMode(bool bOrderMode) {
    m_nNextOrderPlace = 0;
    m_bOrderMode = bOrderMode;
}

CTake* CLayoutCanvas::GetSelectedTake() const {
    return m_pSelected ? m_pSelected->GetItemTake() : nullptr;
}

void CLayoutCanvas::InvalidateSelected() {
    if (m_pSelected) m_pSelected->InvalidateItem();
}

bool CLayoutCanvas::SelectAt(POINT pt) {
    CTakeTracker* candidate = nullptr;
    for (const auto& t : m_trackers)
        if (t->HitTest(pt) > 0) candidate = t.get();
    if (candidate == m_pSelected) return m_pSelected != nullptr;
    if (m_pSelected) m_pSelected->SetSelected(false);
    m_pSelected = candidate;
    if (candidate) {
        candidate->SetSelected(true);
        auto it = std::find_if(m_trackers.begin(), m_trackers.end(),
                               [&](const auto& t) { return t.get() == candidate; });
        std::rotate(it, it + 1, m_trackers.end());
    }
    NotifySelectionChanged();
    if (hwnd()) ::UpdateWindow(hwnd());
    return m_pSelected != nullptr;
}

void CLayoutCanvas::NotifySelectionChanged() {
    if (m_pOwner) m_pOwner->UpdateChart();
}

LRESULT CLayoutCanvas::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    const POINT pt{static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp))};
    switch (msg) {
    case WM_PAINT:
        OnPaint();
        return 0;
    case WM_ERASEBKGND:
        // Painting covers every pixel; the static control drew nothing here
        // either (its erasing is left out, which under Wine costs a round of
        // subclass calls).
        return 1;
    case WM_NCHITTEST:
        // Without an owner the canvas is a picture: mouse input goes to the parent.
        if (!m_pOwner) return HTTRANSPARENT;
        break;
    case WM_LBUTTONDOWN:
        if (!m_pTemplate || !m_pOwner) return 0;
        OnLButtonDown(pt);
        break;
    case WM_RBUTTONDOWN:
        if (!m_pOwner) return 0;
        OnRButtonDown(pt);
        break;
    case WM_COMMAND:
        return OnCommand(wp, lp);
    case WM_SETCURSOR:
        if (m_pSelected && reinterpret_cast<HWND>(wp) == hwnd() &&
            m_pSelected->SetCursor(hwnd(), LOWORD(lp)))
            return TRUE;
        break;
    }
    return Default(msg, wp, lp);
}

void CLayoutCanvas::OnLButtonDown(POINT pt) {
    if (!SelectAt(pt)) return;
    if (m_bOrderMode)
        AssignOrder();
    else
        MoveSelected(pt);
}

void CLayoutCanvas::AssignOrder() {
    CTake* selected = GetSelectedTake();
    auto copy = std::make_unique<CTake>();
    copy->CopyFrom(*selected);
    const int p = selected->GetPosition();
    RemoveTakeItem(p);
    if (!m_pTemplate->RemoveTake(p)) return;
    CTake* raw = copy.release();
    if (!m_pTemplate->InsertTake(m_nNextOrderPlace, raw)) {
        delete raw;
        return;
    }
    AddTakeItem(raw);
    if (m_nNextOrderPlace < m_pTemplate->GetTakeCount() - 1) ++m_nNextOrderPlace;
    for (const auto& t : m_trackers) t->InvalidateItem();
    NotifySelectionChanged();
}

void CLayoutCanvas::MoveSelected(POINT pt) {
    CTakeTracker* tracker = m_pSelected;
    tracker->SetTracking(true);
    RECT before = tracker->GetTrackerRect();
    ::InflateRect(&before, 10, 10);
    const bool moved = tracker->Track(hwnd(), pt);
    // A cancelled drag puts back only the tracker's rectangle; the take keeps
    // the moves already made, and the item is drawn where the take now is.
    tracker->Recalc();
    RECT after = tracker->GetTrackerRect();
    ::InflateRect(&after, 10, 10);
    if (moved || !::EqualRect(&before, &after)) {
        Invalidate(&before, true);
        Invalidate(&after, true);
    }
    tracker->SetTracking(false);
}

void CLayoutCanvas::OnRButtonDown(POINT pt) {
    if (!SelectAt(pt) || !m_pMenu) return;
    POINT screen = pt;
    ::ClientToScreen(hwnd(), &screen);
    // The menu runs modally here; the chosen command comes back to this
    // window as WM_COMMAND, while the take is still selected.
    m_pMenu->Track(hwnd(), screen, TPM_RIGHTBUTTON | TPM_LEFTALIGN);
}

LRESULT CLayoutCanvas::OnCommand(WPARAM wp, LPARAM lp) {
    // Only the designer's canvas has a menu whose commands act.
    if (m_pOwner) {
        const UINT id = LOWORD(wp);
        CTake* take = GetSelectedTake();
        if (!take)
            m_pOwner->UpdateView();
        else if (id < CLayoutMenu::kFirstCommand || id > CLayoutMenu::kLastCommand)
            fw::Beep(MB_ICONHAND);
        else
            RunCommand(id, *m_pSelected, *take);
    }
    return Default(WM_COMMAND, wp, lp);
}

void CLayoutCanvas::RunCommand(UINT id, CTakeTracker& tracker, CTake& take) {
    const CSettings& settings = TheSettings();
    const HWND boxOwner = m_pOwner->OwnerWindow();
    if (CLayoutMenu::IsHolderCommand(id)) {
        if (const CHolder* holder = settings.GetHolder(CLayoutMenu::HolderNumber(id) - 1)) {
            if (holder->Allows(take.IsVertical()))
                take.SetHolder(CLayoutMenu::HolderNumber(id));
            else
                HostBoxWarning(boxOwner, IDS_HOLDER_ORIENTATION);
        }
        m_pOwner->UpdateView();
        return;
    }
    if (CLayoutMenu::IsSensorCommand(id)) {
        take.SetSensor(CLayoutMenu::SensorNumber(id));  // an unknown sensor keeps the old one
        tracker.SetTake(&take);
        m_pOwner->UpdateView();
        return;
    }
    switch (id) {
    case CLayoutMenu::kZoomIn:
        tracker.ZoomIn();
        break;
    case CLayoutMenu::kZoomOut:
        tracker.ZoomOut();
        break;
    case CLayoutMenu::kDelete:
        // The owner deletes the tracker and the take: neither is touched again.
        m_pOwner->DeleteTake(take.GetPosition());
        break;
    case CLayoutMenu::kRotate: {
        const CHolder* holder = settings.GetHolder(take.GetHolder() - 1);
        if (!holder)
            m_pOwner->UpdateView();
        else if (!holder->Allows(!take.IsVertical()))  // the orientation after the turn
            HostBoxWarning(boxOwner, IDS_ROTATE_HOLDER);
        else
            tracker.Rotate();  // may still refuse when the turned image does not fit
        break;
    }
    case CLayoutMenu::kTooth:
        HostBoxInfo(boxOwner, IDS_TOOTH_HINT);
        break;
    }
}

void CLayoutCanvas::OnPaint() {
    fw::PaintDC paint(hwnd());
    HDC dc = paint.get();
    RECT client = GetClientRect();
    if (!::EqualRect(&client, &m_rcClient)) {
        m_rcClient = client;
        BuildClipRegion();
    }
    HDC background = Background(dc, client);
    if (!m_pOwner && PaintKept(dc, paint.ps().rcPaint, client, background)) return;
    PaintItems(dc, client, background);
}

void CLayoutCanvas::PaintItems(HDC dc, const RECT& client, HDC background) {
    ::SetBkMode(dc, TRANSPARENT);
    ::SelectClipRgn(dc, m_clipRegion.get());
    if (background)
        ::BitBlt(dc, 0, 0, fw::Width(client), fw::Height(client), background, 0, 0, SRCCOPY);
    // The mapping the picture was stretched with, then one unit is one pixel
    // again: the items are drawn in the state they always found.
    ::SetMapMode(dc, MM_ANISOTROPIC);
    ::SetWindowExtEx(dc, m_szPicture.cx, m_szPicture.cy, nullptr);
    ::SetViewportExtEx(dc, fw::Width(client), fw::Height(client), nullptr);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    ::SetWindowExtEx(dc, fw::Width(client), fw::Height(client), nullptr);
    ::SetViewportExtEx(dc, fw::Width(client), fw::Height(client), nullptr);
    // The items' font, selected once for all of them; an item selects it
    // itself only where it is not selected yet.
    fw::SelectObj font(dc, TheSettings().GetFont());
    for (const auto& t : m_trackers) {
        t->Draw(dc);
        t->Paint(dc, m_bOrderMode != 0, m_bShowOnlyActive != 0, m_clipRegion.get());
    }
    if (m_pSelected) {
        m_pSelected->Draw(dc);
        m_pSelected->Paint(dc, m_bOrderMode != 0, m_bShowOnlyActive != 0, m_clipRegion.get());
    }
}

// The preview repaints the same picture through a whole run. Its finished
// picture is kept and copied for the update box while the key of everything
// painting reads is unchanged; otherwise it is drawn again whole, by the same
// code in the same DC state, before the copy. A paint clipped to the update
// region showed these very pixels there, and the window system lets no paint
// reach beyond that region: nothing shown changes, only the drawing is saved.
// False when the window is to be painted directly (no picture to keep).
bool CLayoutCanvas::PaintKept(HDC dc, const RECT& update, const RECT& client, HDC background) {
    // Without a background a paint left the window's old pixels under the items.
    if (!background) return false;
    BuildPaintKey(client, m_paintKey);
    if (!m_finished || m_paintKey != m_finishedKey) {
        m_finishedKey.clear();
        HDC picture = m_finished.Prepare(dc, {fw::Width(client), fw::Height(client)});
        if (!picture) return false;
        // The key was taken before the items were drawn: drawing brings them
        // up to the canvas's size, and a picture of items drawn where they
        // were before that is not what the next paint draws.
        PaintItems(picture, client, background);
        m_finishedKey.swap(m_paintKey);
    }
    RECT box{};
    if (!::IntersectRect(&box, &update, &client)) return true;
    ::SelectClipRgn(dc, m_clipRegion.get());
    m_finished.CopyTo(dc, box);
    return true;
}

// What PaintItems reads: the size, the canvas's flags, the settings record's
// generation (colours, font, outlines) and, in drawing order, each item's
// rectangle, look and take.
void CLayoutCanvas::BuildPaintKey(const RECT& client, std::vector<long long>& key) const {
    key.clear();
    int selected = -1;
    for (size_t i = 0; i < m_trackers.size(); ++i)
        if (m_trackers[i].get() == m_pSelected) selected = static_cast<int>(i);
    key.insert(key.end(), {fw::Width(client), fw::Height(client), m_bOrderMode, m_bShowOnlyActive,
                           static_cast<long long>(TheSettings().GetGeneration()), selected});
    for (const auto& t : m_trackers) {
        const RECT r = t->GetTrackerRect();
        key.insert(key.end(), {r.left, r.top, r.right, r.bottom, t->m_nStyle, t->IsSelected(),
                               t->IsTracking()});
        const CTake* take = t->GetItemTake();
        if (!take) {
            key.push_back(-1);
            continue;
        }
        const RECT tr = take->GetRect();
        const std::vector<BYTE>& teeth = take->GetTeeth();
        key.insert(key.end(), {tr.left, tr.top, tr.right, tr.bottom, take->GetZoomNumerator(),
                               take->GetZoomDenominator(), take->IsVertical(), take->GetSensor(),
                               take->GetHolder(), take->GetPosition(),
                               static_cast<long long>(teeth.size())});
        key.insert(key.end(), teeth.begin(), teeth.end());
    }
}

// The layout picture stretched to the client size, as painting used to
// stretch it into the window at every paint: loaded once (the same resource
// gives the same picture) and stretched again only when the size changes, in
// the same mapping and stretch mode, so each paint copies the same pixels.
HDC CLayoutCanvas::Background(HDC reference, const RECT& client) {
    const SIZE size{fw::Width(client), fw::Height(client)};
    if (m_background && size.cx == m_szBackground.cx && size.cy == m_szBackground.cy)
        return m_background.dc();
    if (!m_picture) {
        // Without it a paint draws no background; the next one tries again.
        m_picture.reset(static_cast<HBITMAP>(::LoadImageA(fw::Module::ResourceHandle(),
                                                          MAKEINTRESOURCEA(IDB_LAYOUT),
                                                          IMAGE_BITMAP, 0, 0, 0)));
        BITMAP bm{};
        if (!m_picture || !::GetObjectA(m_picture.get(), sizeof bm, &bm)) {
            m_picture.reset();
            return nullptr;
        }
        m_szPicture = {bm.bmWidth, bm.bmHeight};
    }
    HDC dc = m_background.Prepare(reference, size);
    m_szBackground = size;
    if (!dc) return nullptr;
    fw::UniqueDC memory(::CreateCompatibleDC(reference));
    fw::SelectObj selPicture(memory.get(), m_picture.get());
    ::SetBkMode(dc, TRANSPARENT);
    ::SetMapMode(dc, MM_ANISOTROPIC);
    ::SetWindowExtEx(dc, m_szPicture.cx, m_szPicture.cy, nullptr);
    ::SetViewportExtEx(dc, size.cx, size.cy, nullptr);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    ::BitBlt(dc, 0, 0, m_szPicture.cx, m_szPicture.cy, memory.get(), 0, 0, SRCCOPY);
    ::SetMapMode(dc, MM_TEXT);
    return dc;
}

BOOL CLayoutCanvas::RenderThumbnail(fw::UniqueBitmap& bitmap) {
    const BOOL savedShowOnlyActive = m_bShowOnlyActive;
    m_bShowOnlyActive = TRUE;
    for (const auto& t : m_trackers) t->SetSelected(false);
    m_pSelected = nullptr;
    if (m_pOwner) m_pOwner->UpdateView();
    {
        fw::WindowDC dc(hwnd());
        fw::UniqueDC memory(::CreateCompatibleDC(dc.get()));
        bitmap.reset(::CreateCompatibleBitmap(dc.get(), 200, 150));
        fw::SelectObj sel(memory.get(), bitmap.get());
        const RECT c = GetClientRect();
        ::StretchBlt(memory.get(), 0, 0, 200, 150, dc.get(), 0, 0, fw::Width(c), fw::Height(c),
                     SRCCOPY);
    }
    m_bShowOnlyActive = savedShowOnlyActive;
    if (m_pOwner) m_pOwner->UpdateView();
    return TRUE;
}
