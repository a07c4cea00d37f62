// The section names of the module's INI files, built in one place.
#pragma once
#include <cstdio>
#include <string>

namespace ini {

constexpr const char* kApplication = "Application";
constexpr const char* kDebug = "Debug";
constexpr const char* kSelectionDlg = "SelectionDlg";

inline std::string Numbered(const char* prefix, int n) { return prefix + std::to_string(n); }
inline std::string Holder(int n) { return Numbered("Holder", n); }          // 1-based
inline std::string Sensor(int n) { return Numbered("Sensor", n); }          // 1-based
inline std::string DropPosition(int n) { return Numbered("DropPosition", n); }  // 0-based
inline std::string Template(int n) { return Numbered("Template", n); }      // catalog entry
// A take of a template file: the template's number and the take's 1-based number.
inline std::string Take(int nTemplate, int nTake) {
    return "Take_" + std::to_string(nTemplate) + "_" + std::to_string(nTake);
}
// Outline of a tooth of the dentition chart: quadrant 1..4, tooth 1..8.
inline std::string Tooth(unsigned quadrant, unsigned tooth) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "Tooth%u%u", quadrant, tooth);
    return buf;
}

}  // namespace ini
