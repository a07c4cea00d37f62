// The takes of a template drawn on a small picture of the host's screen. With
// an owner (the template designer) takes are selected, moved and put into
// acquisition order with the mouse, and edited through a context menu on the
// right button; without one (the progress preview) the canvas only shows the
// template and the take marked by SelectTake.
#pragma once
#include <windows.h>
#include <memory>
#include <string>
#include <vector>
#include "fw/Handle.h"
#include "fw/OffscreenBuffer.h"
#include "fw/Window.h"
#include "layout/LayoutMenu.h"
#include "layout/TakeTracker.h"

class CLayoutOwner;
class CTemplate;
class CTake;

class CLayoutCanvas : public fw::Window {
public:
    CLayoutCanvas();
    ~CLayoutCanvas() override;

    void Init(CLayoutOwner* owner, const std::string* settingsFile);
    void SetTemplate(CTemplate* pTemplate);
    BOOL AddTakeItem(CTake* take);
    BOOL RemoveTakeItem(int position);
    void SelectTake(int position);
    void SetOrderMode(bool bOrderMode);
    bool IsOrderMode() const { return m_bOrderMode != 0; }
    CTake* GetSelectedTake() const;
    void InvalidateSelected();
    BOOL RenderThumbnail(fw::UniqueBitmap& bitmap);
    bool SelectAt(POINT pt);

    // For tests and the owner: trackers in drawing order.
    int GetTrackerCount() const { return static_cast<int>(m_trackers.size()); }
    CTakeTracker* GetTracker(int index) const { return m_trackers[index].get(); }
    CTakeTracker* GetSelectedTracker() const { return m_pSelected; }
    bool GetShowOnlyActive() const { return m_bShowOnlyActive != 0; }
    const CLayoutMenu* GetMenu() const { return m_pMenu.get(); }

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;

private:
    void BuildClipRegion();
    void BuildMenu();
    void OnPaint();
    void PaintItems(HDC dc, const RECT& client, HDC background);
    bool PaintKept(HDC dc, const RECT& update, const RECT& client, HDC background);
    void BuildPaintKey(const RECT& client, std::vector<long long>& key) const;
    HDC Background(HDC reference, const RECT& client);
    void OnLButtonDown(POINT pt);
    void AssignOrder();
    void MoveSelected(POINT pt);
    void OnRButtonDown(POINT pt);
    LRESULT OnCommand(WPARAM wp, LPARAM lp);
    void RunCommand(UINT id, CTakeTracker& tracker, CTake& take);
    void NotifySelectionChanged();

    CLayoutOwner* m_pOwner = nullptr;
    CTemplate* m_pTemplate = nullptr;
    std::vector<std::unique_ptr<CTakeTracker>> m_trackers;
    CTakeTracker* m_pSelected = nullptr;
    std::unique_ptr<CLayoutMenu> m_pMenu;
    RECT m_rcClient{};
    fw::UniqueRgn m_clipRegion;
    // The layout picture, loaded at the first paint, and stretched to the
    // client size (m_szBackground) in a kept buffer.
    fw::UniqueBitmap m_picture;
    SIZE m_szPicture{};
    fw::OffscreenBuffer m_background;
    SIZE m_szBackground{};
    // Without an owner: the finished picture, and the key of what it was
    // drawn from (empty while it shows nothing valid).
    fw::OffscreenBuffer m_finished;
    std::vector<long long> m_finishedKey, m_paintKey;
    BOOL m_bOrderMode = FALSE;
    int m_nNextOrderPlace = 0;
    BOOL m_bShowOnlyActive = FALSE;
};
