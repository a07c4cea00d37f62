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

class Selection : public ModuleTest {
protected:
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

// In thumbnail mode every entry shows its own template's picture in rows as
// high as the pictures, also when deleted entries, missing pictures and broken
// files lie between them.
TEST_F(Selection, ThumbnailModeShowsEachEntrysOwnPicture) {
    constexpr COLORREF kNoFile = 0x01000000, kBrokenFile = 0x02000000;  // black placeholders
    const struct {
        const char* name;
        bool deleted;
        COLORREF picture;
    } entries[] = {{"Rot", false, RGB(220, 20, 20)}, {"Weg", true, RGB(230, 230, 0)},
                   {"Ohne", false, kNoFile},         {"Kaputt", false, kBrokenFile},
                   {"Gruen", false, RGB(20, 200, 40)}, {"Blau", false, RGB(30, 40, 210)}};
    std::vector<COLORREF> expected;
    for (int n = 1; n <= 6; ++n) {
        const auto& e = entries[n - 1];
        cat.AddTemplate(n, e.name, {{"11"}}, e.deleted);
        const std::string bmp = cat.folder() + "Template" + std::to_string(n) + ".bmp";
        if (e.picture == kBrokenFile) testing_support::WriteText(bmp, "BM broken");
        if (!(e.picture >> 24)) testing_support::WriteBmp(bmp, 200, 150, e.picture);
        if (!e.deleted) expected.push_back(e.picture >> 24 ? RGB(0, 0, 0) : e.picture);
    }
    cat.Set("SelectionDlg", "Mode", "1");
    std::vector<int> images;
    std::vector<COLORREF> shown;
    int imageCount = -1, rowHeight = 0, textImages = -1;
    StartAndFirstLabel([&](HWND dlg) {
        HWND list = GetDlgItem(dlg, kList);
        imageCount = ImageCount(dlg);
        RECT bounds{LVIR_BOUNDS};
        SendMessageA(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&bounds));
        rowHeight = bounds.bottom - bounds.top;
        const int n = static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0));
        for (int i = 0; i < n; ++i) {
            LVITEMA item{};
            item.mask = LVIF_IMAGE;
            item.iItem = i;
            SendMessageA(list, LVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item));
            images.push_back(item.iImage);
            // What the list paints beside the entry, scrolled into view.
            SendMessageA(list, LVM_ENSUREVISIBLE, i, FALSE);
            RECT icon{LVIR_ICON};
            SendMessageA(list, LVM_GETITEMRECT, i, reinterpret_cast<LPARAM>(&icon));
            // The list paints on its own thread: until it has, the spot shows
            // the erased background, which no thumbnail here has.
            RedrawWindow(list, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
            COLORREF pixel = CLR_INVALID;
            for (int wait = 0; wait < 100 && (pixel == CLR_INVALID || pixel == RGB(255, 255, 255));
                 ++wait) {
                if (wait) Sleep(10);
                fw::WindowDC dc(list);
                pixel = GetPixel(dc.get(), (icon.left + icon.right) / 2,
                                 (icon.top + icon.bottom) / 2);
            }
            shown.push_back(pixel);
        }
        SendDlgItemMessageA(dlg, kPreviewBox, BM_CLICK, 0, 0);
        textImages = ImageCount(dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), images) << "image index = list index";
    EXPECT_EQ(5, imageCount)
        << "deleted entries add no picture; a missing or broken file a placeholder";
    ASSERT_EQ(expected.size(), shown.size());
    for (size_t i = 0; i < shown.size(); ++i)
        EXPECT_EQ(expected[i], shown[i]) << "entry " << i << " shows " << std::hex << shown[i];
    EXPECT_GE(rowHeight, 150) << "thumbnail rows are as high as the pictures";
    EXPECT_EQ(0, textImages) << "text mode: the 1 x 1 list without images";
}

TEST_F(Selection, AWidePictureShiftsTheImagesAfterIt) {
    cat.AddTemplate(1, "A", {{"11"}});
    cat.AddTemplate(2, "B", {{"21"}});
    testing_support::WriteBmp(cat.folder() + "Template1.bmp", 400, 150, RGB(200, 200, 200));
    testing_support::WriteBmp(cat.folder() + "Template2.bmp", 200, 150, RGB(100, 100, 100));
    cat.Set("SelectionDlg", "Mode", "1");
    int images = -1;
    StartAndFirstLabel([&](HWND dlg) {
        images = ImageCount(dlg);
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ(3, images) << "a 400 x 150 picture counts as two images";
}

}  // namespace
