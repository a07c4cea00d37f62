// Renders the thumbnail of every template in a catalog with the module's own
// layout canvas and saves the template under its number, as the template
// designer does. Used to give the shipped data folder its pictures.
//   make-thumbnails.exe <folder holding Template\Zemblax.ini>
#include <windows.h>
#include <cstdio>
#include <string>
#include "layout/LayoutCanvas.h"
#include "layout/LayoutOwner.h"
#include "settings/Settings.h"
#include "templates/Template.h"

namespace {

// Repaints the canvas at once when asked, so the copy shows the fresh state.
class Repainter : public CLayoutOwner {
public:
    explicit Repainter(HWND canvas) : m_canvas(canvas) {}
    void UpdateChart() override {}
    void UpdateView() override {
        InvalidateRect(m_canvas, nullptr, TRUE);
        UpdateWindow(m_canvas);
    }
    HWND OwnerWindow() const override { return nullptr; }
    void DeleteTake(int) override {}

private:
    HWND m_canvas;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: make-thumbnails <data folder>\n");
        return 2;
    }
    std::string base = argv[1];
    if (!base.empty() && base[0] == '/') base = "Z:" + base;
    for (char& c : base)
        if (c == '/') c = '\\';
    const std::string catalog = base + "\\Template\\Zemblax.ini";
    if (!TheSettings().Load(catalog)) return 1;
    HWND popup = CreateWindowExA(WS_EX_TOOLWINDOW, "STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, 341,
                                 248, nullptr, nullptr, nullptr, nullptr);
    HWND control = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 0, 0, 341, 248, popup,
                                   nullptr, nullptr, nullptr);
    Repainter owner(control);
    int saved = 0;
    for (int n = 1;; ++n) {
        char name[256];
        GetPrivateProfileStringA(CTemplate::SectionName(n).c_str(), "Name", "", name, sizeof name,
                                 catalog.c_str());
        if (!*name) break;
        CTemplate t;
        if (!t.Load(n, catalog)) {
            std::printf("template %d: cannot load\n", n);
            continue;
        }
        CLayoutCanvas canvas;
        canvas.Subclass(control);
        const std::string noFile;
        canvas.Init(&owner, &noFile);
        canvas.SetTemplate(&t);
        fw::UniqueBitmap thumbnail;
        canvas.RenderThumbnail(thumbnail);
        const bool ok = t.Save(thumbnail.get(), catalog, true);
        std::printf("template %d (%s): %s\n", n, name, ok ? "saved with thumbnail" : "NOT saved");
        saved += ok;
    }
    DestroyWindow(popup);
    return saved > 0 ? 0 : 1;
}
