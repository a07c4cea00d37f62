// The template selection dialog as Start shows it: which entries it lists,
// its two modes, and which template the run then uses.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include <cstdio>
#include "RunSupport.h"

namespace {

constexpr int kList = 15014, kPreviewBox = 15029;

std::vector<std::string> ListTexts(HWND dlg) {
    HWND list = GetDlgItem(dlg, kList);
    std::vector<std::string> out;
    const int n = static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < n; ++i) {
        char buf[260] = {};
        ListView_GetItemText(list, i, 0, buf, sizeof buf);
        out.push_back(buf);
    }
    return out;
}

class Selection : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(p.loaded);
        ResetModule();
    }
    void TearDown() override { ResetModule(); }

    // Starts a run, lets `user` work the selection dialog; the first delivery's label.
    std::string StartAndFirstLabel(const std::function<void(HWND)>& user) {
        p.Initialize(cat.base().c_str());
        BOOL ok = WithUser<BOOL>([&] { return p.Start(host.hwnd()); }, [&](DialogDriver& d) {
            HWND dlg = d.WaitFor(kList);
            ASSERT_NE(nullptr, dlg);
            user(dlg);
        });
        if (!ok) return "<no run>";
        std::string label = Next(host.hwnd(), {}).label;
        p.Stop();
        return label;
    }
    static int ImageCount(HWND dlg) {
        return ImageList_GetImageCount(reinterpret_cast<HIMAGELIST>(
            SendDlgItemMessageA(dlg, kList, LVM_GETIMAGELIST, LVSIL_SMALL, 0)));
    }

    PluginHost& p = PluginHost::Get();
    HostWindow host;
    Catalog cat;
};

TEST_F(Selection, ListsTheEntriesWithoutDeletedMarkAndReturnsTheChosenNumber) {
    cat.AddTemplate(1, "A", {{"11"}});
    cat.AddTemplate(2, "B", {{"21"}}, true);
    cat.AddTemplate(3, "C", {{"31"}});
    cat.AddTemplate(5, "E", {{"51"}});  // after the gap at 4: not listed
    std::vector<std::string> texts;
    bool thumbnails = true;
    std::string caption;
    std::string label = StartAndFirstLabel([&](HWND dlg) {
        texts = ListTexts(dlg);
        caption = DialogDriver::Text(dlg);
        thumbnails = IsDlgButtonChecked(dlg, kPreviewBox) == BST_CHECKED;
        SelectEntry(dlg, 1);
        DialogDriver::Click(dlg, IDOK);
    });
    EXPECT_EQ((std::vector<std::string>{"A", "C"}), texts);
    EXPECT_EQ("Aufnahmeschema w\xE4hlen", caption);
    EXPECT_FALSE(thumbnails) << "a fresh catalog shows names";
    EXPECT_EQ("31", label) << "choosing C runs template 3";
}

TEST_F(Selection, NumbersAreKeptAsBytes) {
    // Template300 is reached only through 1..299; all but 44 and 300 are deleted.
    for (int n = 1; n < 300; ++n) {
        char name[16];
        std::snprintf(name, sizeof name, "T%d", n);
        cat.AddTemplate(n, name, n == 44 ? std::vector<TakeSpec>{{"44"}} : std::vector<TakeSpec>{},
                        n != 44);
    }
    cat.AddTemplate(300, "T300", {{"48"}});
    std::vector<std::string> texts;
    std::string label = StartAndFirstLabel([&](HWND dlg) {
        texts = ListTexts(dlg);
        SelectEntry(dlg, 1);
        DialogDriver::Click(dlg, IDOK);
    });
    EXPECT_EQ((std::vector<std::string>{"T44", "T300"}), texts);
    EXPECT_EQ("44", label) << "number 300 comes back as 300 modulo 256";
}

TEST_F(Selection, ModeIsReadAndWrittenAtOnce) {
    cat.AddTemplate(1, "A", {{"11"}});
    cat.Set("SelectionDlg", "Mode", "7");
    bool checked = false;
    std::string afterFirst, afterSecond;
    StartAndFirstLabel([&](HWND dlg) {
        checked = IsDlgButtonChecked(dlg, kPreviewBox) == BST_CHECKED;
        HWND box = GetDlgItem(dlg, kPreviewBox);
        SendMessageA(box, BM_CLICK, 0, 0);
        afterFirst = testing_support::IniString(cat.ini(), "SelectionDlg", "Mode");
        SendMessageA(box, BM_CLICK, 0, 0);
        afterSecond = testing_support::IniString(cat.ini(), "SelectionDlg", "Mode");
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_TRUE(checked) << "any non-zero Mode means thumbnails";
    EXPECT_EQ("0", afterFirst);
    EXPECT_EQ("1", afterSecond) << "written even though the dialog is cancelled";
}

TEST_F(Selection, OkWithNothingSelectedBeepsAndStays) {
    cat.AddTemplate(1, "A", {{"11"}});
    bool stayed = false;
    std::string label = StartAndFirstLabel([&](HWND dlg) {
        SelectEntry(dlg, -1);
        DialogDriver::Click(dlg, IDOK);
        NMHDR dblclk{GetDlgItem(dlg, kList), static_cast<UINT_PTR>(kList),
                     static_cast<UINT>(NM_DBLCLK)};
        SendMessageA(dlg, WM_NOTIFY, kList, reinterpret_cast<LPARAM>(&dblclk));
        Sleep(300);
        stayed = IsWindowVisible(dlg) != FALSE;
        SelectEntry(dlg, 0);
        DialogDriver::Click(dlg, IDOK);
    });
    EXPECT_TRUE(stayed);
    EXPECT_EQ("11", label);
    EXPECT_EQ((std::vector<UINT>{MB_ICONASTERISK, MB_ICONASTERISK}), TakeBeeps())
        << "OK and a double click alike";
}

TEST_F(Selection, EmptyCatalogOnlyCancels) {
    std::vector<std::string> texts{"not read"};
    std::string label = StartAndFirstLabel([&](HWND dlg) {
        texts = ListTexts(dlg);
        DialogDriver::Click(dlg, IDOK);
        Sleep(200);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_TRUE(texts.empty());
    EXPECT_EQ("<no run>", label);
    EXPECT_EQ((std::vector<UINT>{MB_ICONASTERISK}), TakeBeeps());
}

// A 24-bit BMP of one colour.
void WriteBmp(const std::string& path, int w, int h, BYTE grey) {
    const int row = (w * 3 + 3) & ~3;
    BITMAPINFOHEADER ih{sizeof ih, w, h, 1, 24, BI_RGB, static_cast<DWORD>(row * h)};
    BITMAPFILEHEADER fh{0x4D42, static_cast<DWORD>(14 + 40 + row * h), 0, 0, 54};
    std::string data(reinterpret_cast<char*>(&fh), 14);
    data.append(reinterpret_cast<char*>(&ih), 40);
    data.append(static_cast<size_t>(row) * h, static_cast<char>(grey));
    testing_support::WriteText(path, data);
}

TEST_F(Selection, ThumbnailModeHoldsOneImagePerEntry) {
    cat.AddTemplate(1, "A", {{"11"}});
    cat.AddTemplate(2, "B", {{"21"}});  // no picture: a black placeholder
    cat.AddTemplate(3, "C", {{"31"}});
    cat.AddTemplate(4, "D", {{"41"}}, true);
    WriteBmp(cat.folder() + "Template1.bmp", 200, 150, 200);
    WriteBmp(cat.folder() + "Template3.bmp", 200, 150, 100);
    WriteBmp(cat.folder() + "Template4.bmp", 200, 150, 50);
    testing_support::WriteText(cat.folder() + "Template2.bmp", "BM broken");
    cat.Set("SelectionDlg", "Mode", "1");
    int images = -1, items = -1, rowHeight = 0, textImages = -1;
    StartAndFirstLabel([&](HWND dlg) {
        items = static_cast<int>(ListTexts(dlg).size());
        images = ImageCount(dlg);
        RECT r{LVIR_BOUNDS};
        SendDlgItemMessageA(dlg, kList, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&r));
        rowHeight = r.bottom - r.top;
        SendDlgItemMessageA(dlg, kPreviewBox, BM_CLICK, 0, 0);
        textImages = ImageCount(dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ(3, items);
    EXPECT_EQ(3, images) << "deleted entries add no picture; a broken file a placeholder";
    EXPECT_GE(rowHeight, 150) << "thumbnail rows are as high as the pictures";
    EXPECT_EQ(0, textImages) << "text mode: the 1 x 1 list without images";
}

TEST_F(Selection, AWidePictureShiftsTheImagesAfterIt) {
    cat.AddTemplate(1, "A", {{"11"}});
    cat.AddTemplate(2, "B", {{"21"}});
    WriteBmp(cat.folder() + "Template1.bmp", 400, 150, 200);
    WriteBmp(cat.folder() + "Template2.bmp", 200, 150, 100);
    cat.Set("SelectionDlg", "Mode", "1");
    int images = -1;
    StartAndFirstLabel([&](HWND dlg) {
        images = ImageCount(dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ(3, images) << "a 400 x 150 picture counts as two images";
}

}  // namespace
