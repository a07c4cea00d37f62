// The context menu of a take on the layout canvas. Its command ids are the ids
// of the entries' texts in the string table; sensors and holder types get one
// entry each, in the order of the settings.
#pragma once
#include <windows.h>
#include "fw/PopupMenu.h"
#include "res/resource.h"

class CLayoutMenu : public fw::PopupMenu {
public:
    static constexpr UINT kZoomIn = IDS_MENU_ZOOM_IN;    // 32800
    static constexpr UINT kZoomOut = IDS_MENU_ZOOM_OUT;  // 32801
    static constexpr UINT kDelete = IDS_MENU_DELETE;     // 32802
    static constexpr UINT kRotate = IDS_MENU_ROTATE;     // 32803
    static constexpr UINT kFirstHolder = 32804;          // ... 32812
    static constexpr UINT kTooth = IDS_MENU_TOOTH;       // 32813
    static constexpr UINT kFirstSensor = 32814;          // ... 32822
    static constexpr UINT kFirstCommand = kZoomIn;
    static constexpr UINT kLastCommand = kFirstSensor + 8;

    // Appends every entry: the fixed ones in the user's language, then the
    // sensors and holder types that the settings hold now. False when the
    // system refused an entry.
    bool Build();

    // Command of the entry at list place `index` (0-based) of the sensors or
    // holder types.
    static UINT SensorCommand(int index) { return ListCommand(kFirstSensor, index); }
    static UINT HolderCommand(int index) { return ListCommand(kFirstHolder, index); }
    static bool IsSensorCommand(UINT id) { return id >= kFirstSensor && id <= kLastCommand; }
    static bool IsHolderCommand(UINT id) { return id >= kFirstHolder && id < kTooth; }
    // 1-based sensor or holder number that a command of that list gives a take.
    static int SensorNumber(UINT id) { return static_cast<int>(id - kFirstSensor) + 1; }
    static int HolderNumber(UINT id) { return static_cast<int>(id - kFirstHolder) + 1; }

private:
    // Nine ids per list, no more: the tenth and every later entry carry the
    // first entry's id and so act as the first sensor or holder type. This is
    // how the designer has always behaved; the gap between the lists leaves no
    // room for more.
    static UINT ListCommand(UINT first, int index) {
        return index >= 1 && index <= 8 ? first + static_cast<UINT>(index) : first;
    }
};
