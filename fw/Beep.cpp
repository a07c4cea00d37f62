#include "fw/Beep.h"

namespace fw {
namespace {
BeepObserver g_observer = nullptr;
}

void Beep(UINT type) {
    if (g_observer) g_observer(type);
    ::MessageBeep(type);
}

BeepObserver SetBeepObserver(BeepObserver observer) {
    BeepObserver old = g_observer;
    g_observer = observer;
    return old;
}

}  // namespace fw
