#include "settings/Settings.h"
#include <cstdio>
#include <cstdlib>
#include "fw/Gdi.h"
#include "templates/LayoutSpace.h"
#include "templates/Take.h"
#include "text/TextService.h"

namespace {

int ReadInt(const char* section, const char* key, int def, const char* file) {
    return static_cast<int>(::GetPrivateProfileIntA(section, key, def, file));
}

std::string ReadStr(const char* section, const char* key, const char* file) {
    char buf[256];
    ::GetPrivateProfileStringA(section, key, "", buf, sizeof buf, file);
    return buf;
}

COLORREF ReadColor(const char* section, const char* prefix, const char* file) {
    char r[64], g[64], b[64];
    std::snprintf(r, sizeof r, "%sR", prefix);
    std::snprintf(g, sizeof g, "%sG", prefix);
    std::snprintf(b, sizeof b, "%sB", prefix);
    return RGB(ReadInt(section, r, 0, file) & 0xFF, ReadInt(section, g, 0, file) & 0xFF,
               ReadInt(section, b, 0, file) & 0xFF);
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

    const char* file = path.c_str();
    ReadApplication(file);
    if (m_nTakeDlgWidth < 342 || m_nTakeDlgHeight < 248 || m_nTakeDlgWidth > cxScreen ||
        m_nTakeDlgHeight > cyScreen) {
        m_nTakeDlgWidth = 342;
        m_nTakeDlgHeight = 248;
    }
    ReadHolders(file);
    if (!ReadSensors(file)) return false;
    ReadDropPositions(file);
    return true;
}

void CSettings::ReadApplication(const char* file) {
    const char* app = "Application";
    m_crActive = ReadColor(app, "ActiveColor", file);
    m_crInactive = ReadColor(app, "InactiveColor", file);
    m_crDrag = ReadColor(app, "DragColor", file);
    char face[256];
    ::GetPrivateProfileStringA(app, "FontName", "Arial", face, sizeof face, file);
    m_strFontName = face;
    m_nFontSize = ReadInt(app, "FontSize", 10, file);
    m_font = fw::CreatePointFont(m_nFontSize * 10, face);
    if (!m_font) m_font = fw::CreatePointFont(100, "Arial");
    m_bShowToothNumbers = ReadInt(app, "ShowToothNumbers", 1, file);
    m_nPreviewTimeout = static_cast<UINT>(ReadInt(app, "PreviewTimeout", 10, file)) * 1000u;
    m_dSensorSensitivity =
        static_cast<UINT>(ReadInt(app, "SensorSensitivity", 100, file)) * 0.01;
    m_nTakeDlgWidth = ReadInt(app, "TakeDlgWidth", 342, file);
    m_nTakeDlgHeight = ReadInt(app, "TakeDlgHeight", 248, file);
}

void CSettings::ReadHolders(const char* file) {
    for (int n = 1;; ++n) {
        char section[32];
        std::snprintf(section, sizeof section, "Holder%d", n);
        std::string name = ReadStr(section, "Name", file);
        if (name.empty()) break;
        auto holder = std::make_unique<CHolder>(name);
        holder->SetColor(ReadColor(section, "Color", file));
        holder->SetInactiveColor(ReadColor(section, "InactiveColor", file));
        holder->SetTextColor(ReadColor(section, "TextColor", file));
        BOOL h = ReadInt(section, "Horizontal", 1, file);
        BOOL v = ReadInt(section, "Vertical", 1, file);
        if (!h && !v) h = v = TRUE;
        holder->SetOrientations(h, v);
        m_holders.push_back(std::move(holder));
    }
}

bool CSettings::ReadSensors(const char* file) {
    for (int n = 1;; ++n) {
        char section[32];
        std::snprintf(section, sizeof section, "Sensor%d", n);
        if (ReadStr(section, "Name", file).empty()) return true;
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

void CSettings::ReadDropPositions(const char* file) {
    for (int n = 0;; ++n) {
        char section[32];
        std::snprintf(section, sizeof section, "DropPosition%d", n);
        std::string teeth = ReadStr(section, "Teeth", file);
        if (teeth.empty()) return;
        auto take = std::make_unique<CTake>();
        int x = ReadInt(section, "WindowPositionX", 0, file);
        int y = ReadInt(section, "WindowPositionY", 0, file);
        if (!layout::Contains(x, y)) x = y = 0;
        UINT num = static_cast<UINT>(ReadInt(section, "ZoomNominator", 1, file));
        UINT den = static_cast<UINT>(ReadInt(section, "ZoomDenominator", 4, file));
        if (num < 1 || num > 10 || den < 1 || den > 10) num = 1, den = 4;
        take->Place(x, y, num, den);
        int holder = ReadInt(section, "Holder", 1, file);
        if (holder < 1 || holder > GetHolderCount()) holder = GetHolderCount() > 0 ? 1 : 0;
        take->SetHolder(holder);
        // Unlike a take section, an empty piece after the last comma adds nothing.
        size_t start = 0;
        for (;;) {
            size_t comma = teeth.find(',', start);
            if (comma == std::string::npos) {
                if (start < teeth.size()) take->ToggleTooth(std::atoi(teeth.c_str() + start));
                break;
            }
            take->ToggleTooth(std::atoi(teeth.substr(start, comma - start).c_str()));
            start = comma + 1;
        }
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
