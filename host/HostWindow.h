// The demo host: a main window with the image layout area, the plug-in loaded
// as the dental imaging application loads it, and an acquisition driven
// through ZEMBLAX_Start / ZEMBLAX_GetNext / ZEMBLAX_Stop.
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "fw/Handle.h"
#include "host/PluginLibrary.h"

struct HostOptions {
    std::string dataFolder;  // Windows path of the folder holding Template\Zemblax.ini
    std::string outFolder;   // where --auto writes layout.bmp
    std::string templateName;
    std::string designName;  // --auto: first design a template of this name, then run it
    bool autoUser = false;
    int language = 0;        // 0: no language database
};

using Plugin = PluginLibrary;

class HostWindow {
public:
    HostWindow(Plugin& plugin, const HostOptions& options);
    bool Create();
    HWND hwnd() const { return m_hwnd; }
    int Deliveries() const { return m_deliveries; }
    bool RunEnded() const { return m_runEnded; }
    bool SaveLayout(const std::string& path);

private:
    struct Placed {
        RECT rect;
        fw::UniqueBitmap bitmap;
    };
    static LRESULT CALLBACK Proc(HWND, UINT, WPARAM, LPARAM);
    LRESULT Handle(UINT msg, WPARAM wp, LPARAM lp);
    void Paint(HDC dc);
    RECT ImageArea() const;
    void StartAcquisition();
    void Configure();
    void Deliver(HGLOBAL header, HGLOBAL bits, bool stepBackAndAsk);
    void Expose();
    void EndRun(const char* why);
    void SetStatus(const std::string& text);

    Plugin& m_plugin;
    HostOptions m_options;
    HWND m_hwnd = nullptr;
    std::vector<Placed> m_images;
    // The take being exposed now: where its image goes.
    bool m_haveTake = false;
    RECT m_takeRect{};
    std::string m_takeLabel;
    int m_takeVertical = 0;
    int m_exposures = 0;
    int m_deliveries = 0;
    bool m_runEnded = false;
    std::string m_status;
};
