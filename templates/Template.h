// A named, numbered list of takes in acquisition order, kept in the catalog
// Zemblax.ini (name, deleted mark) and in Template<n>.ini / Template<n>.bmp
// beside it.
#pragma once
#include <windows.h>
#include <memory>
#include <string>
#include <vector>
#include "templates/Take.h"

constexpr int kMaxTakes = 32;

class CTemplate {
public:
    CTemplate();
    virtual ~CTemplate() = default;

    void Reset();
    const std::string& GetName() const { return m_strName; }
    void SetName(const std::string& name) { m_strName = name; }
    int GetNumber() const { return m_nNumber; }
    bool IsSaved() const { return m_nNumber != 0; }

    int GetTakeCount() const { return static_cast<int>(m_takes.size()); }
    CTake* GetTake(int index) const;
    bool AddTake(CTake* take);
    bool InsertTake(int index, CTake* take);
    bool RemoveTake(int index);
    void Renumber();
    bool IsModified();
    bool AllTakesHaveTeeth() const;

    bool Load(int number, const std::string& catalog);
    bool Save(HBITMAP thumbnail, const std::string& catalog, bool keepNumber);
    bool Delete(const std::string& catalog);

    // The folder of the catalog, with its trailing backslash.
    static std::string FolderOf(const std::string& catalog);
    static std::string SectionName(int number);

private:
    bool WriteTakeFile(const std::string& file, int stored);

    std::string m_strName;
    std::vector<std::unique_ptr<CTake>> m_takes;
    BOOL m_bModified = FALSE;
    int m_nNumber = 0;
};
