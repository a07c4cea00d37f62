#include "Catalog.h"
#include <windows.h>
#include <cstdio>

Catalog::Catalog() {
    CreateDirectoryA(folder().c_str(), nullptr);
    testing_support::WriteText(ini(),
        "[Application]\r\nPreviewTimeout=60\r\nShowToothNumbers=1\r\n"
        "[Holder1]\r\nName=Universal\r\nColorR=200\r\n"
        "[Sensor1]\r\nName=Size 2\r\nPictureWidth=400\r\nPictureHeight=300\r\nPolygonVertices=4\r\n"
        "PolygonX1=0\r\nPolygonY1=0\r\nPolygonX2=10000\r\nPolygonY2=0\r\n"
        "PolygonX3=10000\r\nPolygonY3=7500\r\nPolygonX4=0\r\nPolygonY4=7500\r\n");
}

void Catalog::Set(const char* section, const char* key, const std::string& value) {
    WritePrivateProfileStringA(section, key, value.c_str(), ini().c_str());
}

void Catalog::AddTemplate(int n, const std::string& name, const std::vector<TakeSpec>& takes,
                          bool deleted) {
    char section[32];
    std::snprintf(section, sizeof section, "Template%d", n);
    Set(section, "Name", name);
    if (deleted) Set(section, "Deleted", "1");
    const std::string file = folder() + section + ".ini";
    for (size_t k = 0; k < takes.size(); ++k) {
        char s[64];
        std::snprintf(s, sizeof s, "Take_%d_%d", n, static_cast<int>(k + 1));
        const TakeSpec& t = takes[k];
        auto put = [&](const char* key, const std::string& v) {
            WritePrivateProfileStringA(s, key, v.c_str(), file.c_str());
        };
        put("Sensor", std::to_string(t.sensor));
        put("SensorOrientation", std::to_string(t.vertical));
        put("Teeth", t.teeth);
        put("Holder", std::to_string(t.holder));
        put("WindowPositionX", std::to_string(t.x));
        put("WindowPositionY", std::to_string(t.y));
        put("ZoomNominator", "1");
        put("ZoomDenominator", "4");
    }
}

std::vector<TakeSpec> ThreeTakes() {
    return {{"18,17,16", 1, 0, 100, 100}, {"11,21", 1, 1, 300, 100}, {"36,37", 1, 0, 500, 400}};
}
