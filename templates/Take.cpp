#include "templates/Take.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "fw/Beep.h"
#include "fw/IniFile.h"
#include "fw/IniSection.h"
#include "hostlib/HostLibrary.h"
#include "settings/IniNames.h"
#include "settings/Settings.h"
#include "templates/ToothList.h"

fw::IniSection::KeyValues CTake::SectionKeys() const {
    return {{"Sensor", std::to_string(m_nSensor)},
            {"SensorOrientation", m_bVertical ? "1" : "0"},
            {"Position", std::to_string(m_nPosition + 1)},
            {"Teeth", GetTeethString()},
            {"Holder", std::to_string(m_nHolder)},
            {"WindowPositionX", std::to_string(m_rect.left)},
            {"WindowPositionY", std::to_string(m_rect.top)},
            {"ZoomNominator", std::to_string(static_cast<int>(m_nZoomNum))},
            {"ZoomDenominator", std::to_string(static_cast<int>(m_nZoomDen))}};
}

bool CTake::Write(int nTemplate, int nTake, const std::string& file) {
    if (!HasTeeth()) return false;
    const std::string s = ini::Take(nTemplate, nTake);
    // Key by key: a file that a save does not write whole may hold comments
    // and repeated sections, which only these writes leave as they were.
    const fw::IniFile ini(file);
    for (const auto& [key, value] : SectionKeys()) ini.Write(s, key.c_str(), value);
    MarkSaved();
    return true;
}

bool CTake::Read(int nTemplate, int nTake, const std::string& file) {
    return Read(fw::IniSection(file, ini::Take(nTemplate, nTake)), nTake);
}

bool CTake::Read(const fw::IniSection& section, int nTake) {
    auto readInt = [&](const char* key, int def) { return section.Int(key, def); };
    if (readInt("SensorOrientation", 0)) m_bVertical = TRUE;
    int sensorNo = readInt("Sensor", 0);
    const CSensor* sensor = TheSettings().GetSensor(sensorNo - 1);
    if (sensorNo <= 0 || !sensor) return false;
    m_nSensor = sensorNo;
    SIZE pic = sensor->GetPictureSize();
    m_nPictureWidth = m_bVertical ? pic.cy : pic.cx;
    m_nPictureHeight = m_bVertical ? pic.cx : pic.cy;

    int x = readInt("WindowPositionX", 0);
    int y = readInt("WindowPositionY", 0);
    m_nZoomNum = static_cast<UINT>(readInt("ZoomNominator", 1));
    m_nZoomDen = static_cast<UINT>(readInt("ZoomDenominator", 1));
    if (m_nZoomNum < 1 || m_nZoomNum > 10 || m_nZoomDen < 1 || m_nZoomDen > 10) {
        m_nZoomNum = 1;
        m_nZoomDen = 4;
    }
    m_rect.left = x;
    m_rect.top = y;
    RecomputeRect();
    SetHolder(readInt("Holder", 0));
    m_nPosition = nTake - 1;
    if (!ClampToLayoutArea()) fw::Beep(MB_ICONHAND);

    for (int tooth : ParseToothList(section.Str("Teeth"), TrailingComma::CountsAsToothZero))
        ToggleTooth(tooth);
    m_bModified = FALSE;
    return true;
}

void CTake::CopyFrom(const CTake& o) {
    m_nSensor = o.m_nSensor;
    m_nHolder = o.m_nHolder;
    m_nPosition = o.m_nPosition;
    m_bVertical = o.m_bVertical;
    m_nPictureWidth = o.m_nPictureWidth;
    m_nPictureHeight = o.m_nPictureHeight;
    m_rect = o.m_rect;
    m_nZoomNum = o.m_nZoomNum;
    m_nZoomDen = o.m_nZoomDen;
    m_bModified = o.m_bModified;
    m_teeth = o.m_teeth;
}

void CTake::ToggleTooth(int tooth) {
    m_bModified = TRUE;
    const BYTE t = static_cast<BYTE>(tooth & 0xFF);
    bool removed = false;
    for (size_t i = 0; i < m_teeth.size(); ++i) {
        if (m_teeth[i] == t) {
            m_teeth.erase(m_teeth.begin() + i);
            removed = true;  // the entry that slid into place i is not looked at
        }
    }
    if (!removed) m_teeth.push_back(t);
    // Selection sort in which 0 counts as larger than every tooth.
    std::vector<BYTE> sorted;
    while (!m_teeth.empty()) {
        size_t pick = 0;
        for (size_t i = 1; i < m_teeth.size(); ++i) {
            const BYTE e = m_teeth[i], p = m_teeth[pick];
            if (e != 0 && (p == 0 || e < p)) pick = i;
        }
        sorted.push_back(m_teeth[pick]);
        m_teeth.erase(m_teeth.begin() + pick);
    }
    m_teeth = sorted;
}

void CTake::SetTeeth(const std::vector<BYTE>& teeth) {
    m_bModified = TRUE;
    m_teeth.clear();
    for (BYTE t : teeth) ToggleTooth(t);
}

std::string CTake::GetTeethString() const {
    std::string s;
    for (size_t i = 0; i < m_teeth.size(); ++i) {
        if (i) s += ',';
        s += std::to_string(m_teeth[i]);
    }
    return s;
}

std::string CTake::GetToothLabel() const {
    std::string label;
    for (size_t i = 0; i < m_teeth.size(); ++i) {
        char type[32];
        std::snprintf(type, sizeof type, "%2u%s", static_cast<unsigned>(m_teeth[i]), "XI");
        char disp[8] = {};
        HostGetTakeTypeDisp(type, disp);
        const std::string twoChars(disp, strnlen(disp, 2));
        const size_t first = twoChars.find_first_not_of(' ');
        if (first == std::string::npos) continue;  // nothing to show, no comma either
        const std::string piece = twoChars.substr(first);
        label += piece;
        if (i + 1 < m_teeth.size()) label += ',';
    }
    return label;
}

BYTE CTake::GetCenterTooth() const {
    const size_t n = m_teeth.size();
    if (n == 0) return 0;
    return n <= 2 ? m_teeth[0] : m_teeth[n / 2];
}

std::string CTake::GetCenterToothString() const {
    BYTE t = GetCenterTooth();
    return t ? std::to_string(t) : std::string();
}

int CTake::GetQuadrant() const {
    int t = GetCenterTooth();
    if ((t >= 11 && t <= 18) || (t >= 51 && t <= 55)) return 1;
    if ((t >= 21 && t <= 28) || (t >= 61 && t <= 65)) return 2;
    if ((t >= 31 && t <= 38) || (t >= 71 && t <= 75)) return 3;
    if ((t >= 41 && t <= 48) || (t >= 81 && t <= 85)) return 4;
    return 0;
}

bool CTake::SetHolder(int n) {
    if (static_cast<UINT>(n) > static_cast<UINT>(TheSettings().GetHolderCount())) return false;
    m_nHolder = n;
    m_bModified = TRUE;
    return true;
}

void CTake::SetPosition(int n) {
    m_nPosition = n;
    m_bModified = TRUE;
}
