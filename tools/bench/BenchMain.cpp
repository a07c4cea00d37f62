// zemblax-bench.exe: measures Zemblax.dll as a host drives it, through its
// exported functions and its dialogs, each figure against a floor measured
// in the same run, and prints one table.
//   zemblax-bench.exe <shipped Zemblax.ini> [--quick] [--only=selection|run|designer]
// --quick runs every figure once on small catalogs: a smoke run, no figures.
#include <windows.h>
#include <commctrl.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>
#include "BenchData.h"
#include "Floors.h"
#include "IdleDriver.h"
#include "Samples.h"
#include "fw/Handle.h"
#include "host/Exposure.h"
#include "host/PluginLibrary.h"
#include "res/resource.h"

namespace {

struct Bench {
    PluginLibrary dll;
    IdleDriver driver;
    BenchData data;
    Report report;
    bool quick = false;

    Bench(const std::string& settings, const std::string& root) : data(settings, root) {}
    int Repeats(int full) const { return quick ? 1 : full; }
    void Use(const std::string& base) {
        dll.Uninitialize();
        dll.Initialize(base.c_str());
    }
};

std::string ExeFolder() {
    char path[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string s(path);
    return s.substr(0, s.find_last_of('\\') + 1);
}

// Every queued step must have run when the exported call returns.
void Expect(const Bench& b, const char* what) {
    if (b.driver.Done()) return;
    std::printf("bench: %s: the expected dialog did not show\n", what);
    std::fflush(stdout);
    ::ExitProcess(3);
}

std::string Catalog(const std::string& base) { return base + "Template\\Zemblax.ini"; }

// ---- the selection dialog: growth with the catalog, both modes -------------

// Floor and figure take turns in every repeat, so that a change of load on
// the machine reaches both alike.
void SelectionFigures(Bench& b) {
    const std::vector<int> counts = b.quick ? std::vector<int>{0, 10} : std::vector<int>{0, 10, 50, 255};
    double thumbs[256] = {}, floorAt[256] = {};
    for (int n : counts) {
        const std::string base = b.data.Base("catalog" + std::to_string(n), n, 3, 3);
        const std::string catalog = Catalog(base);
        b.Use(base);
        Samples floor, shown[2];
        for (int i = 0; i < b.Repeats(n >= 255 ? 7 : 11); ++i) {
            floor.Add(floors::PlainDialog(
                b.driver, b.dll.module(), IDD_SELECTION, IDC_SELECTION_LIST, 1, [&](HWND) {
                    for (int k = 1; k <= n; ++k)
                        fw::UniqueBitmap(static_cast<HBITMAP>(::LoadImageA(
                            nullptr, BenchData::Thumbnail(base, k).c_str(), IMAGE_BITMAP, 0, 0,
                            LR_LOADFROMFILE)));
                }).Median());
            for (int mode = 0; mode < 2; ++mode) {
                ::WritePrivateProfileStringA("SelectionDlg", "Mode", mode ? "1" : "0", catalog.c_str());
                const double start = NowMs();
                b.driver.Then(IDC_SELECTION_LIST, [&](HWND dialog) {
                    shown[mode].Add(NowMs() - start);
                    IdleDriver::Click(dialog, IDCANCEL);
                });
                b.dll.Start(b.driver.host());
                Expect(b, "selection dialog");
            }
        }
        for (int mode = 0; mode < 2; ++mode)
            b.report.Row(std::string("Start to selection shown, ") + (mode ? "thumbnails, " : "names, ") +
                             std::to_string(n) + " templates",
                         shown[mode], "dialog + " + std::to_string(n) + " LoadImage", floor,
                         n == 255 ? 1.5 : 0);
        thumbs[n] = shown[1].Median();
        floorAt[n] = floor.Median();
    }
    if (b.quick) return;
    char floorGrowth[64];
    std::snprintf(floorGrowth, sizeof floorGrowth, "floor %.3f", (floorAt[50] - floorAt[0]) / 50);
    b.report.Note("growth per template, thumbnails, 0-50", (thumbs[50] - thumbs[0]) / 50, floorGrowth);
    std::snprintf(floorGrowth, sizeof floorGrowth, "floor %.3f", (floorAt[255] - floorAt[50]) / 205);
    b.report.Note("growth per template, thumbnails, 50-255", (thumbs[255] - thumbs[50]) / 205,
                  floorGrowth);
}

// ---- a run: the preview, GetNext and the take dialog ------------------------

BOOL CALLBACK FindPreview(HWND window, LPARAM found) {
    if (::IsWindowVisible(window) && ::GetDlgItem(window, IDC_PREVIEW_CANVAS)) {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

// Starts a run of the catalog's entry `index`; the preview window or null.
HWND StartRun(Bench& b, int index) {
    b.driver.Then(IDC_SELECTION_LIST, [index](HWND dialog) {
        IdleDriver::SelectItem(::GetDlgItem(dialog, IDC_SELECTION_LIST), index);
        IdleDriver::Click(dialog, IDOK);
    });
    if (!b.dll.Start(b.driver.host())) return nullptr;
    Expect(b, "run start");
    HWND preview = nullptr;
    ::EnumThreadWindows(::GetCurrentThreadId(), FindPreview, reinterpret_cast<LPARAM>(&preview));
    return preview;
}

// A repaint up to the screen.
void Redraw(HWND window) {
    ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    floors::Settle();
}

// A repaint figure against a blit of the window's size into the window,
// sample by sample in turn: a change of load, or of how the display takes
// the pixels, reaches both.
template <typename F>
void RepaintRow(Bench& b, const std::string& figure, HWND window, int repeats, F repaint,
                double target = 0) {
    RECT r;
    ::GetClientRect(window, &r);
    Samples figures, blits;
    for (int i = 0; i < repeats; ++i) {
        figures.Add(Samples::Time(1, [&](int) { repaint(i); }).Median());
        blits.Add(floors::Blit(window, r.right, r.bottom, 1).Median());
    }
    b.report.Row(figure, figures, "BitBlt of its size", blits, target);
}

// The repaint cycle of the window system alone, for the figures whose floor
// is a blit.
void NoteBareRepaint(Bench& b, HWND window) {
    RECT r;
    ::GetClientRect(window, &r);
    const Samples bare = floors::BareRepaint(r.right, r.bottom, b.Repeats(200));
    b.report.Note("a window whose paint only blits, " + std::to_string(r.right) + " x " +
                      std::to_string(r.bottom) + ", repainted",
                  bare.Median(), "what the window system costs alone");
}

void RunFigures(Bench& b) {
    const std::string base = b.data.Base("run", 2, 32, 18);
    b.Use(base);
    const int repeats = b.Repeats(200);
    if (HWND preview = StartRun(b, 0)) {
        // The canvas fills the preview's client area: the pixels are its own.
        HWND canvas = ::GetDlgItem(preview, IDC_PREVIEW_CANVAS);
        RepaintRow(b, "preview repaint, 18 takes", canvas, repeats, [&](int) { Redraw(preview); },
                   3.0);
        NoteBareRepaint(b, canvas);
    }
    b.dll.Stop();
    if (!StartRun(b, 1)) return;
    const RECT host{0, 0, 1024, 768};
    char label[16];
    int orientation = 0;
    RECT take{};
    BOOL done = FALSE;
    const int steps = b.Repeats(12);
    b.report.Row("GetNext without an exposure (its own work)", Samples::Time(steps, [&](int) {
                     b.dll.GetNext(b.driver.host(), nullptr, nullptr, &host, label, &orientation,
                                   &take, FALSE, &done);
                 }),
                 "an empty exported call (GetState)",
                 Samples::Time(steps, [&](int) { b.dll.GetState(); }));
    // The floor: the same dialog showing the same picture, stretched by GDI.
    const Exposure e = MakeExposure("1", false, 0);
    fw::UniqueGlobal header(e.header), bits(e.bits);
    fw::UniqueBitmap picture;
    auto showPicture = [&](HWND dialog) {
        HWND control = ::GetDlgItem(dialog, IDC_TAKE_PICTURE);
        RECT r;
        ::GetClientRect(control, &r);
        fw::GlobalLock<BITMAPINFO> info(header.get());
        fw::GlobalLock<BYTE> pixels(bits.get());
        fw::WindowDC screen(nullptr);
        fw::UniqueDC memory(::CreateCompatibleDC(screen.get()));
        picture.reset(::CreateCompatibleBitmap(screen.get(), r.right, r.bottom));
        {
            fw::SelectObj select(memory.get(), picture.get());
            ::SetStretchBltMode(memory.get(), COLORONCOLOR);
            ::StretchDIBits(memory.get(), 0, 0, r.right, r.bottom, 0, 0,
                            info.get()->bmiHeader.biWidth, std::abs(info.get()->bmiHeader.biHeight),
                            pixels.get(), info.get(), DIB_RGB_COLORS, SRCCOPY);
        }
        ::SetWindowLongA(control, GWL_STYLE,
                         (::GetWindowLongA(control, GWL_STYLE) & ~SS_TYPEMASK) | SS_BITMAP);
        ::SendMessageA(control, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(picture.get()));
    };
    Samples toPicture, plain;
    for (int i = 0; i < steps; ++i) {
        plain.Add(floors::PlainDialog(b.driver, b.dll.module(), IDD_TAKE, IDC_TAKE_PICTURE, 1,
                                      showPicture, true)
                      .Median());
        const Exposure next = MakeExposure(std::to_string(i + 2), i % 2, i);
        const double start = NowMs();
        b.driver.ThenPainted(IDC_TAKE_PICTURE, [&](HWND dialog) {
            toPicture.Add(NowMs() - start);
            IdleDriver::Click(dialog, IDOK);
        });
        b.dll.GetNext(b.driver.host(), next.header, next.bits, &host, label, &orientation, &take,
                      FALSE, &done);
        Expect(b, "take dialog");
    }
    b.dll.Stop();
    b.report.Row("GetNext with an exposure to the take dialog shown", toPicture,
                 "the same dialog, picture stretched by GDI", plain, 1.1);
}

// ---- the designer ----------------------------------------------------------

struct DesignerSession {
    Bench& b;
    std::string base;
    Samples ready, ready18, open32, save32;
    bool measureInside = false;
};

void MeasureOpenDesigner(DesignerSession& s, HWND dialog) {
    Bench& b = s.b;
    const int repeats = b.Repeats(200);
    HWND chart = ::GetDlgItem(dialog, IDC_TOOTH_CHART);
    RECT c;
    ::GetClientRect(chart, &c);
    // Two upper molars far enough apart for the highlight to move.
    const POINT points[2] = {{c.right * 3 / 10, c.bottom / 4}, {c.right * 7 / 10, c.bottom / 4}};
    const auto hover = [&](int i) {
        ::SendMessageA(chart, WM_MOUSEMOVE, 0, MAKELPARAM(points[i % 2].x, points[i % 2].y));
        floors::Settle();
    };
    RepaintRow(b, "chart hover repaint " + std::to_string(c.right) + " x " + std::to_string(c.bottom),
               chart, repeats, hover, 5.0);
    NoteBareRepaint(b, chart);
    HWND palette = ::GetDlgItem(dialog, IDC_TAKE_LIST);
    RECT item{LVIR_BOUNDS};
    ::SendMessageA(palette, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&item));
    ::SendMessageA(palette, WM_LBUTTONDOWN, MK_LBUTTON,
                   MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2));
    RepaintRow(b, "drag-move repaint over the chart", chart, repeats, [&](int i) {
        ::SendMessageA(chart, WM_MOUSEMOVE, MK_LBUTTON,
                       MAKELPARAM(points[i % 2].x, points[i % 2].y + c.bottom / 2));
        floors::Settle();
    });
    ::SendMessageA(chart, WM_LBUTTONUP, 0, MAKELPARAM(-40, -40));  // dropped nowhere
    HWND layout = ::GetDlgItem(dialog, IDC_LAYOUT_CANVAS);
    RepaintRow(b, "canvas repaint, 18 takes", layout, repeats, [&](int) { Redraw(layout); });
}

void MeasureSave(DesignerSession& s, HWND dialog) {
    const std::string folder = s.base + "Template\\";
    const std::vector<std::string> files = {folder + "Template2.ini", folder + "Template2.bmp",
                                            folder + "Zemblax.ini"};
    Samples plainIo;
    for (int i = 0; i < s.b.Repeats(21); ++i) {  // floor and figure take turns
        s.save32.Add(Samples::Time(1, [&](int) {
                         ::SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDC_SAVE, BN_CLICKED),
                                        reinterpret_cast<LPARAM>(::GetDlgItem(dialog, IDC_SAVE)));
                     }).Median());
        plainIo.Add(floors::WriteFiles(files, s.b.data.Thumbnail(s.base, 0) + ".scratch", 1).Median());
    }
    s.b.report.Row("designer Save, 32 takes (thumbnail and files)", s.save32,
                   "writing the same bytes (take file, thumbnail, catalog)", plainIo, 3.0);
    s.b.report.Row("designer Open, 32 takes (from OK to ready)", s.open32,
                   "reading the same bytes (take file, catalog)",
                   floors::ReadFiles({folder + "Template2.ini", folder + "Zemblax.ini"}, 15));
}

// One session: Configure, Open the 18-take template, optionally the figures
// inside, Open the 32-take template and save it, Beenden.
void DesignerRound(DesignerSession& s, bool inside) {
    IdleDriver& d = s.b.driver;
    double start = NowMs(), configured = 0, opened = 0;
    d.Then(IDC_TOOTH_CHART, [&](HWND dialog) {
        configured = NowMs() - start;
        s.ready.Add(configured);
        IdleDriver::Click(dialog, IDC_OPEN);
    });
    d.Then(IDC_SELECTION_LIST, [&](HWND dialog) {
        opened = NowMs();
        IdleDriver::Click(dialog, IDOK);
    });
    d.Then(IDC_TOOTH_CHART, [&, inside](HWND dialog) {
        // The designer's own part of Open: from the selection dialog gone
        // (its closing is the window system's, the same for any template).
        s.ready18.Add(configured + NowMs() - std::max(opened, d.LastClosed()));
        if (!inside) return IdleDriver::Click(dialog, IDCANCEL);
        MeasureOpenDesigner(s, dialog);
        IdleDriver::Click(dialog, IDC_OPEN);
        d.Then(IDC_SELECTION_LIST, [&](HWND selection) {
            IdleDriver::SelectItem(::GetDlgItem(selection, IDC_SELECTION_LIST), 1);
            opened = NowMs();
            IdleDriver::Click(selection, IDOK);
        });
        d.Then(IDC_TOOTH_CHART, [&](HWND designer) {
            s.open32.Add(NowMs() - opened);
            MeasureSave(s, designer);
            IdleDriver::Click(designer, IDCANCEL);
        });
    });
    s.b.dll.Configure(d.host());
    Expect(s.b, "designer");
}

void DesignerFigures(Bench& b) {
    DesignerSession s{b, b.data.Base("designer", 2, 32, 18)};
    b.Use(s.base);
    Samples plain;
    for (int i = 0; i < b.Repeats(11); ++i) {  // floor and figure take turns
        plain.Add(floors::PlainDialog(b.driver, b.dll.module(), IDD_CONFIGURE, IDC_TOOTH_CHART, 1)
                      .Median());
        DesignerRound(s, i == 0);
    }
    b.report.Row("Configure to the designer ready, empty template", s.ready,
                 "the same dialog with a plain procedure", plain);
    b.report.Row("designer ready with an 18-take template (Configure, then Open from the "
                 "selection dialog gone)",
                 s.ready18,
                 "the same dialog with a plain procedure", plain, 2.0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::printf("usage: zemblax-bench.exe <Zemblax.ini> [--quick]\n");
        return 2;
    }
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES};
    ::InitCommonControlsEx(&icc);
    Bench b(argv[1], ExeFolder() + "bench-data\\");
    std::string only;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) b.quick = true;
        if (std::strncmp(argv[i], "--only=", 7) == 0) only = argv[i] + 7;
    }
    UINT version = 0;
    if (!b.dll.Load((ExeFolder() + "Zemblax.dll").c_str()) || !b.dll.CheckVersion(1, &version)) {
        std::printf("bench: Zemblax.dll not loaded\n");
        return 1;
    }
    IdleDriver::Watchdog(b.quick ? 60 : 300);
    std::printf("bench: %s\n", b.quick ? "smoke run, one repeat each" : "measuring");
    if (only.empty() || only == "selection") SelectionFigures(b);
    if (only.empty() || only == "run") RunFigures(b);
    if (only.empty() || only == "designer") DesignerFigures(b);
    b.report.Print();
    return 0;
}
