// Every MessageBeep of the module goes through Beep(), so that a test can see
// which beeps were given (SetBeepObserver) and nothing else calls the system.
#pragma once
#include <windows.h>

namespace fw {

using BeepObserver = void (*)(UINT type);

void Beep(UINT type);
// Installs an observer called before each beep; returns the previous one.
BeepObserver SetBeepObserver(BeepObserver observer);

}  // namespace fw
