// Dialog base: modal or modeless from a resource id, one dialog procedure that
// dispatches to virtual handlers. The object is bound to its window in
// WM_INITDIALOG; no exception leaves the procedure.
#pragma once
#include <windows.h>

namespace fw {

class Dialog {
public:
    Dialog(UINT idTemplate, HWND parent);
    virtual ~Dialog();
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    INT_PTR DoModal();
    // Modeless; the window stays until DestroyWindow (or the object dies).
    bool Create(HWND parent);
    void DestroyWindow();
    void EndDialog(INT_PTR code);

    HWND hwnd() const { return m_hwnd; }
    HWND Item(int id) const { return ::GetDlgItem(m_hwnd, id); }
    void EnableItem(int id, bool enable) const { ::EnableWindow(Item(id), enable); }
    // Centres over the owner, or over the work area without one, and keeps the
    // dialog inside the work area of that monitor.
    void CenterWindow() const;
    RECT GetWindowRect() const;

protected:
    virtual BOOL OnInitDialog();
    // Binds controls to their objects; called by the base OnInitDialog.
    virtual void DoDataExchange() {}
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }
    // Return true when handled.
    virtual bool OnCommand(WORD id, WORD code, HWND control);
    virtual bool OnNotify(NMHDR* header, LRESULT& result);
    virtual void OnTimer(UINT_PTR id);
    virtual bool OnDrawItem(UINT id, DRAWITEMSTRUCT* item);

private:
    static INT_PTR CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    INT_PTR Dispatch(UINT msg, WPARAM wp, LPARAM lp);

    UINT m_idTemplate;
    HWND m_parent;
    HWND m_hwnd = nullptr;
};

}  // namespace fw
