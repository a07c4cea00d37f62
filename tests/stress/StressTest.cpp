// Feeds the module hostile input from outside, as a careless or broken host
// would: hostile exposures through the validation and through GetNext, the
// BMP suite as exposures and as thumbnails, host calls in random order with
// invalid windows, and a soak of whole runs. Every call must return, free the
// host's blocks once, and leave GDI objects and heap blocks where they were.
// Every choice comes from one seed, printed first, so that a failure replays
// with --seed=N (and the same --rounds=M).
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <ole2.h>
#include <algorithm>
#include <climits>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include "GuardedBlock.h"
#include "../dll/RunSupport.h"
#include "dib/DibValidation.h"

namespace {

struct {
    unsigned long long seed = 20240611;
    int rounds = 150;
    std::string bmpsuite;  // Windows path with a trailing backslash
} g_options;
char g_context[256] = "start-up";  // what the run is doing, for a crash or hang
std::mutex g_mutex;                // the context and the watched blocks

void SetContext(const std::string& what) {
    std::lock_guard<std::mutex> lock(g_mutex);
    std::snprintf(g_context, sizeof g_context, "%s", what.c_str());
}

// A seed for one part of the run, derived from the run's seed.
unsigned long long SubSeed(const std::string& part, int round = 0) {
    unsigned long long h = g_options.seed * 0x9E3779B97F4A7C15ull + static_cast<unsigned>(round);
    for (unsigned char c : part) h = (h ^ c) * 0x100000001B3ull;
    return h;
}

// Ends the process at once, saying what went wrong, when, and how to replay it.
void Fail(const char* kind, const char* detail, UINT code) {
    std::fprintf(stderr, "%s: %s during %s\nreplay: --seed=%llu --rounds=%d\n", kind, detail,
                 g_context, g_options.seed, g_options.rounds);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), code);
}

bool IntoGuardPage(const EXCEPTION_RECORD& r) {
    return r.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && r.NumberParameters >= 2 &&
           GuardedBlock::IsGuardPage(r.ExceptionInformation[1]);
}

LONG WINAPI ReportCrash(EXCEPTION_POINTERS* info) {
    char text[128];
    std::snprintf(text, sizeof text, "exception 0x%08lX at %p%s", info->ExceptionRecord->ExceptionCode,
                  info->ExceptionRecord->ExceptionAddress,
                  IntoGuardPage(*info->ExceptionRecord) ? " (a read past a host's block)" : "");
    Fail("CRASH", text, 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

// --- The module's global blocks ------------------------------------------------
// Its imports of GlobalLock, GlobalUnlock, GlobalSize and GlobalFree point
// here. A guarded block shows the module its bytes right before an
// inaccessible page; a freed watched handle stays alive until Release, so that
// a second free or a later lock is seen and not passed on.

struct Watched {
    std::unique_ptr<GuardedBlock> guarded;  // null for a plain block
    int frees = 0;
};
std::map<HGLOBAL, Watched> g_watched;
int g_useAfterFree = 0;

// The entry of a watched handle, or null, under the lock.
struct Lookup {
    explicit Lookup(HGLOBAL h) : w(g_watched.count(h) ? &g_watched[h] : nullptr) {}
    std::lock_guard<std::mutex> lock{g_mutex};
    Watched* w;
};

HGLOBAL WINAPI HookFree(HGLOBAL h) {
    Lookup l(h);
    return l.w ? (++l.w->frees, nullptr) : GlobalFree(h);
}

LPVOID WINAPI HookLock(HGLOBAL h) {
    Lookup l(h);
    if (l.w && l.w->frees) return ++g_useAfterFree, nullptr;
    return l.w && l.w->guarded ? l.w->guarded->data() : GlobalLock(h);
}

BOOL WINAPI HookUnlock(HGLOBAL h) {
    Lookup l(h);
    return l.w && l.w->guarded ? (SetLastError(NO_ERROR), FALSE) : GlobalUnlock(h);
}

SIZE_T WINAPI HookSize(HGLOBAL h) {
    Lookup l(h);
    return l.w && l.w->guarded ? (l.w->frees ? 0 : l.w->guarded->size()) : GlobalSize(h);
}

bool InstallWatch(HMODULE m) {
    using testing_support::PatchImport;
    static const bool ok = m && PatchImport(m, "kernel32.dll", "GlobalFree", (void*)&HookFree) &&
                           PatchImport(m, "kernel32.dll", "GlobalLock", (void*)&HookLock) &&
                           PatchImport(m, "kernel32.dll", "GlobalUnlock", (void*)&HookUnlock) &&
                           PatchImport(m, "kernel32.dll", "GlobalSize", (void*)&HookSize);
    return ok;
}

HGLOBAL Make(const std::string& bytes, bool guarded) {
    HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, guarded ? 1 : bytes.size());
    if (!guarded && !bytes.empty()) {
        std::memcpy(GlobalLock(h), bytes.data(), bytes.size());
        GlobalUnlock(h);
    }
    std::lock_guard<std::mutex> lock(g_mutex);
    g_watched[h] = Watched{guarded ? std::make_unique<GuardedBlock>(bytes) : nullptr, 0};
    return h;
}

// How often the module freed the handle (0 for none); frees what it holds.
int Release(HGLOBAL h) {
    if (!h) return 0;
    Lookup l(h);
    const int frees = l.w ? l.w->frees : -1;
    g_watched.erase(h);
    GlobalFree(h);
    return frees;
}

// --- Bitmaps -------------------------------------------------------------------

struct Dib {
    std::string header;  // header, masks and colour table: the first block
    std::string bits;    // pixel rows or RLE stream: the second block
};

// Headers of every kind with random fields; tables and pixels too short, too
// long or right; RLE streams that end early; plain noise.
Dib HostileDib(std::mt19937_64& rng) {
    auto below = [&](unsigned long long n) { return n ? static_cast<unsigned>(rng() % n) : 0u; };
    auto chance = [&](unsigned percent) { return below(100) < percent; };
    auto any = [&] { return static_cast<DWORD>(rng()); };
    auto noise = [&](size_t n) {
        std::string s;
        while (s.size() < n) s += static_cast<char>(rng());
        return s;
    };
    auto cut = [&](const std::string& s) { return s.substr(0, below(s.size() + 1)); };
    Dib d;
    if (chance(4)) return {noise(below(1200)), noise(below(5000))};
    static const WORD kBitCounts[] = {1, 4, 8, 16, 24, 32};
    WORD bits = kBitCounts[below(6)];
    if (chance(5)) bits = static_cast<WORD>(chance(50) ? below(70) : any());
    DWORD compression = BI_RGB;
    if ((bits == 8 || bits == 4) && chance(30)) compression = bits == 8 ? BI_RLE8 : BI_RLE4;
    if ((bits == 16 || bits == 32) && chance(25)) compression = BI_BITFIELDS;
    if (chance(5)) compression = chance(50) ? below(8) : any();
    const bool rle = compression == BI_RLE4 || compression == BI_RLE8;
    LONG width = 1 + below(200), height = 1 + below(150);
    if (chance(25) && !rle) height = -height;
    if (chance(8)) {
        static const LONG kOdd[] = {0, -1, -200, 65535, 65536, 0x7FFFFFFF, 0x40000000, LONG_MIN};
        (chance(50) ? width : height) = chance(70) ? kOdd[below(8)] : static_cast<LONG>(any());
    }
    const WORD planes = chance(95) ? 1 : static_cast<WORD>(below(4));
    static const DWORD kUsed[] = {1, 2, 16, 255, 256, 257, 1000, 0xFFFFFFFF};
    const DWORD clrUsed = !chance(15) ? 0 : chance(80) ? kUsed[below(8)] : any();
    const unsigned long long absHeight = height < 0 ? 0ull - (unsigned long long)(long long)height
                                                    : (unsigned long long)height;
    const unsigned long long pixelBytes = (bits * 1ull * DWORD(width) + 31) / 32 * 4 * absHeight;
    const bool sane = width > 0 && width <= 4096 && absHeight > 0 && absHeight <= 4096 &&
                      bits <= 32 && pixelBytes <= (4u << 20);
    // Pixels first, as an RLE header names the stream's length: rows of runs,
    // literals padded to a word and deltas, usually closed by the end mark.
    if (rle && sane) {
        for (unsigned y = 0, rows = below(absHeight + 2); y < rows; ++y, d.bits += std::string(2, '\0'))
            for (LONG x = 0; x < width;) {
                const unsigned kind = below(6), n = kind ? 1 + below(255) : 3 + below(40);
                if (kind == 0) {
                    const size_t bytes = compression == BI_RLE4 ? (n + 1) / 2 : n;
                    d.bits += std::string(1, '\0') + char(n) + noise(bytes + (bytes & 1));
                } else if (kind == 1 && chance(30)) {
                    d.bits += std::string("\0\2", 2) + char(below(8)) + char(below(2));
                } else if (kind > 1) {
                    d.bits += std::string(1, char(n)) + char(rng());
                }
                x += kind == 1 ? 4 : n;
            }
        if (chance(80)) d.bits += std::string("\0\1", 2);
    } else {
        d.bits = noise(sane && !rle ? pixelBytes : below(rle ? 3000 : 5000));
    }
    DWORD sizeImage = 0;
    if (rle || chance(30)) {
        sizeImage = static_cast<DWORD>(d.bits.size());
        if (chance(15)) sizeImage = chance(50) ? sizeImage + below(64) - 32 : any();
    }
    switch (below(10)) {  // the pixel block's own length
    case 0: d.bits = cut(d.bits); break;
    case 1: d.bits += noise(below(100)); break;
    case 2: if (!d.bits.empty()) d.bits.pop_back(); break;
    }
    const unsigned headerKind = below(100);
    const bool core = headerKind < 15;
    if (core) {
        d.header = Bytes(BITMAPCOREHEADER{sizeof(BITMAPCOREHEADER), WORD(width), WORD(absHeight),
                                          planes, bits});
    } else {
        const DWORD size = headerKind >= 97 ? below(200) : headerKind >= 88 ? sizeof(BITMAPV5HEADER)
                           : headerKind >= 80 ? sizeof(BITMAPV4HEADER) : sizeof(BITMAPINFOHEADER);
        BITMAPV5HEADER v{size, width, height, planes, bits, compression, sizeImage, 0, 0, clrUsed, 0,
                         0xF800, 0x07E0, 0x001F};
        const bool profile = size >= sizeof v && chance(30), embedded = profile && chance(50);
        if (profile) {
            v.bV5CSType = embedded ? 0x4D424544 : 0x4C494E4B;  // 'MBED' or 'LINK'
            v.bV5ProfileData = chance(50) ? size : any();
            v.bV5ProfileSize = below(64);
        }
        d.header = Bytes(v).substr(0, size) + noise(size > sizeof v ? size - sizeof v : 0);
        if (compression == BI_BITFIELDS && size == sizeof(BITMAPINFOHEADER) && chance(85))
            d.header += Bytes(v.bV5RedMask) + Bytes(v.bV5GreenMask) + Bytes(v.bV5BlueMask);
        if (embedded && v.bV5ProfileData == size) d.header += noise(v.bV5ProfileSize);
    }
    unsigned long long colors = clrUsed ? clrUsed : (bits <= 8 ? 1ull << bits : 0);
    if (colors > 4096) colors = below(300);
    if (chance(20)) colors = below(colors + 10);
    d.header += noise(static_cast<size_t>(colors) * (core ? 3 : 4));
    if (chance(10)) d.header = cut(d.header);
    if (chance(3) && !d.header.empty()) d.header[below(d.header.size())] ^= 1 << below(8);
    return d;
}

Dib GreyDib(int width, int height) {
    Dib d{Bytes(BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), width, height, 1, 8, BI_RGB}), {}};
    for (int i = 0; i < 256; ++i) d.header += Bytes(RGBQUAD{BYTE(i), BYTE(i), BYTE(i), 0});
    for (int i = 0; i < ((width + 3) & ~3) * height; ++i) d.bits += char(i % 251);
    return d;
}

Dib BmpFileDib(const std::string& file) {
    const std::string all = testing_support::ReadText(file);
    BITMAPFILEHEADER fh{};
    std::memcpy(&fh, all.data(), std::min(all.size(), sizeof fh));
    const size_t start = std::min(all.size(), sizeof fh);
    const size_t off = fh.bfOffBits < start || fh.bfOffBits > all.size() ? all.size() : fh.bfOffBits;
    return {all.substr(start, off - start), all.substr(off)};
}

std::string Describe(const Dib& d) {
    BITMAPINFOHEADER h{};
    std::memcpy(&h, d.header.data(), std::min(d.header.size(), sizeof h));
    char text[160];
    std::snprintf(text, sizeof text, "blocks of %zu and %zu bytes, biSize %lu, %ld x %ld, %u bits, "
                  "compression %lu, biSizeImage %lu, biClrUsed %lu", d.header.size(), d.bits.size(),
                  h.biSize, h.biWidth, h.biHeight, h.biBitCount, h.biCompression, h.biSizeImage,
                  h.biClrUsed);
    return text;
}

// --- The user --------------------------------------------------------------------

// Dialogs not answered yet, and those still open 5 s after their answer (a
// click that did not close them).
BOOL CALLBACK Unanswered(HWND h, LPARAM lp) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    const auto answered = reinterpret_cast<ULONG_PTR>(GetPropA(h, "StressAnswered"));
    if (std::strcmp(cls, "#32770") == 0 && IsWindowVisible(h) &&
        (!answered || GetTickCount() - static_cast<DWORD>(answered) > 5000))
        reinterpret_cast<std::vector<HWND>*>(lp)->push_back(h);
    return TRUE;
}

// Answers every dialog of the UI thread while it lives, with a random but
// replayable choice among what a person could do; with `timerCloses` a take
// dialog is sometimes left to its timer. A call that takes a minute is a hang.
class User {
public:
    User(const std::string& what, unsigned long long seed, bool timerCloses = false)
        : m_rng(seed), m_timerCloses(timerCloses) {
        SetContext(what);
        m_thread = std::thread([this] {
            for (const DWORD start = GetTickCount(); !m_stop; Sleep(10)) {
                std::vector<HWND> dialogs;
                EnumThreadWindows(m_uiThread, Unanswered, reinterpret_cast<LPARAM>(&dialogs));
                for (HWND d : dialogs) {
                    SetPropA(d, "StressAnswered", HANDLE(ULONG_PTR(GetTickCount() | 1)));
                    Answer(d);
                }
                if (GetTickCount() - start > 60000) Fail("HANG", "a call did not return within 60 s", 4);
            }
        });
    }
    ~User() {
        m_stop = true;
        m_thread.join();
    }
    std::atomic<int> painted{0};  // take dialogs painted before they were answered

private:
    unsigned Below(unsigned n) { return static_cast<unsigned>(m_rng() % n); }
    void Answer(HWND dialog) {
        Sleep(20);  // let the dialog finish its initialisation
        if (HWND picture = GetDlgItem(dialog, IDC_TAKE_PICTURE)) {
            // Painting is where the exposure is read: it must happen before anyone goes on.
            for (int i = 0; i < 200 && IsWindow(dialog); ++i, Sleep(5))
                if (!GetUpdateRect(dialog, nullptr, FALSE) && !GetUpdateRect(picture, nullptr, FALSE)) {
                    ++painted;
                    break;
                }
            const unsigned r = Below(100);
            if (r < 89)
                DialogDriver::Click(dialog, r < 70 ? IDOK : r < 78 ? IDC_BACK : r < 86 ? IDC_TAKE_SKIP
                                                                                     : IDC_TAKE_QUIT);
            else if (r < 94 || !m_timerCloses)
                DialogDriver::PressEscape(dialog);
            else if (!DialogDriver::WaitGone(dialog, 3000))  // the timer ends it, unless it is off
                DialogDriver::Click(dialog, IDOK);
        } else if (GetDlgItem(dialog, IDC_FINISH_ACCEPT)) {
            static const int kButtons[] = {IDC_FINISH_NEXT, IDC_FINISH_NEXT, IDC_BACK,
                                           IDC_FINISH_SKIP, IDC_FINISH_ACCEPT, IDC_FINISH_QUIT};
            for (int attempt = 0; attempt < 8; ++attempt)
                if (DialogDriver::Click(dialog, kButtons[Below(6)])) return;
            DialogDriver::PressEscape(dialog);
        } else if (HWND list = GetDlgItem(dialog, IDC_SELECTION_LIST)) {
            const int count = static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0));
            if (count > 0 && Below(10) != 0) {
                LVITEMA item{};
                item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
                SendMessageA(list, LVM_SETITEMSTATE, Below(count), reinterpret_cast<LPARAM>(&item));
                if (DialogDriver::Click(dialog, IDOK)) return;
            }
            DialogDriver::Click(dialog, IDCANCEL);
        } else {  // the designer is finished; a message box or the save-as dialog saves nothing
            const bool designer = GetDlgItem(dialog, IDC_TOOTH_CHART) != nullptr;
            for (int id : {IDNO, IDOK, IDCANCEL, IDYES})
                if (GetDlgItem(dialog, id)) {
                    PostMessageA(dialog, WM_COMMAND, designer ? IDCANCEL : id, 0);
                    break;
                }
        }
    }
    DWORD m_uiThread = GetCurrentThreadId();
    std::mt19937_64 m_rng;
    bool m_timerCloses;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

// --- The rounds ------------------------------------------------------------------

// Growth allowed over a whole section: caches of the system settle, a leak
// per round does not.
struct Flat {
    int gdi = testing_support::GdiObjectCount(), heap = testing_support::HeapBlockCount();
    void Check(const char* what) const {
        EXPECT_LE(testing_support::GdiObjectCount(), gdi + 4) << what << ": GDI objects";
        EXPECT_LE(testing_support::HeapBlockCount(), heap + 32) << what << ": heap blocks";
    }
};

std::vector<TakeSpec> Takes(int n) {
    static const char* kTeeth[] = {"18,17,16", "11,21", "36,37", "46", "24,25", "31,41", "14"};
    std::vector<TakeSpec> takes;
    for (int i = 0; i < n; ++i)
        takes.push_back({kTeeth[i % 7], 1, i % 2, 80 + (i * 97) % 700, 60 + (i * 53) % 600});
    return takes;
}

int GetNext(HWND host, HGLOBAL header, HGLOBAL bits, bool ask = false, bool withDone = true) {
    char label[64] = "?";
    int orientation;
    RECT rect, hostRect{0, 0, 844, 698};
    BOOL done;
    return PluginHost::Get().GetNext(host, header, bits, &hostRect, label, &orientation, &rect, ask,
                                     withDone ? &done : nullptr);
}

// One GetNext with an exposure in two watched blocks; each must be freed once.
int Deliver(HWND host, const Dib& d, bool guarded, const std::string& what, unsigned long long seed) {
    HGLOBAL header = Make(d.header, guarded), bits = Make(d.bits, guarded);
    User user(what, seed, true);
    const int r = GetNext(host, header, bits);
    EXPECT_EQ(1, Release(header)) << what;
    EXPECT_EQ(1, Release(bits)) << what;
    return r;
}

// A GetNext without an exposure: the first take of a run, or the finish dialog.
int Ask(HWND host, const std::string& what, unsigned long long seed, bool finish = false) {
    User user(what, seed);
    return GetNext(host, nullptr, nullptr, finish);
}

bool StartRun(HWND host, const std::string& what, int round) {
    User user(what, SubSeed(what, round));
    return PluginHost::Get().Start(host) && PluginHost::Get().GetState() == 2;
}

// The first run and review cache fonts, DCs and dialog classes for good.
void WarmUp(HWND host, const std::string& what) {
    auto running = [] { return PluginHost::Get().GetState() == 2; };
    if (StartRun(host, what, 0)) Ask(host, what, SubSeed(what, 1));
    if (running()) Deliver(host, GreyDib(64, 48), false, what, SubSeed(what, 2));
    if (running()) Ask(host, what, SubSeed(what, 3), true);
    PluginHost::Get().Stop();
}

class Stress : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(p.loaded);
        ASSERT_TRUE(InstallWatch(p.module()));
        ResetModule();
    }
    void TearDown() override { ResetModule(); }
    // A catalog with these templates (a timeout of 0 lets the timer end each review).
    std::unique_ptr<Catalog> MakeCatalog(const char* timeout, std::vector<int> templates) {
        auto cat = std::make_unique<Catalog>();
        cat->Set("Application", "PreviewTimeout", timeout);
        for (size_t i = 0; i < templates.size(); ++i)
            cat->AddTemplate(int(i) + 1, "T" + std::to_string(i), Takes(templates[i]));
        p.Initialize(cat->base().c_str());
        return cat;
    }
    PluginHost& p = PluginHost::Get();
    HostWindow host;
};

// With few rounds a rotating share of the suite, with many all of it.
std::vector<std::string> SuiteSample() {
    std::vector<std::string> files;
    for (const char* sub : {"g\\", "q\\"})
        for (const std::string& name : testing_support::FilesIn(g_options.bmpsuite + sub, "*.bmp"))
            files.push_back(g_options.bmpsuite + sub + name);
    std::sort(files.begin(), files.end());
    std::mt19937_64 rng(SubSeed("suite"));
    std::shuffle(files.begin(), files.end(), rng);
    files.resize(std::min<size_t>(files.size(), g_options.rounds * 4u));
    return files;
}

TEST_F(Stress, ValidationNeverReadsPastGuardPagesAndWhatItAcceptsDraws) {
    std::mt19937_64 rng(SubSeed("validation"));
    fw::WindowDC screen(nullptr);
    fw::UniqueDC memory(CreateCompatibleDC(screen.get()));
    fw::UniqueBitmap target(CreateCompatibleBitmap(screen.get(), 64, 64));
    fw::SelectObj select(memory.get(), target.get());
    int accepted = 0;
    const int cases = g_options.rounds * 200;
    for (int i = 0; i < cases; ++i) {
        const Dib d = HostileDib(rng);
        SetContext("validation case " + std::to_string(i) + ": " + Describe(d));
        GuardedBlock header(d.header), bits(d.bits);
        DibGeometry g;
        if (!IsDrawablePackedDib(header.data(), header.size(), bits.data(), bits.size(), &g)) continue;
        ++accepted;  // and handed to GDI straight from the guarded memory
        StretchDIBits(memory.get(), 0, 0, 64, 64, 0, 0, g.width, g.height, bits.data(),
                      reinterpret_cast<const BITMAPINFO*>(header.data()), DIB_RGB_COLORS, SRCCOPY);
    }
    EXPECT_GT(accepted, cases / 10) << "the cases must not all be garbage";
    EXPECT_LT(accepted, cases * 9 / 10);
}

TEST_F(Stress, HostileExposuresAreFreedOnceAndNeverReadPastTheirBlocks) {
    auto cat = MakeCatalog("1", {12});
    std::mt19937_64 rng(SubSeed("getnext"));
    WarmUp(host.hwnd(), "getnext warm-up");
    const Flat before;
    const int rounds = g_options.rounds * 3;
    int painted = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string what = "getnext round " + std::to_string(round);
        if (p.GetState() != 2 && !StartRun(host.hwnd(), what, round)) continue;
        const Dib d = HostileDib(rng);
        // Even rounds read the blocks from guard pages, odd ones from real blocks.
        HGLOBAL header = Make(d.header, round % 2 == 0), bits = Make(d.bits, round % 2 == 0);
        const unsigned shape = rng() % 20;  // a block or the done flag missing, or a step back
        HGLOBAL passHeader = shape == 0 ? nullptr : header, passBits = shape == 1 ? nullptr : bits;
        User user(what + ": " + Describe(d), SubSeed("getnext user", round), true);
        const int result = GetNext(host.hwnd(), passHeader, passBits, shape == 2, shape != 3);
        painted += user.painted;
        EXPECT_TRUE(result == -1 || result >= 1) << what;
        EXPECT_EQ(passHeader ? 1 : 0, Release(header)) << what;
        EXPECT_EQ(passBits ? 1 : 0, Release(bits)) << what;
    }
    p.Stop();
    EXPECT_EQ(0, g_useAfterFree);
    EXPECT_GT(painted, 0);
    before.Check("getnext");
}

TEST_F(Stress, BmpSuiteFilesAsExposuresAndAsThumbnails) {
    const std::vector<std::string> files = SuiteSample();
    if (files.empty()) GTEST_SKIP() << "no BMP suite at " << g_options.bmpsuite;
    std::mt19937_64 rng(SubSeed("suite"));
    {
        auto cat = MakeCatalog("0", {30});
        WarmUp(host.hwnd(), "suite warm-up");
        const Flat before;
        int round = 0;
        for (const std::string& file : files)
            for (int variant = 0; variant < 3; ++variant, ++round) {  // whole, pixels or header cut
                Dib d = BmpFileDib(file);
                std::string& cut = variant == 1 ? d.bits : d.header;
                if (variant) cut.resize(rng() % (cut.size() + 1));
                const std::string what = file + " variant " + std::to_string(variant);
                if (p.GetState() == 2 || StartRun(host.hwnd(), what, round))
                    Deliver(host.hwnd(), d, true, what, SubSeed("suite user", round));
            }
        p.Stop();
        before.Check("suite exposures");
    }
    Catalog cat;
    cat.Set("SelectionDlg", "Mode", "1");
    int n = 0;
    for (const std::string& file : files) {
        const std::string bytes = testing_support::ReadText(file);
        // Each file whole and cut short, as a broken save would leave it.
        for (const std::string& content : {bytes, bytes.substr(0, rng() % (bytes.size() + 1))}) {
            const std::string name = "Template" + std::to_string(++n);
            cat.AddTemplate(n, name, Takes(1));
            testing_support::WriteText(cat.folder() + name + ".bmp", content);
        }
    }
    p.Initialize(cat.base().c_str());
    StartRun(host.hwnd(), "thumbnails warm-up", 0);
    p.Stop();
    const Flat before;
    for (int round = 1; round <= 3; ++round) {
        StartRun(host.hwnd(), "thumbnails", round);
        p.Stop();
    }
    before.Check("suite thumbnails");
}

TEST_F(Stress, RandomCallOrderWithInvalidWindows) {
    auto cat = MakeCatalog("0", {3, 1});
    p.Uninitialize();
    std::mt19937_64 rng(SubSeed("calls"));
    auto window = std::make_unique<HostWindow>();
    HWND destroyed = HostWindow().hwnd();
    bool initialised = false;
    for (int step = 0; step < g_options.rounds * 25; ++step) {
        const std::string what = "call step " + std::to_string(step);
        // The window the host passes: its own, one destroyed, none, or noise.
        const HWND windows[] = {window->hwnd(), destroyed, nullptr, HWND(ULONG_PTR(rng() >> 32))};
        const HWND w = windows[std::max(0, int(rng() % 6) - 2)];
        // A call on an invalid window or before Initialize fails with one beep.
        const bool refused = !IsWindow(w) || !initialised;
        auto expectRefused = [&](bool failed) {
            if (!refused) return;
            EXPECT_TRUE(failed) << what;
            EXPECT_EQ(std::vector<UINT>{MB_ICONHAND}, TakeBeeps()) << what;
        };
        TakeBeeps();
        User user(what, SubSeed("calls user", step));
        switch (rng() % 10) {
        case 0: {
            UINT version = 0, asked = rng() % 3;
            EXPECT_EQ(asked == 1, p.CheckVersion(asked, &version) != FALSE) << what;
            EXPECT_EQ(1u, version) << what;
            break;
        }
        case 1: {
            const unsigned which = rng() % 4;
            const char* folders[] = {nullptr, "", "Z:\\no\\such\\folder", cat->base().c_str()};
            EXPECT_EQ(which >= 2, p.Initialize(folders[which]) != FALSE) << what;
            initialised = initialised || which >= 2;
            break;
        }
        case 2: expectRefused(!p.Start(w)); break;
        case 3: case 4: case 5: {
            const Dib d = rng() % 2 ? GreyDib(64, 48) : Dib{};
            HGLOBAL header = d.header.empty() ? nullptr : Make(d.header, false);
            HGLOBAL bits = d.bits.empty() ? nullptr : Make(d.bits, false);
            expectRefused(GetNext(w, header, bits, rng() % 4 == 0, rng() % 2) == -1);
            EXPECT_EQ(header ? 1 : 0, Release(header)) << what;
            EXPECT_EQ(bits ? 1 : 0, Release(bits)) << what;
            break;
        }
        case 6: p.Stop(); break;
        case 7: p.Uninitialize(); initialised = false; break;
        case 8: expectRefused(!p.Configure(w)); break;
        default:  // the host's window goes away, perhaps under a running preview
            destroyed = window->hwnd();
            window = std::make_unique<HostWindow>();
        }
        EXPECT_TRUE(p.GetState() == 2 || p.GetState() == 3) << what;
    }
    EXPECT_EQ(0, g_useAfterFree);
}

TEST_F(Stress, SoakOfWholeRuns) {
    auto cat = MakeCatalog("0", {3, 7});
    WarmUp(host.hwnd(), "soak warm-up");
    const Flat before;
    const int runs = g_options.rounds * 2;
    int started = 0;
    for (int run = 0; run < runs; ++run) {
        const std::string what = "soak run " + std::to_string(run);
        if (!StartRun(host.hwnd(), what, run)) continue;
        ++started;
        int r = Ask(host.hwnd(), what, SubSeed("soak first", run));
        for (int k = 0; r != -1 && k < 12; ++k)
            r = Deliver(host.hwnd(), GreyDib(100 + k, 80), false, what + " take " + std::to_string(k),
                        SubSeed("soak user", run * 16 + k));
        p.Stop();
    }
    EXPECT_GT(started, runs / 2);
    before.Check("soak");
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing_support::ParseArgs(argc, argv);
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i], value = a.substr(a.find('=') + 1);
        if (a.rfind("--seed=", 0) == 0) g_options.seed = std::strtoull(value.c_str(), nullptr, 10);
        if (a.rfind("--rounds=", 0) == 0) g_options.rounds = std::max(1, std::atoi(value.c_str()));
        if (a.rfind("--bmpsuite=", 0) == 0)
            g_options.bmpsuite = testing_support::WindowsPath(value);
    }
    std::printf("stress: --seed=%llu --rounds=%d replays this run\n", g_options.seed, g_options.rounds);
    std::fflush(stdout);
    SetUnhandledExceptionFilter(ReportCrash);
    // A touch of a guard page is reported at once, before a handler in the
    // system's own code (GDI's, say) could swallow the read past a block.
    AddVectoredExceptionHandler(0, [](EXCEPTION_POINTERS* info) -> LONG {
        if (IntoGuardPage(*info->ExceptionRecord)) ReportCrash(info);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    OleInitialize(nullptr);
    const int rc = RUN_ALL_TESTS();
    OleUninitialize();
    std::printf("stress: seed=%llu rounds=%d %s\n", g_options.seed, g_options.rounds,
                rc == 0 ? "passed" : "FAILED");
    return rc;
}
