#include "settings/Settings.h"
#include <cstdio>
#include <cstdlib>
#include "fw/Gdi.h"
#include "fw/IniFile.h"
#include "settings/IniNames.h"
#include "templates/LayoutSpace.h"
#include "templates/Take.h"
#include "templates/ToothList.h"
#include "text/TextService.h"

namespace {

COLORREF ReadColor(const fw::IniFile& ini, const std::string& section, const std::string& prefix) {
    return RGB(ini.Int(section, (prefix + "R").c_str(), 0) & 0xFF,
               ini.Int(section, (prefix + "G").c_str(), 0) & 0xFF,
               ini.Int(section, (prefix + "B").c_str(), 0) & 0xFF);
}

}  // namespace

namespace {
CSettings* g_pTheSettings = nullptr;
}

CSettings& TheSettings() {
    static CSettings unregistered;
    return g_pTheSettings ? *g_pTheSettings : unregistered;
}

void RegisterTheSettings(CSettings* settings) { g_pTheSettings = settings; }

CSettings::CSettings() { Reset(); }

CSettings::~CSettings() { Reset(); }

void CSettings::Reset() {
    m_crActive = m_crInactive = m_crDrag = 0;
    m_nFontSize = 100;
    m_dSensorSensitivity = 1.0;
    m_nPreviewTimeout = 10;
    m_bShowToothNumbers = TRUE;
    m_font.reset();
    m_holders.clear();
    m_sensors.clear();
    m_palette.clear();
    m_dropPositions.clear();
}

bool CSettings::Load(const std::string& path) {
    const int cxScreen = ::GetSystemMetrics(SM_CXFULLSCREEN);
    const int cyScreen = ::GetSystemMetrics(SM_CYFULLSCREEN);
    Reset();
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    if (!GetTextService().LoadText(m_strDefaultName, 32908, 1)) m_strDefaultName = "Noname";
    EndTexts();

    const fw::IniFile ini(path);
    ReadApplication(ini);
    if (m_nTakeDlgWidth < 342 || m_nTakeDlgHeight < 248 || m_nTakeDlgWidth > cxScreen ||
        m_nTakeDlgHeight > cyScreen) {
        m_nTakeDlgWidth = 342;
        m_nTakeDlgHeight = 248;
    }
    ReadHolders(ini);
    if (!ReadSensors(ini)) return false;
    ReadDropPositions(ini);
    return true;
}

void CSettings::ReadApplication(const fw::IniFile& ini) {
    const std::string app = ini::kApplication;
    m_crActive = ReadColor(ini, app, "ActiveColor");
    m_crInactive = ReadColor(ini, app, "InactiveColor");
    m_crDrag = ReadColor(ini, app, "DragColor");
    m_strFontName = ini.Str(app, "FontName", "Arial");
    m_nFontSize = ini.Int(app, "FontSize", 10);
    m_font = fw::CreatePointFont(m_nFontSize * 10, m_strFontName.c_str());
    if (!m_font) m_font = fw::CreatePointFont(100, "Arial");
    m_bShowToothNumbers = ini.Int(app, "ShowToothNumbers", 1);
    m_nPreviewTimeout = static_cast<UINT>(ini.Int(app, "PreviewTimeout", 10)) * 1000u;
    m_dSensorSensitivity = static_cast<UINT>(ini.Int(app, "SensorSensitivity", 100)) * 0.01;
    m_nTakeDlgWidth = ini.Int(app, "TakeDlgWidth", 342);
    m_nTakeDlgHeight = ini.Int(app, "TakeDlgHeight", 248);
}

void CSettings::ReadHolders(const fw::IniFile& ini) {
    for (int n = 1;; ++n) {
        const std::string section = ini::Holder(n);
        std::string name = ini.Str(section, "Name");
        if (name.empty()) break;
        auto holder = std::make_unique<CHolder>(name);
        holder->SetColor(ReadColor(ini, section, "Color"));
        holder->SetInactiveColor(ReadColor(ini, section, "InactiveColor"));
        holder->SetTextColor(ReadColor(ini, section, "TextColor"));
        BOOL h = ini.Int(section, "Horizontal", 1);
        BOOL v = ini.Int(section, "Vertical", 1);
        if (!h && !v) h = v = TRUE;
        holder->SetOrientations(h, v);
        m_holders.push_back(std::move(holder));
    }
}

bool CSettings::ReadSensors(const fw::IniFile& ini) {
    const char* file = ini.path().c_str();
    for (int n = 1;; ++n) {
        const std::string section = ini::Sensor(n);
        if (ini.Str(section, "Name").empty()) return true;
        auto sensor = std::make_unique<CSensor>(false);
        auto horizontal = std::make_unique<CSensor>(false);
        auto vertical = std::make_unique<CSensor>(true);
        if (!sensor->Read(section, file) || !horizontal->Read(section, file) ||
            !vertical->Read(section, file))
            continue;
        m_sensors.push_back(std::move(sensor));
        m_palette.push_back(std::move(horizontal));
        m_palette.push_back(std::move(vertical));
    }
}

void CSettings::ReadDropPositions(const fw::IniFile& ini) {
    for (int n = 0;; ++n) {
        const std::string section = ini::DropPosition(n);
        const std::string teeth = ini.Str(section, "Teeth");
        if (teeth.empty()) return;
        auto take = std::make_unique<CTake>();
        int x = ini.Int(section, "WindowPositionX", 0);
        int y = ini.Int(section, "WindowPositionY", 0);
        if (!layout::Contains(x, y)) x = y = 0;
        UINT num = static_cast<UINT>(ini.Int(section, "ZoomNominator", 1));
        UINT den = static_cast<UINT>(ini.Int(section, "ZoomDenominator", 4));
        if (num < 1 || num > 10 || den < 1 || den > 10) num = 1, den = 4;
        take->Place(x, y, num, den);
        int holder = ini.Int(section, "Holder", 1);
        if (holder < 1 || holder > GetHolderCount()) holder = GetHolderCount() > 0 ? 1 : 0;
        take->SetHolder(holder);
        for (int tooth : ParseToothList(teeth, TrailingComma::AddsNothing)) take->ToggleTooth(tooth);
        m_dropPositions.push_back(std::move(take));
    }
}

const CHolder* CSettings::GetHolder(int index) const {
    return index >= 0 && index < GetHolderCount() ? m_holders[index].get() : nullptr;
}

const CSensor* CSettings::GetSensor(int index) const {
    return index >= 0 && index < GetSensorCount() ? m_sensors[index].get() : nullptr;
}

const CSensor* CSettings::GetPaletteEntry(int index) const {
    return index >= 0 && index < GetPaletteCount() ? m_palette[index].get() : nullptr;
}

const CTake* CSettings::GetDropPosition(int index) const {
    return index >= 0 && index < GetDropPositionCount() ? m_dropPositions[index].get() : nullptr;
}

bool CSettings::FindDropPosition(const std::vector<BYTE>* teeth, CTake* target) const {
    if (!teeth || !target || m_dropPositions.empty()) return false;
    const CTake* best = m_dropPositions.front().get();
    int bestScore = 0;
    for (const auto& drop : m_dropPositions) {
        if (!drop->HasTeeth()) continue;
        int score = 0;
        for (BYTE a : drop->GetTeeth())
            for (BYTE b : *teeth) score += a == b;
        if (score > bestScore) {
            bestScore = score;
            best = drop.get();
        }
    }
    target->CopyFrom(*best);
    return true;
}
