// In thumbnail mode every entry of the selection dialog shows its own
// template's picture, also when deleted entries and missing pictures lie
// between them.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>
#include "RunSupport.h"

namespace {

// A 200 x 150 24-bit BMP of one colour.
void WriteThumbnail(const std::string& path, COLORREF c) {
    const int w = 200, h = 150, row = w * 3;
    BITMAPINFOHEADER ih{sizeof ih, w, h, 1, 24, BI_RGB, static_cast<DWORD>(row * h)};
    BITMAPFILEHEADER fh{0x4D42, static_cast<DWORD>(14 + 40 + row * h), 0, 0, 54};
    std::string data(reinterpret_cast<char*>(&fh), 14);
    data.append(reinterpret_cast<char*>(&ih), 40);
    for (int i = 0; i < w * h; ++i)
        data += {static_cast<char>(GetBValue(c)), static_cast<char>(GetGValue(c)),
                 static_cast<char>(GetRValue(c))};
    testing_support::WriteText(path, data);
}

TEST(SelectionThumbnails, EachEntryShowsItsOwnPicture) {
    PluginHost& p = PluginHost::Get();
    ASSERT_TRUE(p.loaded);
    ResetModule();
    HostWindow host;
    Catalog cat;
    const struct {
        const char* name;
        bool deleted;
        COLORREF picture;  // CLR_NONE: no file, a black placeholder
    } entries[] = {{"Rot", false, RGB(220, 20, 20)},   {"Weg", true, RGB(230, 230, 0)},
                   {"Ohne", false, CLR_NONE},          {"Gruen", false, RGB(20, 200, 40)},
                   {"Blau", false, RGB(30, 40, 210)}};
    std::vector<COLORREF> expected;
    for (int n = 1; n <= 5; ++n) {
        const auto& e = entries[n - 1];
        cat.AddTemplate(n, e.name, {{"11"}}, e.deleted);
        if (e.picture != CLR_NONE)
            WriteThumbnail(cat.folder() + "Template" + std::to_string(n) + ".bmp", e.picture);
        if (!e.deleted) expected.push_back(e.picture == CLR_NONE ? RGB(0, 0, 0) : e.picture);
    }
    cat.Set("SelectionDlg", "Mode", "1");
    p.Initialize(cat.base().c_str());

    std::vector<int> images;
    std::vector<COLORREF> shown;
    WithUser<BOOL>([&] { return p.Start(host.hwnd()); }, [&](DialogDriver& d) {
        HWND dlg = d.WaitFor(IDC_SELECTION_LIST);
        ASSERT_NE(nullptr, dlg);
        HWND list = GetDlgItem(dlg, IDC_SELECTION_LIST);
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
                HDC dc = GetDC(list);
                pixel = GetPixel(dc, (icon.left + icon.right) / 2, (icon.top + icon.bottom) / 2);
                ReleaseDC(list, dc);
            }
            shown.push_back(pixel);
        }
        DialogDriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), images) << "image index = list index";
    ASSERT_EQ(expected.size(), shown.size());
    for (size_t i = 0; i < shown.size(); ++i)
        EXPECT_EQ(expected[i], shown[i]) << "entry " << i << " shows " << std::hex << shown[i];
    ResetModule();
}

}  // namespace
