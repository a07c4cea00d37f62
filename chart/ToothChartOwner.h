// What the tooth chart asks of the dialog it sits in: the drag from the
// sensor palette (which the dialog owns) and the take it creates, and the
// refresh after a tooth was toggled. The configure dialog implements it;
// tests implement it without any dialog.
#pragma once
#include <windows.h>
#include <vector>
#include "fw/Handle.h"

class CToothChartOwner {
public:
    virtual bool IsDragging() const = 0;
    // Whether the palette entry being dragged is a standing sensor.
    virtual bool IsDragVertical() const = 0;
    // The dragged entry's footprint (with the sensor sensitivity) and its
    // outline with the cable bar, centred on (x, y) at the chart's scale.
    virtual bool GetDragRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                               double sy) const = 0;
    virtual bool GetDragMarkerRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                                     double sy) const = 0;
    // Ends the drag and releases the capture; returns the dragged palette
    // index, which then is 0 again.
    virtual int EndDrag() = 0;
    // A new take for the teeth (FDI numbers); false, with a beep, when refused.
    virtual bool AddTakeFromPalette(const std::vector<BYTE>& teeth, int nPaletteIndex) = 0;
    virtual void UpdateSelectedItem() = 0;

protected:
    ~CToothChartOwner() = default;
};
