#include "templates/Template.h"
#include <algorithm>
#include <cctype>
#include "dib/Dib.h"
#include "fw/Handle.h"
#include "fw/IniFile.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
#include "settings/IniNames.h"
#include "settings/Settings.h"

namespace {

fw::UniqueHandle OpenFile(const std::string& path, DWORD access, DWORD disposition) {
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;  // as the system's own writer opens it
    const HANDLE h = ::CreateFileA(path.c_str(), access, share, nullptr, disposition,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
    return fw::UniqueHandle(h == INVALID_HANDLE_VALUE ? nullptr : h);
}

bool IsSensorLine(const std::string& line) {
    return line.size() > 7 && line.compare(0, 7, "Sensor=") == 0 &&
           std::all_of(line.begin() + 7, line.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The number of take sections when the file holds nothing but the sections
// Take_<n>_1, Take_<n>_2, ... in this order, each opening with a numeric
// Sensor, in printable ASCII lines ended by CR LF, blank lines aside: the
// form that a save writes. Whatever reads such a file finds just these
// sections, each with a Sensor. 0 for a missing file, -1 for any other.
int TakeSectionsInSavedForm(const std::string& file, int number) {
    fw::UniqueHandle f = OpenFile(file, GENERIC_READ, OPEN_EXISTING);
    if (!f) return ::GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : -1;
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(f.get(), &size) || size.QuadPart > (1 << 20)) return -1;
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(f.get(), bytes.data(), size.LowPart, &read, nullptr) || read != size.LowPart)
        return -1;
    int k = 0;
    bool sensorNext = false;
    for (size_t pos = 0; pos < bytes.size();) {
        const size_t end = bytes.find("\r\n", pos);
        if (end == std::string::npos) return -1;
        const std::string line = bytes.substr(pos, end - pos);
        pos = end + 2;
        if (!std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }))
            return -1;
        if (line.empty()) continue;
        if (sensorNext) {
            if (!IsSensorLine(line)) return -1;
            sensorNext = false;
        } else if (line == "[" + ini::Take(number, k + 1) + "]") {
            ++k;
            sensorNext = true;
        } else if (k == 0 || !std::isalpha(static_cast<unsigned char>(line[0])) ||
                   line.find('=') == std::string::npos) {
            return -1;  // not plainly a key of a take section
        }
    }
    return sensorNext ? -1 : k;
}

// The take sections that a save replaces: Take_<n>_1, ... up to the first
// without a Sensor.
int StoredTakeSections(const std::string& file, int number) {
    const fw::IniFile takes(file);
    int k = 1;
    while (!takes.Str(ini::Take(number, k), "Sensor").empty()) ++k;
    return k - 1;
}

void EraseTakeSections(const std::string& file, int number, int count) {
    const fw::IniFile takes(file);
    for (int k = 1; k <= count; ++k) takes.EraseSection(ini::Take(number, k));
}

}  // namespace

CTemplate::CTemplate() { Reset(); }

void CTemplate::Reset() {
    m_strName = TheSettings().GetDefaultName();
    m_bModified = FALSE;
    m_nNumber = 0;
    m_takes.clear();
}

std::string CTemplate::FolderOf(const std::string& catalog) {
    size_t slash = catalog.find_last_of('\\');
    return slash == std::string::npos ? std::string() : catalog.substr(0, slash + 1);
}

std::string CTemplate::SectionName(int number) { return ini::Template(number); }

CTake* CTemplate::GetTake(int index) const {
    return index >= 0 && index < GetTakeCount() ? m_takes[index].get() : nullptr;
}

bool CTemplate::AddTake(CTake* take) {
    m_bModified = TRUE;
    m_takes.emplace_back(take);
    Renumber();
    return true;
}

bool CTemplate::InsertTake(int index, CTake* take) {
    // A negative index names no place: refused, and the take stays the caller's.
    if (index < 0) return false;
    m_bModified = TRUE;
    if (index >= GetTakeCount()) return AddTake(take);
    m_takes.emplace(m_takes.begin() + index, take);
    Renumber();
    return true;
}

bool CTemplate::RemoveTake(int index) {
    m_bModified = TRUE;
    if (!GetTake(index)) return false;
    m_takes.erase(m_takes.begin() + index);
    Renumber();
    return true;
}

void CTemplate::Renumber() {
    m_bModified = TRUE;
    for (int i = 0; i < GetTakeCount(); ++i) m_takes[i]->SetPosition(i);
}

bool CTemplate::IsModified() {
    if (m_takes.empty()) {
        m_bModified = FALSE;
        return false;
    }
    for (const auto& t : m_takes)
        if (t->IsModified()) m_bModified = TRUE;
    return m_bModified != 0;
}

bool CTemplate::AllTakesHaveTeeth() const {
    for (const auto& t : m_takes)
        if (!t->HasTeeth()) return false;
    return true;
}

bool CTemplate::Load(int number, const std::string& catalog) {
    Reset();
    m_nNumber = number;
    const std::string section = SectionName(number);
    m_strName = fw::IniFile(catalog).Str(section, "Name");
    const std::string file = FolderOf(catalog) + section + ".ini";
    // A file with more take sections than any template could have is read no
    // further than this, so a broken file cannot keep the module busy.
    constexpr int kMaxTakeSections = 256;
    const fw::IniSnapshot takes(file);  // one read for all takes
    for (int k = 1; k <= kMaxTakeSections; ++k) {
        const fw::IniSection take = takes.Section(ini::Take(number, k));
        if (take.Int("Sensor", 0) == 0) return true;
        auto t = std::make_unique<CTake>();
        if (!t->Read(take, k)) {
            Reset();
            return false;
        }
        m_takes.push_back(std::move(t));
    }
    return true;
}

// Saving has always erased the catalog entry and the take sections up to the
// first without a Sensor, then written the name and each take key by key,
// each write rewriting a whole file. Fewer writes leave the same sections,
// keys and values: the entry's keys replaced at once; a file in the form a
// save writes written whole; any other file erased as before, then each take
// written in one go.
bool CTemplate::Save(HBITMAP thumbnail, const std::string& catalog, bool keepNumber) {
    const fw::IniSnapshot entries(catalog);
    if (!keepNumber) {
        // The first number without a name; a deleted entry keeps its name.
        m_nNumber = 1;
        while (!entries.Section(SectionName(m_nNumber)).Str("Name").empty()) ++m_nNumber;
    }
    const std::string section = SectionName(m_nNumber);
    const std::string folder = FolderOf(catalog);
    const std::string file = folder + section + ".ini";
    const int savedForm = TakeSectionsInSavedForm(file, m_nNumber);
    const int stored = savedForm >= 0 ? savedForm : StoredTakeSections(file, m_nNumber);
    fw::UniqueGlobal dib(BitmapToDib(thumbnail, BI_RGB, 0, nullptr));
    if (!WriteDibFile(folder + section + ".bmp", dib.get())) {
        // Without a thumbnail the entry and the take sections are gone, as ever.
        fw::IniFile(catalog).EraseSection(section);
        EraseTakeSections(file, m_nNumber, stored);
        return false;
    }
    dib.reset();
    // Erased and written anew, the entry becomes the file's last section and
    // holds just the name: where it is that already, there is nothing to do.
    if (!entries.LastSectionIs(section, {"Name=" + m_strName})) {
        const fw::IniFile cat(catalog);
        cat.EraseSection(section);
        cat.Write(section, "Name", m_strName);
    }
    if (savedForm >= 0) {
        if (!WriteTakeFile(file, stored)) return false;
    } else {
        // Any other file: the same erasing, then one write for each take.
        EraseTakeSections(file, m_nNumber, stored);
        for (int i = 0; i < GetTakeCount(); ++i)
            if (!m_takes[i]->Write(m_nNumber, i + 1, file)) return false;
    }
    m_bModified = FALSE;
    return true;
}

// The file in one write, as erasing its `stored` take sections and writing
// each take after it would leave it: the takes up to the first without teeth.
bool CTemplate::WriteTakeFile(const std::string& file, int stored) {
    std::string text;
    int n = 0;
    for (; n < GetTakeCount() && m_takes[n]->HasTeeth(); ++n) {
        text += "[" + ini::Take(m_nNumber, n + 1) + "]\r\n";
        for (const auto& [key, value] : m_takes[n]->SectionKeys())
            text += key + "=" + value + "\r\n";
        m_takes[n]->MarkSaved();
    }
    // With nothing to erase or write, the file stays as it is, or missing.
    if (stored > 0 || n > 0) {
        fw::UniqueHandle f = OpenFile(file, GENERIC_WRITE, OPEN_ALWAYS);
        DWORD written = 0;
        const DWORD size = static_cast<DWORD>(text.size());
        if (!f || !::WriteFile(f.get(), text.data(), size, &written, nullptr) || written != size ||
            !::SetEndOfFile(f.get()))
            return false;
    }
    return n == GetTakeCount();
}

bool CTemplate::Delete(const std::string& catalog) {
    if (!m_nNumber) return false;
    m_bModified = FALSE;
    fw::IniFile(catalog).Write(SectionName(m_nNumber), "Deleted", "1");
    Reset();
    return true;
}
