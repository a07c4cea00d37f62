// Plays the user from inside the UI thread. A dialog's modal loop sends
// WM_ENTERIDLE to its owner once its queue is empty, that is once the dialog
// is shown and painted: the moment the benchmark times, and the moment a user
// would click. A step runs at the first idle of a dialog that has its control.
// Dialogs without an owner send no idle: for them a step runs when a control
// of theirs has painted.
#pragma once
#include <windows.h>
#include <deque>
#include <functional>

class IdleDriver {
public:
    using Action = std::function<void(HWND dialog)>;
    IdleDriver();
    ~IdleDriver();
    IdleDriver(const IdleDriver&) = delete;
    IdleDriver& operator=(const IdleDriver&) = delete;

    HWND host() const { return m_host; }
    void Then(int controlId, Action action) { m_steps.push_back({controlId, false, std::move(action)}); }
    void ThenPainted(int controlId, Action action) {
        m_steps.push_back({controlId, true, std::move(action)});
    }
    bool Done() const { return m_steps.empty(); }
    // When the last dialog that went idle was destroyed (NowMs), 0 before.
    double LastClosed() const { return m_lastClosed; }
    // Ends the process when the steps are not done within `seconds` from now:
    // a dialog that never shows must not hang the benchmark.
    static void Watchdog(int seconds);

    static void Click(HWND dialog, int id);  // posted, as a user's click
    static void SelectItem(HWND list, int index);

private:
    struct Step {
        int id;
        bool painted;
        Action action;
    };
    static LRESULT CALLBACK HostProc(HWND, UINT, WPARAM, LPARAM);
    static LRESULT CALLBACK OwnerProc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
    static LRESULT CALLBACK PaintProc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
    static LRESULT CALLBACK CreationHook(int, WPARAM, LPARAM);
    void OnIdle(HWND dialog);

    HWND m_host = nullptr;
    HHOOK m_hook = nullptr;
    std::deque<Step> m_steps;
    double m_lastClosed = 0;
};
