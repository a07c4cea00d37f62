#include "layout/LayoutMenu.h"
#include <string>
#include "settings/Settings.h"
#include "text/TextService.h"

bool CLayoutMenu::Build() {
    if (!*this) return false;
    bool ok = true;
    BeginTexts("ZEMBLAX", 0, nullptr, std::string());
    auto appendText = [&](UINT id) {
        std::string text;
        GetTextService().LoadText(text, id, kTextString);
        ok = AppendItem(id, text.c_str()) && ok;
    };
    for (UINT id : {kZoomIn, kZoomOut, kRotate, kTooth}) appendText(id);
    ok = AppendSeparator() && ok;
    const CSettings& settings = TheSettings();
    for (int k = 0; k < settings.GetSensorCount(); ++k)
        ok = AppendItem(SensorCommand(k), settings.GetSensor(k)->GetName().c_str()) && ok;
    ok = AppendSeparator() && ok;
    for (int k = 0; k < settings.GetHolderCount(); ++k)
        ok = AppendItem(HolderCommand(k), settings.GetHolder(k)->GetName().c_str()) && ok;
    ok = AppendSeparator() && ok;
    appendText(kDelete);
    EndTexts();
    return ok;
}
