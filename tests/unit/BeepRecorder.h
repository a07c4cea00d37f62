// Records the module's beeps while it lives.
#pragma once
#include <vector>
#include "fw/Beep.h"

class BeepRecorder {
public:
    BeepRecorder() { s_beeps.clear(); m_old = fw::SetBeepObserver(&Record); }
    ~BeepRecorder() { fw::SetBeepObserver(m_old); }
    std::vector<UINT> Take() {
        std::vector<UINT> b;
        b.swap(s_beeps);
        return b;
    }

private:
    static void Record(UINT type) { s_beeps.push_back(type); }
    static inline std::vector<UINT> s_beeps;
    fw::BeepObserver m_old;
};
