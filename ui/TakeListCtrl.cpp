#include "ui/TakeListCtrl.h"
#include <commctrl.h>
#include <vector>
#include "fw/Handle.h"
#include "settings/Settings.h"

namespace {
constexpr int kIconSize = 32;

// The icon's own two bitmaps, copied in. ImageList_ReplaceIcon loads the
// icon once more from its resource to look for a better size and draws both
// halves; the icons are loaded at the list's size already, and their colour
// half is black where the mask is set, so the list holds the same image.
int AddIcon(HIMAGELIST list, HICON icon) {
    ICONINFO info{};
    if (!::GetIconInfo(icon, &info)) return -1;
    fw::UniqueBitmap color(info.hbmColor), mask(info.hbmMask);
    if (!color) return ::ImageList_ReplaceIcon(list, -1, icon);  // a monochrome icon
    return ::ImageList_Add(list, color.get(), mask.get());
}
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
    // An entry's icon is the one of its orientation, loaded from the same
    // resource, so each of the two is loaded and added once and shared by
    // its entries: the list shows the same pictures, and loading and adding
    // icons is the slow part of opening the designer.
    std::vector<int> images(count, -1);
    int byOrientation[2] = {-1, -1};
    for (int i = 0; i < count; ++i) {
        const CSensor* entry = settings.GetPaletteEntry(i);
        if (!entry) continue;
        int& image = byOrientation[entry->IsVertical()];
        if (image < 0 && entry->GetIcon()) image = AddIcon(icons.get(), entry->GetIcon());
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
