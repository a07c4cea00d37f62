// Plays the user for the whole length of a call into the module: answers
// every dialog of the UI thread from a second thread with a random but
// replayable choice among what a person could do, and stops the process when
// a call does not return.
#pragma once
#include <windows.h>
#include <atomic>
#include <random>
#include <string>
#include <thread>

class Responder {
public:
    struct Counts {
        int takeDialogs = 0, painted = 0, finishDialogs = 0, selections = 0, others = 0;
    };

    // `seed` drives the choices; with `timerCloses` the take dialog is
    // sometimes left alone so that its timer ends it.
    Responder(unsigned long long seed, bool timerCloses, const std::string& context);
    ~Responder();  // waits for the answering thread
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    const Counts& counts() const { return m_counts; }
    // Seconds a call may take before the process is stopped as hung.
    static constexpr int kHangSeconds = 60;

private:
    void Loop();
    void Answer(HWND dialog);
    void AnswerTake(HWND dialog);
    void AnswerFinish(HWND dialog);
    void AnswerSelection(HWND dialog);
    unsigned Below(unsigned n) { return static_cast<unsigned>(m_rng() % n); }

    DWORD m_uiThread;
    std::mt19937_64 m_rng;
    bool m_timerCloses;
    std::string m_context;
    Counts m_counts;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};
