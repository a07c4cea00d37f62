// One private-profile (INI) file: typed reads and writes. Reads keep the
// platform's own parsing (leading digits of a number, the default for a
// missing key, 255 characters at most), which the files have always had.
#pragma once
#include <windows.h>
#include <string>

namespace fw {

class IniFile {
public:
    explicit IniFile(std::string path) : m_path(std::move(path)) {}
    const std::string& path() const { return m_path; }

    int Int(const std::string& section, const char* key, int def) const;
    std::string Str(const std::string& section, const char* key, const char* def = "") const;
    bool Write(const std::string& section, const char* key, const std::string& value) const;
    bool EraseSection(const std::string& section) const;

private:
    std::string m_path;
};

}  // namespace fw
