// The sensor palette of the configure dialog: one icon-view entry per entry
// of the settings' palette, with the entry's icon and name. Pressing the left
// button on an entry hands it to the owner as the start of a drag.
#pragma once
#include <windows.h>
#include "fw/ListView.h"
#include "ui/TakeListOwner.h"

class CTakeListCtrl : public fw::ListView {
public:
    CTakeListCtrl() = default;

    // Fills the list from the palette; the control must be attached first.
    // Called once: the palette does not change while the dialog is open.
    bool Init(CTakeListOwner* pOwner);

protected:
    LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp) override;

private:
    CTakeListOwner* m_pOwner = nullptr;
};
