#include "fw/PopupMenu.h"

namespace fw {

PopupMenu::PopupMenu() : m_menu(::CreatePopupMenu()) {}

bool PopupMenu::AppendItem(UINT id, const char* text) {
    return m_menu && ::AppendMenuA(m_menu.get(), MF_STRING, id, text);
}

bool PopupMenu::AppendSeparator() {
    return m_menu && ::AppendMenuA(m_menu.get(), MF_SEPARATOR, 0, nullptr);
}

bool PopupMenu::Check(UINT id, bool checked) {
    return m_menu && ::CheckMenuItem(m_menu.get(), id,
                                     MF_BYCOMMAND | (checked ? MF_CHECKED : MF_UNCHECKED)) !=
                         static_cast<DWORD>(-1);
}

bool PopupMenu::Enable(UINT id, bool enabled) {
    return m_menu && ::EnableMenuItem(m_menu.get(), id,
                                      MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED)) != -1;
}

UINT PopupMenu::Track(HWND owner, POINT screen, UINT flags) const {
    if (!m_menu || !owner) return 0;
    return static_cast<UINT>(
        ::TrackPopupMenu(m_menu.get(), flags, screen.x, screen.y, 0, owner, nullptr));
}

}  // namespace fw
