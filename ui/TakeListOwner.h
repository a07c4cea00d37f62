// What the sensor palette asks of the dialog it sits in: the drag of a
// palette entry towards the tooth chart. The configure dialog implements it;
// tests implement it without any dialog.
#pragma once

class CTakeListOwner {
public:
    // The left button went down on palette entry `nPaletteIndex` (two entries
    // per sensor, horizontal then vertical); the owner captures the mouse for
    // the drop target.
    virtual void BeginDrag(int nPaletteIndex) = 0;
    // Ends a drag begun and not dropped; returns the dragged palette index.
    virtual int EndDrag() = 0;

protected:
    ~CTakeListOwner() = default;
};
