#include "fw/IniSection.h"
#include <windows.h>
#include <algorithm>
#include <cctype>

namespace fw {
namespace {

// The blanks that the profile reader trims around keys and values.
constexpr const char* kBlanks = " \t\n\v\f\r\x1a";

std::string Trimmed(const std::string& s) {
    const size_t b = s.find_first_not_of(kBlanks);
    if (b == std::string::npos) return std::string();
    return s.substr(b, s.find_last_not_of(kBlanks) - b + 1);
}

// A value as the profile reader copies it into a buffer of `size` characters:
// one kind of surrounding quotes dropped, the rest cut to size - 1. When the
// value after its opening quote fits the buffer, the last character copied
// is dropped in place of the closing quote, even if that was cut off.
std::string Copied(const std::string& v, size_t size) {
    if (v.size() >= 2 && (v[0] == '"' || v[0] == '\'') && v.back() == v[0]) {
        std::string s = v.substr(1, size - 1);
        if (v.size() - 1 <= size) s.pop_back();
        return s;
    }
    return v.substr(0, size - 1);
}

// The system's string-to-integer rule: leading blanks and a sign taken, "0x",
// "0o" and "0b" prefixes honoured, digits up to the first other character,
// wrapping like its unsigned result.
int ParsedInt(const std::string& s) {
    size_t i = 0;
    while (i < s.size() && static_cast<unsigned char>(s[i]) <= ' ') ++i;
    bool minus = false;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) minus = s[i++] == '-';
    unsigned base = 10;
    if (i + 1 < s.size() && s[i] == '0') {
        const char kind = s[i + 1];
        base = kind == 'x' ? 16 : kind == 'o' ? 8 : kind == 'b' ? 2 : 10;
        if (base != 10) i += 2;
    }
    unsigned n = 0;
    for (; i < s.size(); ++i) {
        const char c = s[i];
        const unsigned digit = c >= '0' && c <= '9'   ? c - '0'
                               : c >= 'a' && c <= 'z' ? c - 'a' + 10
                               : c >= 'A' && c <= 'Z' ? c - 'A' + 10
                                                      : 99;
        if (digit >= base) break;
        n = n * base + digit;
    }
    return static_cast<int>(minus ? 0u - n : n);
}

bool SameKey(const std::string& a, const char* b) {
    const auto lower = [](char c) { return ::tolower(static_cast<unsigned char>(c)); };
    size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return i == a.size() && !b[i];
}

}  // namespace

std::string IniSection::ReadText(const std::string& file, const std::string& section) {
    // A section is never longer than its file; the first buffer holds most.
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    unsigned long long bytes = 4096;
    if (::GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &attributes))
        bytes += (static_cast<unsigned long long>(attributes.nFileSizeHigh) << 32) |
                 attributes.nFileSizeLow;
    const size_t most = static_cast<size_t>(std::min(bytes, 1ull << 30));
    std::vector<char> buf(std::min<size_t>(most, 1 << 16));
    for (;;) {
        const DWORD n = ::GetPrivateProfileSectionA(section.c_str(), buf.data(),
                                                    static_cast<DWORD>(buf.size()), file.c_str());
        if (n + 2 < buf.size() || buf.size() >= most) return std::string(buf.data(), n);
        buf.resize(std::min(buf.size() * 2, most));
    }
}

IniSection::IniSection(const std::string& file, const std::string& section)
    : IniSection(ReadText(file, section), FromText{}) {}

IniSection::IniSection(const std::string& text, FromText) {
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\0', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        const size_t eq = line.find('=');
        if (eq == std::string::npos)
            m_entries.push_back({Trimmed(line), std::string(), false});
        else
            m_entries.push_back({Trimmed(line.substr(0, eq)), Trimmed(line.substr(eq + 1)), true});
    }
}

// The profile reader gives the first line of a key.
const IniSection::Entry* IniSection::Find(const char* key) const {
    for (const Entry& e : m_entries)
        if (SameKey(e.key, key)) return &e;
    return nullptr;
}

int IniSection::IntValue(const std::string& value, int def) {
    // GetPrivateProfileIntA reads the value into 30 characters first.
    const std::string s = Copied(value, 30);
    return s.empty() ? def : ParsedInt(s);
}

int IniSection::Int(const char* key, int def) const {
    const Entry* e = Find(key);
    return e && e->hasValue ? IntValue(e->value, def) : def;
}

std::string IniSection::Str(const char* key, const char* def, size_t buffer) const {
    const Entry* e = Find(key);
    if (e && e->hasValue) return Copied(e->value, buffer);
    // The default loses its trailing spaces and quotes like a value.
    std::string d = def;
    d.erase(d.find_last_not_of(' ') + 1);
    return Copied(d, buffer);
}

}  // namespace fw
