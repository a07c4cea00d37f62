#include "fw/ListView.h"
#include "fw/Module.h"

namespace fw {

ListView::~ListView() {
    if (Module::Unloading()) {
        // The control is left alone under the loader lock and goes on
        // drawing with its lists, so they must outlive this object.
        for (UniqueImageList& list : m_owned) list.release();
        return;
    }
    DetachImageLists();
    Unsubclass();
}

bool ListView::Attach(HWND list) {
    DetachImageLists();  // from a control attached before
    return Subclass(list);
}

int ListView::InsertItem(int index, const char* text, int image, LPARAM data) {
    LVITEMA item{};
    item.mask = LVIF_TEXT | LVIF_PARAM | (image >= 0 ? LVIF_IMAGE : 0);
    item.iItem = index;
    item.iImage = image;
    item.lParam = data;
    item.pszText = const_cast<char*>(text ? text : "");
    return static_cast<int>(
        ::SendMessageA(hwnd(), LVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&item)));
}

int ListView::InsertColumn(int index, const char* text, int width, int format) {
    LVCOLUMNA col{};
    col.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT;
    col.fmt = format;
    col.cx = width;
    col.pszText = const_cast<char*>(text ? text : "");
    return static_cast<int>(
        ::SendMessageA(hwnd(), LVM_INSERTCOLUMNA, index, reinterpret_cast<LPARAM>(&col)));
}

bool ListView::DeleteAllItems() { return ListView_DeleteAllItems(hwnd()) != FALSE; }

int ListView::GetItemCount() const { return ListView_GetItemCount(hwnd()); }

LPARAM ListView::GetItemData(int index) const {
    LVITEMA item{};
    item.mask = LVIF_PARAM;
    item.iItem = index;
    if (!::SendMessageA(hwnd(), LVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item))) return 0;
    return item.lParam;
}

int ListView::GetNextItem(int start, UINT flags) const {
    return ListView_GetNextItem(hwnd(), start, flags);
}

bool ListView::SetSelection(int index) {
    const UINT both = LVIS_SELECTED | LVIS_FOCUSED;
    LVITEMA item{};
    item.stateMask = both;
    if (index < 0) {
        item.stateMask = LVIS_SELECTED;  // the focus stays where it is
        return ::SendMessageA(hwnd(), LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                              reinterpret_cast<LPARAM>(&item)) != 0;
    }
    item.state = both;
    return ::SendMessageA(hwnd(), LVM_SETITEMSTATE, index, reinterpret_cast<LPARAM>(&item)) != 0;
}

bool ListView::EnsureVisible(int index, bool partialOk) {
    return ListView_EnsureVisible(hwnd(), index, partialOk) != FALSE;
}

DWORD ListView::GetExtendedStyle() const {
    return static_cast<DWORD>(ListView_GetExtendedListViewStyle(hwnd()));
}

void ListView::SetExtendedStyle(DWORD style) { ListView_SetExtendedListViewStyle(hwnd(), style); }

bool ListView::SetImageList(UniqueImageList&& list, int which) {
    if (!Install(list.get(), which)) return false;
    m_owned[which] = std::move(list);
    return true;
}

bool ListView::SetImageList(HIMAGELIST list, int which) {
    if (!Install(list, which)) return false;
    if (m_owned[which].get() != list) m_owned[which].reset();
    return true;
}

bool ListView::Install(HIMAGELIST list, int which) {
    if (which < 0 || which >= kSlots || !hwnd()) return false;
    ListView_SetImageList(hwnd(), list, which);
    m_attached[which] = list;
    return true;
}

void ListView::DetachImageLists() {
    for (int which = 0; which < kSlots; ++which) {
        if (m_attached[which] && hwnd()) ListView_SetImageList(hwnd(), nullptr, which);
        m_attached[which] = nullptr;
    }
}

LRESULT ListView::WindowProc(UINT msg, WPARAM wp, LPARAM lp) {
    // The control frees the lists it holds while it is destroyed.
    if (msg == WM_DESTROY) DetachImageLists();
    return Window::WindowProc(msg, wp, lp);
}

}  // namespace fw
