#include "host/HostWindow.h"
#include <cstdio>
#include "host/BitmapFile.h"
#include "host/Exposure.h"

namespace {
constexpr UINT kExposeTimer = 1;
constexpr UINT kCmdStart = 100, kCmdStop = 101, kCmdConfigure = 102, kCmdExit = 103;
constexpr int kToolStrip = 90;  // the host's tool strip at the right
constexpr int kStatusBar = 24;
}  // namespace

HostWindow::HostWindow(Plugin& plugin, const HostOptions& options)
    : m_plugin(plugin), m_options(options) {}

bool HostWindow::Create() {
    WNDCLASSA wc{};
    wc.lpfnWndProc = Proc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    wc.lpszClassName = "ZemblaxDemoHost";
    RegisterClassA(&wc);
    HMENU menu = CreateMenu();
    HMENU run = CreatePopupMenu();
    AppendMenuA(run, MF_STRING, kCmdStart, "Aufnahmeschema &starten\tF5");
    AppendMenuA(run, MF_STRING, kCmdStop, "Aufnahme a&bbrechen");
    AppendMenuA(run, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(run, MF_STRING, kCmdConfigure, "Aufnahmeschema &konfigurieren");
    AppendMenuA(run, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(run, MF_STRING, kCmdExit, "B&eenden");
    AppendMenuA(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(run), "&Aufnahme");
    m_hwnd = CreateWindowExA(0, wc.lpszClassName, "Zemblax Demo - R\xF6ntgenbefund",
                             WS_OVERLAPPEDWINDOW, 0, 0, 1024, 768, nullptr, menu, wc.hInstance,
                             this);
    if (!m_hwnd) return false;
    SetStatus(m_options.autoUser ? "Automatischer Benutzer" : "F5: Aufnahmeschema starten");
    ShowWindow(m_hwnd, SW_SHOW);
    UpdateWindow(m_hwnd);
    if (m_options.autoUser)
        PostMessageA(m_hwnd, WM_COMMAND, m_options.designName.empty() ? kCmdStart : kCmdConfigure, 0);
    return true;
}

LRESULT CALLBACK HostWindow::Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_NCCREATE) {
        auto* self = static_cast<HostWindow*>(reinterpret_cast<CREATESTRUCTA*>(lp)->lpCreateParams);
        self->m_hwnd = hwnd;
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<HostWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    return self ? self->Handle(msg, wp, lp) : DefWindowProcA(hwnd, msg, wp, lp);
}

LRESULT HostWindow::Handle(UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_COMMAND:
        switch (LOWORD(wp)) {
        case kCmdStart: StartAcquisition(); return 0;
        case kCmdConfigure: Configure(); return 0;
        case kCmdStop:
            KillTimer(m_hwnd, kExposeTimer);
            m_plugin.Stop();
            EndRun("Aufnahme abgebrochen");
            return 0;
        case kCmdExit: DestroyWindow(m_hwnd); return 0;
        }
        break;
    case WM_KEYDOWN:
        if (wp == VK_F5) StartAcquisition();
        return 0;
    case WM_TIMER:
        if (wp == kExposeTimer) {
            KillTimer(m_hwnd, kExposeTimer);
            Expose();
        }
        return 0;
    case WM_SIZE:
        InvalidateRect(m_hwnd, nullptr, TRUE);
        return 0;
    case WM_PAINT: {
        fw::PaintDC dc(m_hwnd);
        Paint(dc.get());
        return 0;
    }
    case WM_DESTROY:
        if (m_plugin.GetState() == ZEMBLAX_STATE_RUNNING) m_plugin.Stop();
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(m_hwnd, msg, wp, lp);
}

RECT HostWindow::ImageArea() const {
    RECT c;
    GetClientRect(m_hwnd, &c);
    return {8, 8, c.right - kToolStrip, c.bottom - kStatusBar};
}

void HostWindow::Paint(HDC dc) {
    RECT c;
    GetClientRect(m_hwnd, &c);
    RECT area = ImageArea();
    fw::UniqueBrush dark(CreateSolidBrush(RGB(30, 30, 38)));
    FillRect(dc, &area, dark.get());
    RECT strip{c.right - kToolStrip + 8, 8, c.right - 8, c.bottom - kStatusBar};
    fw::UniqueBrush tool(CreateSolidBrush(RGB(188, 184, 176)));
    FillRect(dc, &strip, tool.get());
    fw::UniqueDC memory(CreateCompatibleDC(dc));
    SetStretchBltMode(dc, HALFTONE);
    for (const Placed& p : m_images) {
        BITMAP bm{};
        GetObjectA(p.bitmap.get(), sizeof bm, &bm);
        fw::SelectObj sel(memory.get(), p.bitmap.get());
        StretchBlt(dc, area.left + p.rect.left, area.top + p.rect.top, p.rect.right - p.rect.left,
                   p.rect.bottom - p.rect.top, memory.get(), 0, 0, bm.bmWidth, bm.bmHeight,
                   SRCCOPY);
    }
    if (m_haveTake && !m_runEnded) {  // the frame of the take being exposed
        fw::UniquePen pen(CreatePen(PS_DOT, 1, RGB(255, 220, 0)));
        fw::SelectObj selPen(dc, pen.get());
        fw::SelectObj selBrush(dc, GetStockObject(NULL_BRUSH));
        Rectangle(dc, area.left + m_takeRect.left, area.top + m_takeRect.top,
                  area.left + m_takeRect.right, area.top + m_takeRect.bottom);
    }
    SetBkMode(dc, TRANSPARENT);
    TextOutA(dc, 10, c.bottom - kStatusBar + 4, m_status.c_str(), static_cast<int>(m_status.size()));
}

void HostWindow::SetStatus(const std::string& text) {
    m_status = text;
    InvalidateRect(m_hwnd, nullptr, FALSE);
}

void HostWindow::Configure() {
    if (m_plugin.GetState() == ZEMBLAX_STATE_RUNNING) return;
    SetStatus("Aufnahmeschema konfigurieren");
    const BOOL shown = m_plugin.Configure(m_hwnd);
    std::printf("designer closed%s\n", shown ? "" : " (settings could not be loaded)");
    SetStatus("F5: Aufnahmeschema starten");
    // The automatic user runs what it has just designed.
    if (m_options.autoUser) PostMessageA(m_hwnd, WM_COMMAND, kCmdStart, 0);
}

void HostWindow::StartAcquisition() {
    if (m_plugin.GetState() == ZEMBLAX_STATE_RUNNING) return;
    m_images.clear();
    m_haveTake = m_runEnded = false;
    m_deliveries = m_exposures = 0;
    InvalidateRect(m_hwnd, nullptr, TRUE);
    if (!m_plugin.Start(m_hwnd)) {
        EndRun("Kein Aufnahmeschema gestartet");
        return;
    }
    std::printf("run started\n");
    Deliver(nullptr, nullptr, FALSE);
}

// Hands the last exposure to the plug-in and takes the next take from it.
void HostWindow::Deliver(HGLOBAL header, HGLOBAL bits, bool stepBackAndAsk) {
    RECT area = ImageArea();
    char label[64] = {};
    int vertical = 0;
    RECT rect{};
    BOOL done = FALSE;
    int result = m_plugin.GetNext(m_hwnd, header, bits, &area, label, &vertical, &rect,
                                  stepBackAndAsk, &done);
    if (result == -1) {
        std::printf("plug-in ended the run%s\n", done ? " at the end of the template" : "");
        if (m_plugin.GetState() == ZEMBLAX_STATE_RUNNING) m_plugin.Stop();
        EndRun("Aufnahmeschema beendet");
        return;
    }
    ++m_deliveries;
    m_haveTake = true;
    m_takeRect = rect;
    m_takeLabel = label;
    m_takeVertical = vertical;
    std::printf("take %d: label %s, %s, rect (%ld,%ld,%ld,%ld)\n", result - 1, label,
                vertical ? "vertical" : "horizontal", rect.left, rect.top, rect.right, rect.bottom);
    std::fflush(stdout);
    SetStatus("Aufnahme " + std::to_string(result - 1) + ": Zahn " + m_takeLabel);
    SetTimer(m_hwnd, kExposeTimer, m_options.autoUser ? 100 : 700, nullptr);
}

void HostWindow::Expose() {
    if (!m_haveTake) return;
    Exposure e = MakeExposure(m_takeLabel, m_takeVertical != 0, ++m_exposures);
    Placed placed{m_takeRect, fw::UniqueBitmap(ExposureToBitmap(e))};
    // A repeated take replaces the image at its place.
    for (auto it = m_images.begin(); it != m_images.end();)
        it = EqualRect(&it->rect, &placed.rect) ? m_images.erase(it) : it + 1;
    m_images.push_back(std::move(placed));
    InvalidateRect(m_hwnd, nullptr, FALSE);
    UpdateWindow(m_hwnd);
    Deliver(e.header, e.bits, FALSE);
}

void HostWindow::EndRun(const char* why) {
    m_runEnded = true;
    SetStatus(why);
    InvalidateRect(m_hwnd, nullptr, TRUE);
    if (!m_options.autoUser) return;
    UpdateWindow(m_hwnd);
    if (!m_options.outFolder.empty()) {
        const std::string path = m_options.outFolder + "\\layout.bmp";
        std::printf("layout picture: %s%s\n", path.c_str(), SaveLayout(path) ? "" : " (not written)");
    }
    std::printf("run finished: %d takes delivered\n", m_deliveries);
    std::fflush(stdout);
    DestroyWindow(m_hwnd);
}

bool HostWindow::SaveLayout(const std::string& path) {
    RECT c;
    GetClientRect(m_hwnd, &c);
    fw::WindowDC screen(m_hwnd);
    fw::UniqueDC memory(CreateCompatibleDC(screen.get()));
    fw::UniqueBitmap picture(CreateCompatibleBitmap(screen.get(), c.right, c.bottom));
    {
        fw::SelectObj sel(memory.get(), picture.get());
        FillRect(memory.get(), &c, reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1));
        Paint(memory.get());
    }
    return WriteBitmapFile(picture.get(), path);
}
