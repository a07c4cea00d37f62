#include "fw/IniSnapshot.h"
#include <windows.h>
#include <algorithm>
#include <cctype>
#include "fw/Handle.h"

namespace fw {
namespace {

std::string Lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](char c) { return static_cast<char>(::tolower(static_cast<unsigned char>(c))); });
    return s;
}

// Bytes that read the same through any conversion of the system's: ASCII
// text and the letters of the Windows Latin code page.
bool PlainByte(unsigned char c) { return c == '\t' || (c >= 0x20 && c < 0x7F) || c >= 0xA0; }

// Under another code page than the Windows Latin one, the system may read
// letters beyond ASCII as parts of wider characters.
bool IsAscii(const std::string& bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; });
}

// Files of settings and catalogs are small; a larger one is left to the system.
constexpr DWORD kMaxBytes = 1 << 22;

bool ReadBytes(const std::string& path, std::string& bytes, bool& missing) {
    const HANDLE h = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    missing = h == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_FILE_NOT_FOUND;
    if (h == INVALID_HANDLE_VALUE) return false;
    UniqueHandle file(h);
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size) || size.QuadPart > kMaxBytes) return false;
    bytes.resize(static_cast<size_t>(size.QuadPart));
    DWORD read = 0;
    return bytes.empty() || (::ReadFile(file.get(), bytes.data(), size.LowPart, &read, nullptr) &&
                             read == size.LowPart);
}

}  // namespace

IniSnapshot::IniSnapshot(std::string file) : m_file(std::move(file)) {
    std::string bytes;
    bool missing = false;
    if (ReadBytes(m_file, bytes, missing) && (::GetACP() == 1252 || IsAscii(bytes)))
        m_whole = Parse(bytes);
    else
        m_whole = missing;  // no file: every section is empty, as the system finds
    if (!m_whole) m_sections.clear(), m_lines.clear();
}

bool IniSnapshot::Parse(const std::string& bytes) {
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) return false;  // the system decodes UTF-8
    std::string* current = nullptr;
    std::vector<std::string>* currentLines = nullptr;
    bool inSection = false;
    for (size_t pos = 0; pos < bytes.size();) {
        size_t end = bytes.find('\n', pos);
        if (end == std::string::npos) end = bytes.size();
        std::string line = bytes.substr(pos, end - pos);
        pos = end + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!std::all_of(line.begin(), line.end(), [](char c) { return PlainByte(c); })) return false;
        const size_t first = line.find_first_not_of(" \t");
        const bool header = first != std::string::npos && line[first] == '[';
        if (currentLines && !header) currentLines->push_back(line);
        if (first == std::string::npos) continue;
        if (line[first] == ';') continue;  // comments are no keys of a section read
        if (line[first] == '[') {
            const std::string name = line.substr(1, line.size() - 2);
            if (first != 0 || line.back() != ']' || name.empty() ||
                name.find_first_of("[]") != std::string::npos ||
                std::any_of(name.begin(), name.end(), [](char c) { return c & 0x80; }) ||
                name.front() == ' ' ||
                name.front() == '\t' || name.back() == ' ' || name.back() == '\t')
                return false;
            // Only the first section of a name is ever read. Names are ASCII
            // here: the system compares other letters in any case too.
            const auto inserted = m_sections.emplace(Lower(name), std::string());
            m_last = Lower(name);
            m_lastRepeated = !inserted.second;
            current = inserted.second ? &inserted.first->second : nullptr;
            currentLines = inserted.second ? &m_lines[Lower(name)] : nullptr;
            inSection = true;
            continue;
        }
        const size_t eq = line.find('=');
        if (!inSection || eq == std::string::npos ||
            line.find_first_not_of(" \t", first) >= eq)
            return false;  // a key outside any section, without a value or without a name
        if (current) *current += line + '\0';
    }
    return true;
}

bool IniSnapshot::LastSectionIs(const std::string& name,
                                const std::vector<std::string>& lines) const {
    if (!m_whole || m_lastRepeated || Lower(name) != m_last) return false;
    const auto found = m_lines.find(Lower(name));
    if (found == m_lines.end()) return false;
    std::vector<std::string> kept = found->second;
    while (!kept.empty() && kept.back().find_first_not_of(" \t") == std::string::npos)
        kept.pop_back();  // the blank lines before the next header
    return kept == lines;
}

IniSection IniSnapshot::Section(const std::string& name) const {
    if (!m_whole) return IniSection(m_file, name);
    const auto found = m_sections.find(Lower(name));
    return IniSection(found == m_sections.end() ? std::string() : found->second,
                      IniSection::FromText{});
}

}  // namespace fw
