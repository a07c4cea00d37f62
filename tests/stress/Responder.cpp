#include "Responder.h"
#include <commctrl.h>
#include <cstdio>
#include <cstring>
#include <vector>
#include "../dll/DialogDriver.h"

namespace {
constexpr int kPicture = 15042, kSelectionList = 15014;
constexpr int kBack = 1003, kTakeSkip = 1004, kQuit = 1001;
constexpr int kFinSkip = 1007, kFinAccept = 1006, kFinNext = 1002;

constexpr int kToothChart = 15037;  // the configure dialog

// Dialogs not answered yet, and those still open 5 s after their answer (a
// click that did not close them).
BOOL CALLBACK Collect(HWND h, LPARAM lp) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::strcmp(cls, "#32770") != 0 || !IsWindowVisible(h)) return TRUE;
    const auto answered = reinterpret_cast<ULONG_PTR>(GetPropA(h, "StressAnswered"));
    if (!answered || GetTickCount() - static_cast<DWORD>(answered) > 5000)
        reinterpret_cast<std::vector<HWND>*>(lp)->push_back(h);
    return TRUE;
}
}  // namespace

Responder::Responder(unsigned long long seed, bool timerCloses, const std::string& context)
    : m_uiThread(GetCurrentThreadId()), m_rng(seed), m_timerCloses(timerCloses),
      m_context(context), m_thread([this] { Loop(); }) {}

Responder::~Responder() {
    m_stop = true;
    m_thread.join();
}

void Responder::Loop() {
    const DWORD start = GetTickCount();
    while (!m_stop) {
        std::vector<HWND> dialogs;
        EnumThreadWindows(m_uiThread, Collect, reinterpret_cast<LPARAM>(&dialogs));
        for (HWND d : dialogs) {
            SetPropA(d, "StressAnswered", reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(GetTickCount() | 1)));
            Answer(d);
        }
        if (GetTickCount() - start > kHangSeconds * 1000u) {
            std::fprintf(stderr, "HANG: a call did not return within %d s (%s)\n", kHangSeconds,
                         m_context.c_str());
            std::fflush(stderr);
            TerminateProcess(GetCurrentProcess(), 4);
        }
        Sleep(10);
    }
}

void Responder::Answer(HWND dialog) {
    Sleep(20);  // let the dialog finish its initialisation
    if (GetDlgItem(dialog, kPicture))
        AnswerTake(dialog);
    else if (GetDlgItem(dialog, kFinAccept))
        AnswerFinish(dialog);
    else if (GetDlgItem(dialog, kSelectionList))
        AnswerSelection(dialog);
    else if (GetDlgItem(dialog, kToothChart)) {
        ++m_counts.others;  // the designer: finish it
        PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    } else {
        ++m_counts.others;  // a message box or the save-as dialog: do not save
        for (int id : {IDNO, IDOK, IDCANCEL, IDYES})
            if (GetDlgItem(dialog, id)) {
                PostMessageA(dialog, WM_COMMAND, id, 0);
                break;
            }
    }
}

void Responder::AnswerTake(HWND dialog) {
    ++m_counts.takeDialogs;
    // The picture must have been painted before anyone goes on: painting is
    // where the exposure is read.
    for (int i = 0; i < 200 && IsWindow(dialog); ++i) {
        if (!GetUpdateRect(dialog, nullptr, FALSE) &&
            !GetUpdateRect(GetDlgItem(dialog, kPicture), nullptr, FALSE)) {
            ++m_counts.painted;
            break;
        }
        Sleep(5);
    }
    const unsigned r = Below(100);
    if (r < 70) DialogDriver::Click(dialog, IDOK);
    else if (r < 78) DialogDriver::Click(dialog, kBack);
    else if (r < 86) DialogDriver::Click(dialog, kTakeSkip);
    else if (r < 89) DialogDriver::Click(dialog, kQuit);
    else if (r < 94 || !m_timerCloses) DialogDriver::PressEscape(dialog);
    else if (!DialogDriver::WaitGone(dialog, 3000))  // the timer ends it, unless it is off
        DialogDriver::Click(dialog, IDOK);
}

void Responder::AnswerFinish(HWND dialog) {
    ++m_counts.finishDialogs;
    static const int kButtons[] = {kFinNext, kFinNext, kBack, kFinSkip, kFinAccept, kQuit};
    for (int attempt = 0; attempt < 8; ++attempt)
        if (DialogDriver::Click(dialog, kButtons[Below(6)])) return;
    DialogDriver::PressEscape(dialog);
}

void Responder::AnswerSelection(HWND dialog) {
    ++m_counts.selections;
    HWND list = GetDlgItem(dialog, kSelectionList);
    const int count = static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0));
    if (count > 0 && Below(10) != 0) {
        LVITEMA item{};
        item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageA(list, LVM_SETITEMSTATE, Below(count), reinterpret_cast<LPARAM>(&item));
        if (DialogDriver::Click(dialog, IDOK)) return;
    }
    DialogDriver::Click(dialog, IDCANCEL);
}
