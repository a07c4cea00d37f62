// A whole INI file read once, for reading many of its sections: the system
// opens and searches the file again for every section, which costs more than
// reading all of it. Only a file in the plain form that the module and its
// tools write is answered from the bytes read: no byte order mark, text
// characters only, each line a "[section]" header, a "key=value" line or a
// ';' comment, the first line a header. Any other file is read through the
// system section by section, so that every read answers as the system would.
#pragma once
#include <string>
#include <unordered_map>
#include <vector>
#include "fw/IniSection.h"

namespace fw {

class IniSnapshot {
public:
    explicit IniSnapshot(std::string file);
    IniSection Section(const std::string& name) const;
    // True when the file was read whole, its last section is `name`, no other
    // has that name, and it holds exactly these lines, comments included.
    bool LastSectionIs(const std::string& name, const std::vector<std::string>& lines) const;
    bool Whole() const { return m_whole; }  // answered from the bytes read

private:
    bool Parse(const std::string& bytes);

    std::string m_file;
    bool m_whole = false;
    // Section text by lower-case name, as GetPrivateProfileSectionA gives it.
    std::unordered_map<std::string, std::string> m_sections;
    // The same sections' lines as the file has them, comments and blanks too.
    std::unordered_map<std::string, std::vector<std::string>> m_lines;
    std::string m_last;      // the last header's name, lower case
    bool m_lastRepeated = false;
};

}  // namespace fw
