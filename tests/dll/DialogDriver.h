// Plays the user from a second thread while a modal dialog of the module runs
// on the test's main thread: finds the dialog, reads it, clicks like a person
// (only what is enabled).
#pragma once
#include <windows.h>
#include <string>

class DialogDriver {
public:
    DialogDriver() : m_uiThread(GetCurrentThreadId()) {}

    // The next visible dialog of the UI thread that has control `id` and was
    // not found before; null after the time-out.
    HWND WaitFor(int id, int timeoutMs = 8000) const;
    // Waits until the window is gone; false after the time-out.
    static bool WaitGone(HWND hwnd, int timeoutMs = 8000);

    // Answers the next message box by clicking `answer` and waits until it is
    // gone; the box's text (and caption), empty when none came within the time-out.
    std::string AnswerBox(int answer, int timeoutMs = 4000, std::string* caption = nullptr) const;

    static bool Click(HWND dialog, int id);  // false when disabled or missing
    static bool Enabled(HWND dialog, int id);
    static std::string Text(HWND window);
    static std::string ItemText(HWND dialog, int id) { return Text(GetDlgItem(dialog, id)); }
    static void PressEscape(HWND dialog);
    // Ends every open dialog of the UI thread (Beenden or Cancel): a failed
    // test must not leave the module's modal loop waiting for ever.
    void DismissAll() const;

private:
    DWORD m_uiThread;
};
