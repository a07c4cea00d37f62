// What the layout canvas calls on the dialog that owns it. A canvas without an
// owner (the progress preview) only shows its template.
#pragma once
#include <windows.h>

class CLayoutOwner {
public:
    virtual ~CLayoutOwner() = default;
    // The selection changed: the chart and the caption follow it.
    virtual void UpdateChart() = 0;
    // The template changed in a way that needs a full refresh.
    virtual void UpdateView() = 0;
    // The user deleted the take at this position from the context menu: the
    // owner removes its item (RemoveTakeItem) and the take from the template,
    // selects the take at position 0 and refreshes. The canvas touches neither
    // the item nor the take afterwards.
    virtual void DeleteTake(int position) = 0;
    // Parent of the message boxes the canvas shows; may be null.
    virtual HWND OwnerWindow() const = 0;
};
