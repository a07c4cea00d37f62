#include "templates/Template.h"
#include "dib/Dib.h"
#include "fw/IniFile.h"
#include "settings/IniNames.h"
#include "settings/Settings.h"

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
    const fw::IniFile takes(file);
    // A file with more take sections than any template could have is read no
    // further than this, so a broken file cannot keep the module busy.
    constexpr int kMaxTakeSections = 256;
    for (int k = 1; k <= kMaxTakeSections; ++k) {
        if (takes.Int(ini::Take(number, k), "Sensor", 0) == 0) return true;
        auto t = std::make_unique<CTake>();
        if (!t->Read(number, k, file)) {
            Reset();
            return false;
        }
        m_takes.push_back(std::move(t));
    }
    return true;
}

bool CTemplate::Save(HBITMAP thumbnail, const std::string& catalog, bool keepNumber) {
    const fw::IniFile cat(catalog);
    if (!keepNumber) {
        // The first number without a name; a deleted entry keeps its name.
        m_nNumber = 1;
        while (!cat.Str(SectionName(m_nNumber), "Name").empty()) ++m_nNumber;
    }
    const std::string section = SectionName(m_nNumber);
    const std::string folder = FolderOf(catalog);
    const std::string file = folder + section + ".ini";
    const fw::IniFile takes(file);
    cat.EraseSection(section);
    for (int k = 1; !takes.Str(ini::Take(m_nNumber, k), "Sensor").empty(); ++k)
        takes.EraseSection(ini::Take(m_nNumber, k));
    fw::UniqueGlobal dib(BitmapToDib(thumbnail, BI_RGB, 0, nullptr));
    if (!WriteDibFile(folder + section + ".bmp", dib.get())) return false;
    dib.reset();
    cat.Write(section, "Name", m_strName);
    for (int i = 0; i < GetTakeCount(); ++i)
        if (!m_takes[i]->Write(m_nNumber, i + 1, file)) return false;
    m_bModified = FALSE;
    return true;
}

bool CTemplate::Delete(const std::string& catalog) {
    if (!m_nNumber) return false;
    m_bModified = FALSE;
    fw::IniFile(catalog).Write(SectionName(m_nNumber), "Deleted", "1");
    Reset();
    return true;
}
