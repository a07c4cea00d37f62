// DIB utilities against files no one here wrote (the BMP suite, ImageMagick),
// hostile headers, and the thumbnails we write ourselves.
#include <gtest/gtest.h>
#include <cstdio>
#include <cstring>
#include <map>
#include "TestSupport.h"
#include "dib/Dib.h"
#include "fw/Handle.h"

namespace {

using namespace testing_support;

struct Image {
    int w = 0, h = 0;
    std::vector<DWORD> px;  // 0x00RRGGBB, top row first
};

// Binary PPM (P6) as ImageMagick writes it.
bool ReadPpm(const std::string& path, Image& img) {
    std::string data = ReadText(path);
    int maxval = 0, consumed = 0;
    if (std::sscanf(data.c_str(), "P6 %d %d %d%n", &img.w, &img.h, &maxval, &consumed) != 3 ||
        maxval != 255)
        return false;
    const size_t start = consumed + 1;
    if (data.size() < start + static_cast<size_t>(img.w) * img.h * 3) return false;
    img.px.resize(static_cast<size_t>(img.w) * img.h);
    for (size_t i = 0; i < img.px.size(); ++i) {
        auto* p = reinterpret_cast<const unsigned char*>(data.data() + start + i * 3);
        img.px[i] = (p[0] << 16) | (p[1] << 8) | p[2];
    }
    return true;
}

// Reads a BMP with our reader and turns it into pixels through a screen bitmap.
bool ReadThroughBitmap(const std::string& path, Image& img) {
    fw::UniqueGlobal dib(ReadDibFile(path));
    if (!dib) return false;
    fw::UniqueBitmap bmp(DibToBitmap(dib.get(), nullptr));
    if (!bmp) return false;
    img.px = BitmapPixels(bmp.get(), &img.w, &img.h);
    return true;
}

int MaxDifference(const Image& a, const Image& b) {
    if (a.w != b.w || a.h != b.h) return 256;
    int worst = 0;
    for (size_t i = 0; i < a.px.size(); ++i)
        for (int shift : {0, 8, 16}) {
            int d = static_cast<int>((a.px[i] >> shift) & 0xFF) - static_cast<int>((b.px[i] >> shift) & 0xFF);
            worst = std::max(worst, d < 0 ? -d : d);
        }
    return worst;
}

struct Header {
    DWORD size;
    WORD bits;
    DWORD compression;
};
Header PeekHeader(const std::string& path) {
    std::string d = ReadText(path);
    Header h{};
    if (d.size() < 34) return h;
    std::memcpy(&h.size, d.data() + 14, 4);
    if (h.size == 12) {
        std::memcpy(&h.bits, d.data() + 24, 2);
    } else {
        std::memcpy(&h.bits, d.data() + 28, 2);
        std::memcpy(&h.compression, d.data() + 30, 4);
    }
    return h;
}

// Files that render like another file's reference.
std::string ReferenceFor(const std::string& stem) {
    static const std::map<std::string, std::string> same = {
        {"pal1wb", "pal1"},        {"pal4rle", "pal4"},    {"pal8-0", "pal8"},
        {"pal8os2", "pal8"},       {"pal8rle", "pal8"},    {"pal8topdown", "pal8"},
        {"pal8v4", "pal8"},        {"pal8v5", "pal8"},     {"rgb16-565pal", "rgb16-565"},
        {"rgb16bfdef", "rgb16"},   {"rgb24pal", "rgb24"},  {"rgb32", "rgb24"},
        {"rgb32bf", "rgb24"},      {"rgb32bfdef", "rgb24"}, {"pal8nonsquare", "pal8nonsquare-e"}};
    auto it = same.find(stem);
    return it == same.end() ? stem : it->second;
}

TEST(BmpSuite, GoodFilesGiveTheReferencePixels) {
    const std::string dir = TestData() + "bmpsuite\\g\\";
    const auto files = FilesIn(dir, "*.bmp");
    if (files.empty()) GTEST_SKIP() << "no BMP suite (shared/testdata is absent in a user's clone)";
    int compared = 0, refused = 0, masks = 0;
    for (const std::string& name : files) {
        const std::string path = dir + name;
        const Header h = PeekHeader(path);
        Image ours;
        const bool read = ReadThroughBitmap(path, ours);
        if (h.size != 12 && h.size != 40) {
            EXPECT_FALSE(read) << name << ": only core and info headers are taken";
            ++refused;
            continue;
        }
        if (h.compression == BI_BITFIELDS) {
            // The colour table holds palette entries only: the masks are taken
            // for pixels. Such files are read without harm but not drawn right.
            ++masks;
            continue;
        }
        ASSERT_TRUE(read) << name;
        Image ref;
        const std::string stem = name.substr(0, name.size() - 4);
        ASSERT_TRUE(ReadPpm(TestData() + "bmpsuite\\" + ReferenceFor(stem) + ".ppm", ref)) << name;
        EXPECT_LE(MaxDifference(ours, ref), 8) << name << " differs from its reference";
        ++compared;
    }
    EXPECT_GE(compared, 15);
    EXPECT_EQ(2, refused) << "pal8v4 and pal8v5";
    std::printf("bmpsuite/g: %d compared, %d refused, %d with colour masks\n", compared, refused,
                masks);
}

TEST(BmpSuite, QuestionableFilesAreReadOrRefusedWithoutLeaks) {
    const std::string dir = TestData() + "bmpsuite\\q\\";
    const auto files = FilesIn(dir, "*.bmp");
    if (files.empty()) GTEST_SKIP() << "no BMP suite (shared/testdata is absent in a user's clone)";
    auto once = [&](const std::string& name) {
        fw::UniqueGlobal dib(ReadDibFile(dir + name));
        if (!dib) return false;
        BITMAPINFOHEADER info;
        EXPECT_TRUE(GetDibInfo(dib.get(), &info));
        fw::UniqueBitmap bmp(DibToBitmap(dib.get(), nullptr));
        return true;
    };
    once(files.front());  // warm-up: the first screen DC caches objects
    const int gdi = GdiObjectCount(), heap = HeapBlockCount();
    int read = 0;
    for (const std::string& name : files) read += once(name);
    EXPECT_EQ(gdi, GdiObjectCount());
    EXPECT_LE(HeapBlockCount(), heap + 2);
    std::printf("bmpsuite/q: %d of %zu read, the rest refused\n", read, files.size());
}

TEST(ImageMagick, EveryHeaderKindAndDepthReadsTheSamePicture) {
    const std::string dir = TestData() + "im\\";
    Image src, mono;
    ASSERT_TRUE(ReadPpm(dir + "src.ppm", src)) << "prepare-testdata did not run";
    ASSERT_TRUE(ReadPpm(dir + "pal1.ppm", mono));
    for (const char* name : {"rgb24-info.bmp", "rgb24-core.bmp", "pal8-info.bmp", "pal8-core.bmp",
                             "pal4-info.bmp", "pal4-core.bmp", "rgb24-bare.dib", "pal1-info.bmp",
                             "pal1-core.bmp"}) {
        Image ours;
        ASSERT_TRUE(ReadThroughBitmap(dir + name, ours)) << name;
        EXPECT_EQ(0, MaxDifference(ours, std::strncmp(name, "pal1", 4) ? src : mono)) << name;
    }
    fw::UniqueGlobal core(ReadDibFile(dir + "pal8-core.bmp"));
    BITMAPINFOHEADER info;
    ASSERT_TRUE(GetDibInfo(core.get(), &info));
    EXPECT_EQ(40u, info.biSize) << "a core header is widened to an info header";
    ASSERT_LE(info.biBitCount, 8);
    EXPECT_EQ(1u << info.biBitCount, info.biClrUsed);
    EXPECT_GE(GlobalSize(core.get()), 40u + 4u * info.biClrUsed + info.biSizeImage)
        << "the table is widened to RGBQUADs";
}

class Hostile : public testing::Test {
protected:
    // Writes a file: optional 'BM' file header, then an info header and `rest`.
    std::string Write(const char* name, DWORD biSize, LONG w, LONG h, WORD bits, DWORD sizeImage,
                      DWORD clrUsed = 0, size_t rest = 64, DWORD offBits = 0) {
        std::string d(14 + 40, '\0');
        BITMAPFILEHEADER fh{0x4D42, static_cast<DWORD>(d.size() + rest), 0, 0,
                            offBits ? offBits : 14 + biSize};
        BITMAPINFOHEADER ih{biSize, w, h, 1, bits, BI_RGB, sizeImage, 0, 0, clrUsed, 0};
        std::memcpy(&d[0], &fh, 14);
        std::memcpy(&d[14], &ih, 40);
        d += std::string(rest, '\x55');
        WriteText(dir.File(name), d);
        return dir.File(name);
    }
    ScratchDir dir;
};

TEST_F(Hostile, BrokenHeadersAreRefusedOrReadWithoutHarm) {
    { fw::UniqueGlobal warm(ReadDibFile(Write("warm.bmp", 40, 4, 4, 24, 0))); }
    const int gdi = GdiObjectCount(), heap = HeapBlockCount();
    WriteText(dir.File("short.bmp"), "BM\x10\x00");
    WriteText(dir.File("headeronly.bmp"), std::string("BM") + std::string(20, '\0'));
    for (const std::string& refused :
         {dir.File("short.bmp"), dir.File("headeronly.bmp"), Write("v4.bmp", 108, 4, 4, 24, 0),
          Write("v5.bmp", 124, 4, 4, 24, 0), Write("odd.bmp", 41, 4, 4, 24, 0),
          Write("huge.bmp", 40, 4, 4, 24, 0x7FFFFFF0),
          Write("wide.bmp", 40, -100000, 100000, 24, 0), dir.File("missing.bmp")})
        EXPECT_EQ(nullptr, ReadDibFile(refused)) << refused;
    BITMAPINFOHEADER info;
    EXPECT_FALSE(GetDibInfo(nullptr, &info));
    EXPECT_FALSE(WriteDibFile(dir.File("x.bmp"), nullptr));
    EXPECT_EQ(nullptr, BitmapToDib(nullptr, BI_RGB, 0, nullptr));
    EXPECT_EQ(nullptr, DibToBitmap(nullptr, nullptr));
    for (auto [name, w, h] : {std::tuple{"zero.bmp", 0, 0}, std::tuple{"zerow.bmp", 0, 10},
                              std::tuple{"neg.bmp", 4, -4}}) {
        fw::UniqueGlobal dib(ReadDibFile(Write(name, 40, w, h, 24, 0)));
        if (dib) fw::UniqueBitmap bmp(DibToBitmap(dib.get(), nullptr));
    }
    // Pixels distant beyond the end of the file: zeros, not a crash.
    fw::UniqueGlobal distant(ReadDibFile(Write("distant.bmp", 40, 8, 8, 24, 0, 0, 16, 1 << 20)));
    ASSERT_NE(nullptr, distant.get());
    fw::UniqueBitmap distantBitmap(DibToBitmap(distant.get(), nullptr));
    EXPECT_NE(nullptr, distantBitmap.get());
    // biSizeImage smaller than the rows: the block still holds every row.
    fw::UniqueGlobal small(ReadDibFile(Write("small.bmp", 40, 64, 64, 24, 16)));
    ASSERT_NE(nullptr, small.get());
    EXPECT_GE(GlobalSize(small.get()), 40u + 64u * 64u * 3u);
    fw::UniqueBitmap smallBitmap(DibToBitmap(small.get(), nullptr));
    for (auto* b : {&distantBitmap, &smallBitmap}) b->reset();
    for (auto* g : {&distant, &small}) g->reset();
    EXPECT_EQ(gdi, GdiObjectCount());
    EXPECT_LE(HeapBlockCount(), heap + 2);
}

TEST(Thumbnail, ScreenBitmapBecomesA32BitFileAndReadsBack) {
    fw::UniqueBitmap bmp = FilledBitmap(200, 150);
    FillBitmapRect(bmp.get(), {10, 20, 60, 70}, RGB(255, 0, 0));
    fw::UniqueGlobal dib(BitmapToDib(bmp.get(), BI_RGB, 0, nullptr));
    ASSERT_NE(nullptr, dib.get());
    BITMAPINFOHEADER info;
    ASSERT_TRUE(GetDibInfo(dib.get(), &info));
    EXPECT_EQ(32, info.biBitCount);
    EXPECT_EQ(120000u, info.biSizeImage);
    EXPECT_EQ(0, DibColorTableSize(&info));

    const std::string out = TestData() + "out\\thumbnail.bmp";
    ASSERT_TRUE(WriteDibFile(out, dib.get()));
    const std::string file = ReadText(out);
    ASSERT_GE(file.size(), 54u);
    BITMAPFILEHEADER fh;
    std::memcpy(&fh, file.data(), sizeof fh);
    EXPECT_EQ(0x4D42, fh.bfType);
    EXPECT_EQ(54u, fh.bfOffBits);
    EXPECT_EQ(GlobalSize(dib.get()) + 14, fh.bfSize);
    EXPECT_EQ(fh.bfSize, file.size());

    Image back, original;
    ASSERT_TRUE(ReadThroughBitmap(out, back));
    original.px = BitmapPixels(bmp.get(), &original.w, &original.h);
    EXPECT_EQ(0, MaxDifference(back, original));
    EXPECT_EQ(0xFF0000u, back.px[30 * 200 + 20]);
}

TEST(Drawing, StretchInPlaceKeepsTheSize) {
    fw::WindowDC screen(nullptr);
    fw::UniqueBitmap bmp = FilledBitmap(100, 80);
    StretchBitmapInPlace(screen.get(), bmp.get(), 0.5, 0.25);
    int w, h;
    auto px = BitmapPixels(bmp.get(), &w, &h);
    ASSERT_EQ(100, w);
    ASSERT_EQ(80, h);
    EXPECT_EQ(0xFFFFFFu, px[19 * 100 + 49]);
    EXPECT_EQ(0u, px[19 * 100 + 50]);
    EXPECT_EQ(0u, px[20 * 100 + 49]);

    fw::UniqueBitmap stripes = FilledBitmap(100, 10, BLACKNESS);
    FillBitmapRect(stripes.get(), {50, 0, 100, 10}, RGB(255, 255, 255));  // right half white
    StretchBitmapInPlace(screen.get(), stripes.get(), 1.999, 1.0);  // 199 wide, left 100 kept
    px = BitmapPixels(stripes.get(), &w);
    EXPECT_EQ(100, w);
    EXPECT_EQ(0u, px[5 * 100 + 99]) << "the left half, doubled, fills all that remains";
}

TEST(Drawing, TransparentBitmapLetsTheBackgroundShowThroughBlack) {
    fw::UniqueBitmap sprite = FilledBitmap(10, 10, BLACKNESS);
    FillBitmapRect(sprite.get(), {0, 0, 5, 10}, RGB(0, 0, 255));  // left half blue, right black
    fw::UniqueBitmap canvas = PaintedBitmap(20, 10, WHITENESS, [&](HDC dc) {
        DrawTransparentBitmap(dc, sprite.get(), 5, 0, RGB(0, 0, 0));
    });
    auto px = BitmapPixels(canvas.get());
    EXPECT_EQ(0x0000FFu, px[5 * 20 + 6]);
    EXPECT_EQ(0xFFFFFFu, px[5 * 20 + 12]) << "black is transparent";
    EXPECT_EQ(0u, BitmapPixels(sprite.get())[5 * 10 + 8]) << "the caller's bitmap is unchanged";
}

}  // namespace
