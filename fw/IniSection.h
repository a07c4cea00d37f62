// One section of a private-profile (INI) file, read with one call. Int and Str
// answer exactly as GetPrivateProfileIntA and GetPrivateProfileStringA (with a
// 256-byte buffer) answer for the same file, which opens and searches the file
// again for every key. Keys are ASCII and compare in any letter case; none
// starts with ';', as the system's section read leaves such lines out.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace fw {

class IniSection {
public:
    IniSection(const std::string& file, const std::string& section);
    // From the section's lines as GetPrivateProfileSectionA gives them, each
    // ended by '\0'.
    struct FromText {};
    IniSection(const std::string& text, FromText);

    // A line of the section. A line without '=' has no value: its key reads as
    // missing, and so does every later line of that key.
    struct Entry {
        std::string key;
        std::string value;
        bool hasValue;
    };
    const std::vector<Entry>& Entries() const { return m_entries; }
    bool Empty() const { return m_entries.empty(); }

    int Int(const char* key, int def) const;
    // `buffer`: the size of the reader's buffer that the value must fit.
    std::string Str(const char* key, const char* def = "", size_t buffer = 256) const;

    // What GetPrivateProfileIntA gives for a key whose (trimmed) value this is.
    static int IntValue(const std::string& value, int def);

    // Keys and values in the order a writer puts them.
    using KeyValues = std::vector<std::pair<std::string, std::string>>;

private:
    // The section's lines as GetPrivateProfileSectionA gives them, each ended by '\0'.
    static std::string ReadText(const std::string& file, const std::string& section);
    const Entry* Find(const char* key) const;

    std::vector<Entry> m_entries;
};

}  // namespace fw
