#include "settings/Settings.h"
#include <cstdio>
#include <cstdlib>
#include "fw/Gdi.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
#include "settings/IniNames.h"
#include "templates/LayoutSpace.h"
#include "templates/Take.h"
#include "templates/ToothList.h"
#include "text/TextService.h"

namespace {

COLORREF ReadColor(const fw::IniSection& section, const std::string& prefix) {
    return RGB(section.Int((prefix + "R").c_str(), 0) & 0xFF,
               section.Int((prefix + "G").c_str(), 0) & 0xFF,
               section.Int((prefix + "B").c_str(), 0) & 0xFF);
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

namespace {
// One count for all records, so that no two generations are equal.
unsigned long NextGeneration() {
    static unsigned long last = 0;
    return ++last;
}
}  // namespace

CSettings::CSettings() { Reset(); }

CSettings::~CSettings() { Reset(); }

void CSettings::Reset() {
    m_nGeneration = NextGeneration();
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

    // The file is read once; each section's keys then read as the system would.
    const fw::IniSnapshot file(path);
    ReadApplication(file.Section(ini::kApplication));
    if (m_nTakeDlgWidth < 342 || m_nTakeDlgHeight < 248 || m_nTakeDlgWidth > cxScreen ||
        m_nTakeDlgHeight > cyScreen) {
        m_nTakeDlgWidth = 342;
        m_nTakeDlgHeight = 248;
    }
    ReadHolders(file);
    // Again when the record is complete: a paint while the texts were read
    // (their automation calls may dispatch messages) saw it half loaded.
    const bool sensorsRead = ReadSensors(file);
    if (sensorsRead) ReadDropPositions(file);
    m_nGeneration = NextGeneration();
    return sensorsRead;
}

void CSettings::ReadApplication(const fw::IniSection& app) {
    m_crActive = ReadColor(app, "ActiveColor");
    m_crInactive = ReadColor(app, "InactiveColor");
    m_crDrag = ReadColor(app, "DragColor");
    m_strFontName = app.Str("FontName", "Arial");
    m_nFontSize = app.Int("FontSize", 10);
    m_font = fw::CreatePointFont(m_nFontSize * 10, m_strFontName.c_str());
    if (!m_font) m_font = fw::CreatePointFont(100, "Arial");
    m_bShowToothNumbers = app.Int("ShowToothNumbers", 1);
    m_nPreviewTimeout = static_cast<UINT>(app.Int("PreviewTimeout", 10)) * 1000u;
    m_dSensorSensitivity = static_cast<UINT>(app.Int("SensorSensitivity", 100)) * 0.01;
    m_nTakeDlgWidth = app.Int("TakeDlgWidth", 342);
    m_nTakeDlgHeight = app.Int("TakeDlgHeight", 248);
}

void CSettings::ReadHolders(const fw::IniSnapshot& file) {
    for (int n = 1;; ++n) {
        const fw::IniSection section = file.Section(ini::Holder(n));
        std::string name = section.Str("Name");
        if (name.empty()) break;
        auto holder = std::make_unique<CHolder>(name);
        holder->SetColor(ReadColor(section, "Color"));
        holder->SetInactiveColor(ReadColor(section, "InactiveColor"));
        holder->SetTextColor(ReadColor(section, "TextColor"));
        BOOL h = section.Int("Horizontal", 1);
        BOOL v = section.Int("Vertical", 1);
        if (!h && !v) h = v = TRUE;
        holder->SetOrientations(h, v);
        m_holders.push_back(std::move(holder));
    }
}

bool CSettings::ReadSensors(const fw::IniSnapshot& file) {
    for (int n = 1;; ++n) {
        // One read serves the sensor and both of its palette entries.
        const fw::IniSection section = file.Section(ini::Sensor(n));
        if (section.Str("Name").empty()) return true;
        auto sensor = std::make_unique<CSensor>(false);
        auto horizontal = std::make_unique<CSensor>(false);
        auto vertical = std::make_unique<CSensor>(true);
        if (!sensor->Read(section) || !horizontal->Read(section) || !vertical->Read(section))
            continue;
        m_sensors.push_back(std::move(sensor));
        m_palette.push_back(std::move(horizontal));
        m_palette.push_back(std::move(vertical));
    }
}

void CSettings::ReadDropPositions(const fw::IniSnapshot& file) {
    for (int n = 0;; ++n) {
        const fw::IniSection section = file.Section(ini::DropPosition(n));
        const std::string teeth = section.Str("Teeth");
        if (teeth.empty()) return;
        auto take = std::make_unique<CTake>();
        int x = section.Int("WindowPositionX", 0);
        int y = section.Int("WindowPositionY", 0);
        if (!layout::Contains(x, y)) x = y = 0;
        UINT num = static_cast<UINT>(section.Int("ZoomNominator", 1));
        UINT den = static_cast<UINT>(section.Int("ZoomDenominator", 4));
        if (num < 1 || num > 10 || den < 1 || den > 10) num = 1, den = 4;
        take->Place(x, y, num, den);
        int holder = section.Int("Holder", 1);
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
