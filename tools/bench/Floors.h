// What each figure is compared with, measured in the same run: the least
// the system itself needs for the same visible result.
#pragma once
#include <windows.h>
#include <functional>
#include <string>
#include <vector>
#include "IdleDriver.h"
#include "Samples.h"

namespace floors {

// A dialog of the module's own resource with a procedure that does nothing
// but `init` in WM_INITDIALOG: shown until its first idle (or until `control`
// has painted, for a dialog timed that way).
Samples PlainDialog(IdleDriver& driver, HMODULE dll, int resourceId, int control, int repeats,
                    const std::function<void(HWND)>& init = nullptr, bool untilPainted = false);
// Lets the thread go idle once. Wine hands a window's pixels to the display
// only then, so a repaint is timed up to the screen by ending it so.
void Settle();
// BitBlt of a w x h picture from a memory DC into the window's DC, up to
// the screen.
Samples Blit(HWND window, int w, int h, int repeats);
// A window of that size whose paint only blits a finished picture,
// invalidated and repainted up to the screen: what a repaint costs the
// window system alone.
Samples BareRepaint(int w, int h, int repeats);
// Writing (or reading) the given files' bytes with plain file calls.
Samples WriteFiles(const std::vector<std::string>& files, const std::string& scratch, int repeats);
Samples ReadFiles(const std::vector<std::string>& files, int repeats);

}  // namespace floors
