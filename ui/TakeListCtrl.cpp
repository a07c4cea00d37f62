#include "ui/TakeListCtrl.h"
#include <vector>
#include "settings/Settings.h"

namespace {
constexpr int kIconSize = 32;
}

bool CTakeListCtrl::Init(CTakeListOwner* pOwner) {
    m_pOwner = pOwner;
    if (!hwnd()) return false;
    DeleteAllItems();

    const CSettings& settings = TheSettings();
    const int count = settings.GetPaletteCount();
    fw::UniqueImageList icons(
        ::ImageList_Create(kIconSize, kIconSize, ILC_COLOR24 | ILC_MASK, 2, 2));
    if (!icons) return false;
    // The image of each entry as the list gives it back: an icon that could
    // not be added must not shift the pictures of the entries after it.
    // An entry's icon is the one of its orientation, so each of the two is
    // added once and shared by its entries: the list shows the same pictures,
    // and adding an icon is the slow part of opening the designer.
    std::vector<int> images(count, -1);
    int byOrientation[2] = {-1, -1};
    for (int i = 0; i < count; ++i) {
        const CSensor* entry = settings.GetPaletteEntry(i);
        if (!entry || !entry->GetIcon()) continue;
        int& image = byOrientation[entry->IsVertical()];
        if (image < 0) image = ::ImageList_ReplaceIcon(icons.get(), -1, entry->GetIcon());
        images[i] = image;
    }
    SetImageList(std::move(icons), LVSIL_NORMAL);

    for (int i = 0; i < count; ++i) {
        const CSensor* entry = settings.GetPaletteEntry(i);
        InsertItem(i, entry ? entry->GetName().c_str() : "", images[i]);
    }
    if (count > 0) {
        EnsureVisible(0, true);
        SetSelection(0);
    }
    return true;
}

LRESULT CTakeListCtrl::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_LBUTTONDOWN: {
        // The control selects and focuses the entry under the mouse first.
        // Wine's list view returns from the press at once, without capture,
        // and would detect a drag only in later moves, which the owner's
        // capture takes away; a list view that runs its own drag-detection
        // loop returns after the first move or the release. Either way the
        // entry is handed over here, with the button still down in Wine.
        const LRESULT result = fw::ListView::WindowProc(msg, wp, lp);
        const int index = GetNextItem(-1, LVNI_SELECTED | LVNI_FOCUSED);
        if (index >= 0 && m_pOwner) m_pOwner->BeginDrag(index);
        return result;
    }
    case WM_LBUTTONUP: {
        // Reached only when no drop target took the capture: the drag ends
        // without a take.
        const LRESULT result = fw::ListView::WindowProc(msg, wp, lp);
        if (m_pOwner) m_pOwner->EndDrag();
        return result;
    }
    default:
        return fw::ListView::WindowProc(msg, wp, lp);
    }
}
