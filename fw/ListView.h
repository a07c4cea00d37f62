// A list-view control of a dialog, seen through a subclass; the window stays
// the dialog's. Image lists are never left to the control: whatever the
// LVS_SHAREIMAGELISTS style says, they are taken off the control before it is
// destroyed, so an image list is destroyed by its owner and only once.
// A derived control passes the messages it does not handle to
// ListView::WindowProc.
#pragma once
#include <windows.h>
#include <commctrl.h>
#include "fw/Handle.h"
#include "fw/Window.h"

namespace fw {

class ListView : public Window {
public:
    ListView() = default;
    ~ListView() override;

    bool Attach(HWND list);

    // Returns the new item's index, or -1. An image of -1 leaves the item
    // without one; `data` is the item's lParam.
    int InsertItem(int index, const char* text, int image = -1, LPARAM data = 0);
    int InsertColumn(int index, const char* text, int width, int format = LVCFMT_LEFT);
    bool DeleteAllItems();
    int GetItemCount() const;
    LPARAM GetItemData(int index) const;
    // The next item from `start` (-1: from the top) with the LVNI_ flags, or -1.
    int GetNextItem(int start, UINT flags) const;
    int GetSelection() const { return GetNextItem(-1, LVNI_SELECTED); }
    // Selects and focuses one item; -1 clears the selection.
    bool SetSelection(int index);
    bool EnsureVisible(int index, bool partialOk);
    DWORD GetExtendedStyle() const;
    void SetExtendedStyle(DWORD style);

    // `which` is LVSIL_NORMAL, LVSIL_SMALL or LVSIL_STATE. The owning form
    // keeps the list with this object; the borrowing form leaves it with the
    // caller, who keeps it alive while this object lives.
    bool SetImageList(UniqueImageList&& list, int which);
    bool SetImageList(HIMAGELIST list, int which);

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;

private:
    static constexpr int kSlots = 3;
    bool Install(HIMAGELIST list, int which);
    // Takes every image list off the control.
    void DetachImageLists();

    HIMAGELIST m_attached[kSlots] = {};
    UniqueImageList m_owned[kSlots];
};

}  // namespace fw
