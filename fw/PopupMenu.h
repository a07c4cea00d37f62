// A popup menu that owns its HMENU.
#pragma once
#include <windows.h>
#include "fw/Handle.h"

namespace fw {

class PopupMenu {
public:
    PopupMenu();  // an empty popup menu
    PopupMenu(PopupMenu&&) noexcept = default;
    PopupMenu& operator=(PopupMenu&&) noexcept = default;

    bool AppendItem(UINT id, const char* text);
    bool AppendSeparator();
    bool Check(UINT id, bool checked);
    bool Enable(UINT id, bool enabled);

    // Runs the menu at a screen point. With TPM_RETURNCMD the chosen command
    // (0 for none) is returned; without, the system posts it to `owner` as
    // WM_COMMAND, so a control that owns the menu receives its commands.
    UINT Track(HWND owner, POINT screen, UINT flags) const;

    HMENU get() const { return m_menu.get(); }
    explicit operator bool() const { return static_cast<bool>(m_menu); }

private:
    UniqueMenu m_menu;
};

}  // namespace fw
