// zemblax-host.exe: loads Zemblax.dll as the dental imaging application does
// and runs acquisitions with it. --auto plays the user for a headless run.
//   zemblax-host.exe [--data=FOLDER] [--auto] [--out=FOLDER] [--template=NAME]
//                    [--design=NAME] [--lang=1033]
#include <windows.h>
#include <ole2.h>
#include <commctrl.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include "host/DesignerUser.h"
#include "host/HostWindow.h"
#include "hoststub/HostAutomation.h"

namespace {

// Wine hands Unix paths through unchanged; the plug-in wants Windows paths.
std::string WindowsPath(std::string p) {
    if (!p.empty() && p[0] == '/') p = "Z:" + p;
    for (char& c : p)
        if (c == '/') c = '\\';
    return p;
}

std::string ExeFolder() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string s(path);
    return s.substr(0, s.find_last_of('\\') + 1);
}

bool Parse(int argc, char** argv, HostOptions& o) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](const char* prefix) { return a.substr(std::strlen(prefix)); };
        if (a == "--auto") o.autoUser = true;
        else if (a.rfind("--data=", 0) == 0) o.dataFolder = WindowsPath(value("--data="));
        else if (a.rfind("--out=", 0) == 0) o.outFolder = WindowsPath(value("--out="));
        else if (a.rfind("--template=", 0) == 0) o.templateName = value("--template=");
        else if (a.rfind("--design=", 0) == 0) o.designName = value("--design=");
        else if (a.rfind("--lang=", 0) == 0) o.language = std::atoi(value("--lang=").c_str());
        else {
            std::fprintf(stderr, "unknown argument %s\n", a.c_str());
            return false;
        }
    }
    if (o.dataFolder.empty()) o.dataFolder = ExeFolder() + "data";
    if (!o.designName.empty()) o.templateName = o.designName;
    return true;
}

constexpr int kToothChart = 15037, kDefineOrder = 15041;

// The automatic user: answers the plug-in's dialogs on the UI thread.
void ClickWhenEnabled(HWND dlg, int id) {
    HWND b = GetDlgItem(dlg, id);
    if (b && IsWindowEnabled(b)) PostMessageA(b, BM_CLICK, 0, 0);
}

// The automatic user's template: a bitewing-like take over the lower right
// molars and a standing one over the upper incisors, 12 added by a click, the
// first take moved, the order turned round, saved under `name`.
void DesignTemplate(HWND dlg, const HostOptions& o) {
    DesignerUser user(dlg, o.dataFolder + "\\Template\\Zemblax.ini");
    auto say = [&](const char* what) {
        std::printf("designer: %-40s %s\n", what, user.Caption().c_str());
        std::fflush(stdout);
    };
    user.DragSensor(2, 46);
    say("sensor 2 lying dropped on 46");
    user.DragSensor(1, 21);
    say("sensor 1 standing dropped on 21");
    user.ClickTooth(12);
    say("tooth 12 clicked");
    POINT first = user.FindTake(1);
    user.DragCanvas(first, {first.x + 10, first.y + 6});
    say("take 1 moved on the layout");
    first = user.FindTake(1);
    const POINT second = user.FindTake(2);
    user.ClickControl(kDefineOrder);
    user.ClickCanvas(second);
    user.ClickCanvas(first);
    user.ClickControl(kDefineOrder);
    say("order set: front first");
    const bool saved = user.SaveAs(o.designName);
    say(saved ? "saved as a new template" : "save as failed");
    if (!o.outFolder.empty()) user.Snapshot(o.outFolder + "\\designer.bmp");
    user.ClickControl(IDCANCEL);
}

void AnswerDialog(HWND dlg, const HostOptions& o) {
    const std::string& templateName = o.templateName;
    if (GetDlgItem(dlg, kToothChart)) {
        DesignTemplate(dlg, o);
        return;
    }
    if (HWND list = GetDlgItem(dlg, 15014)) {  // template selection
        int index = 0;
        if (!templateName.empty()) {
            LVFINDINFOA find{LVFI_STRING, templateName.c_str()};
            index = static_cast<int>(SendMessageA(list, LVM_FINDITEMA, static_cast<WPARAM>(-1),
                                                  reinterpret_cast<LPARAM>(&find)));
            if (index < 0) {
                std::printf("template '%s' not in the catalog\n", templateName.c_str());
                PostMessageA(dlg, WM_COMMAND, IDCANCEL, 0);
                return;
            }
        }
        LVITEMA item{};
        item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageA(list, LVM_SETITEMSTATE, index, reinterpret_cast<LPARAM>(&item));
        ClickWhenEnabled(dlg, IDOK);
    } else if (GetDlgItem(dlg, 15042)) {  // the exposure review
        ClickWhenEnabled(dlg, IDOK);
    } else if (GetDlgItem(dlg, 1006)) {  // end of the template
        HWND accept = GetDlgItem(dlg, 1006);
        ClickWhenEnabled(dlg, IsWindowEnabled(accept) ? 1006 : 1001);
    }
}

// The plug-in's dialogs that the automatic user knows.
BOOL CALLBACK FindPluginDialog(HWND h, LPARAM lp) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::strcmp(cls, "#32770") || !IsWindowVisible(h) || !GetWindow(h, GW_CHILD)) return TRUE;
    if (!GetDlgItem(h, 15014) && !GetDlgItem(h, 15042) && !GetDlgItem(h, 1006) &&
        !GetDlgItem(h, kToothChart))
        return TRUE;
    // Handles of closed dialogs come back: a mark tells an answered one.
    if (GetPropA(h, "ZemblaxAnswered")) return TRUE;
    *reinterpret_cast<HWND*>(lp) = h;
    return FALSE;
}

void AutoUser(DWORD uiThread, HostOptions options, volatile bool* stop) {
    while (!*stop) {
        Sleep(150);
        HWND found = nullptr;
        EnumThreadWindows(uiThread, FindPluginDialog, reinterpret_cast<LPARAM>(&found));
        if (!found) continue;
        SetPropA(found, "ZemblaxAnswered", reinterpret_cast<HANDLE>(1));
        AnswerDialog(found, options);
    }
}

}  // namespace

int main(int argc, char** argv) {
    HostOptions options;
    if (!Parse(argc, argv, options)) return 2;
    OleInitialize(nullptr);
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&icc);
    if (options.language) {
        hoststub::AutomationOptions a;
        a.userLanguage = options.language;
        a.lexiconFile = options.dataFolder + "\\Template\\Lexicon.ini";
        hoststub::RegisterAutomation(a);
    }
    Plugin plugin;
    const std::string dll = ExeFolder() + "Zemblax.dll";
    if (!plugin.Load(dll.c_str())) {
        std::fprintf(stderr, "cannot load %s\n", dll.c_str());
        return 1;
    }
    UINT version = 0;
    if (!plugin.CheckVersion(ZEMBLAX_INTERFACE_VERSION, &version)) {
        std::fprintf(stderr, "plug-in interface version %u, host needs %d\n", version,
                     ZEMBLAX_INTERFACE_VERSION);
        return 1;
    }
    std::printf("Zemblax.dll interface version %u, data folder %s\n", version,
                options.dataFolder.c_str());
    if (!plugin.Initialize(options.dataFolder.c_str())) return 1;
    HostWindow window(plugin, options);
    if (!window.Create()) return 1;
    volatile bool stop = false;
    std::thread user;
    if (options.autoUser)
        user = std::thread(AutoUser, GetCurrentThreadId(), options, &stop);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    stop = true;
    if (user.joinable()) user.join();
    plugin.Uninitialize();
    if (options.language) hoststub::RevokeAutomation();
    OleUninitialize();
    return options.autoUser && !window.RunEnded() ? 1 : 0;
}
