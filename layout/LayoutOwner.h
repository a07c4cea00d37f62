// What the layout canvas calls on the dialog that owns it.
#pragma once

class CLayoutOwner {
public:
    virtual ~CLayoutOwner() = default;
    // The selection changed: the chart and the caption follow it.
    virtual void UpdateChart() = 0;
    // The template changed in a way that needs a full refresh.
    virtual void UpdateView() = 0;
    virtual HWND OwnerWindow() const = 0;
};
