// The module's configuration, read from Zemblax.ini at every Start and
// Configure: colours and font for the layout, preview size and time-out, the
// holder and sensor types, and the drop positions for new takes.
#pragma once
#include <windows.h>
#include <memory>
#include <string>
#include <vector>
#include "fw/Handle.h"
#include "settings/Holder.h"
#include "settings/Sensor.h"

class CTake;
namespace fw {
class IniSection;
class IniSnapshot;
}

class CSettings {
public:
    CSettings();
    virtual ~CSettings();

    bool Load(const std::string& path);
    void Reset();
    // Changes at every Reset and Load, and differs between records: a picture
    // drawn from the settings of another generation may show other colours,
    // fonts or outlines.
    unsigned long GetGeneration() const { return m_nGeneration; }

    const std::string& GetDefaultName() const { return m_strDefaultName; }
    const CHolder* GetHolder(int index) const;
    int GetHolderCount() const { return static_cast<int>(m_holders.size()); }
    const CSensor* GetSensor(int index) const;
    int GetSensorCount() const { return static_cast<int>(m_sensors.size()); }
    const CSensor* GetPaletteEntry(int index) const;
    int GetPaletteCount() const { return static_cast<int>(m_palette.size()); }
    const CTake* GetDropPosition(int index) const;
    int GetDropPositionCount() const { return static_cast<int>(m_dropPositions.size()); }

    COLORREF GetActiveColor() const { return m_crActive; }
    COLORREF GetInactiveColor() const { return m_crInactive; }
    COLORREF GetDragColor() const { return m_crDrag; }
    HFONT GetFont() const { return m_font.get(); }
    const std::string& GetFontName() const { return m_strFontName; }
    int GetFontSize() const { return m_nFontSize; }
    bool GetShowToothNumbers() const { return m_bShowToothNumbers != 0; }
    SIZE GetTakeDlgSize() const { return {m_nTakeDlgWidth, m_nTakeDlgHeight}; }
    UINT GetPreviewTimeout() const { return m_nPreviewTimeout; }
    double GetSensorSensitivity() const { return m_dSensorSensitivity; }

    // Copies the drop position sharing most teeth with `teeth` into target.
    bool FindDropPosition(const std::vector<BYTE>* teeth, CTake* target) const;

private:
    void ReadApplication(const fw::IniSection& app);
    void ReadHolders(const fw::IniSnapshot& file);
    bool ReadSensors(const fw::IniSnapshot& file);
    void ReadDropPositions(const fw::IniSnapshot& file);

    std::string m_strDefaultName;
    std::vector<std::unique_ptr<CHolder>> m_holders;
    std::vector<std::unique_ptr<CSensor>> m_sensors;
    std::vector<std::unique_ptr<CSensor>> m_palette;
    std::vector<std::unique_ptr<CTake>> m_dropPositions;
    COLORREF m_crActive = 0;
    COLORREF m_crInactive = 0;
    COLORREF m_crDrag = 0;
    fw::UniqueFont m_font;
    std::string m_strFontName;
    int m_nFontSize = 100;
    BOOL m_bShowToothNumbers = TRUE;
    int m_nTakeDlgWidth = 342;
    int m_nTakeDlgHeight = 248;
    double m_dSensorSensitivity = 1.0;
    UINT m_nPreviewTimeout = 10;
    unsigned long m_nGeneration = 0;
};

// The one settings record of the module. Its owner, the module object,
// registers it; until then (a program with the model alone) an empty record
// of this layer answers.
CSettings& TheSettings();
void RegisterTheSettings(CSettings* settings);
