#include "fw/IniFile.h"

namespace fw {

int IniFile::Int(const std::string& section, const char* key, int def) const {
    return static_cast<int>(::GetPrivateProfileIntA(section.c_str(), key, def, m_path.c_str()));
}

std::string IniFile::Str(const std::string& section, const char* key, const char* def) const {
    char buf[256];
    ::GetPrivateProfileStringA(section.c_str(), key, def, buf, sizeof buf, m_path.c_str());
    return buf;
}

bool IniFile::Write(const std::string& section, const char* key, const std::string& value) const {
    return ::WritePrivateProfileStringA(section.c_str(), key, value.c_str(), m_path.c_str()) != 0;
}

bool IniFile::EraseSection(const std::string& section) const {
    return ::WritePrivateProfileStringA(section.c_str(), nullptr, nullptr, m_path.c_str()) != 0;
}

}  // namespace fw
