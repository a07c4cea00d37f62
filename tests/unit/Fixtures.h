// Settings files for the data-layer tests, loaded into the module's one
// settings record.
#pragma once
#include <ostream>
#include <string>
#include "TestSupport.h"
#include "settings/Settings.h"
#include "templates/Take.h"

// A sensor section: rectangle outline of the picture's proportions.
inline std::string SensorSection(int n, const std::string& name, int pw, int ph) {
    return "[Sensor" + std::to_string(n) + "]\r\nName=" + name + "\r\nPictureWidth=" +
           std::to_string(pw) + "\r\nPictureHeight=" + std::to_string(ph) +
           "\r\nPolygonVertices=4\r\nPolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=10000\r\nPolygonY2=0\r\n"
           "PolygonX3=10000\r\nPolygonY3=" + std::to_string(10000 * ph / pw) +
           "\r\nPolygonX4=0\r\nPolygonY4=" + std::to_string(10000 * ph / pw) + "\r\n";
}

// Two sensors (1000 x 800 and 800 x 600) and two holders, plus `extra`.
inline std::string StandardSettings(const std::string& extra = std::string()) {
    return SensorSection(1, "Gross", 1000, 800) + SensorSection(2, "Klein", 800, 600) +
           "[Holder1]\r\nName=Front\r\nColorR=255\r\nHorizontal=0\r\nVertical=1\r\n"
           "[Holder2]\r\nName=Seite\r\nColorB=255\r\nHorizontal=1\r\nVertical=0\r\n" + extra;
}

// A take of `sensor` at zoom 1/4 (sensor 2 above: 200 x 150) placed at (x, y).
inline CTake* NewTake(std::vector<BYTE> teeth, int x, int y, int holder = 1, int sensor = 2) {
    auto* t = new CTake;
    t->SetTeeth(teeth);
    t->SetSensor(sensor);
    for (int i = 0; i < 3; ++i) t->ZoomOut();
    t->MoveTo(x, y);
    t->SetHolder(holder);
    return t;
}

inline bool SameRect(const RECT& a, const RECT& b) { return EqualRect(&a, &b) != FALSE; }
inline bool operator==(const RECT& a, const RECT& b) { return SameRect(a, b); }
inline std::ostream& operator<<(std::ostream& os, const RECT& r) {
    return os << "(" << r.left << "," << r.top << "," << r.right << "," << r.bottom << ")";
}

class SettingsFile {
public:
    explicit SettingsFile(const std::string& text = StandardSettings()) {
        CreateDirectoryA(m_dir.File("Template").c_str(), nullptr);
        m_path = m_dir.File("Template\\Zemblax.ini");
        testing_support::WriteText(m_path, text);
        m_loaded = TheSettings().Load(m_path);
    }
    ~SettingsFile() { TheSettings().Reset(); }
    const std::string& path() const { return m_path; }
    std::string folder() const { return m_dir.File("Template\\"); }
    bool loaded() const { return m_loaded; }

private:
    testing_support::ScratchDir m_dir;
    std::string m_path;
    bool m_loaded;
};
