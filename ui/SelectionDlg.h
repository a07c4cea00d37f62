// Lets the user pick a template of the catalog, as names or as thumbnails.
// Returns the chosen number; loads nothing itself.
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "fw/Dialog.h"
#include "fw/Handle.h"
#include "fw/ListView.h"

class CSelectionDlg : public fw::Dialog {
public:
    CSelectionDlg(const std::string& catalogPath, HWND parent);

    int GetSelectedNumber() const { return m_nSelectedNumber; }
    // Entries as listed: numbers are kept as bytes.
    int GetEntryCount() const { return static_cast<int>(m_names.size()); }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    bool OnNotify(NMHDR* header, LRESULT& result) override;

private:
    void LoadThumbnails(const std::vector<int>& entries);
    void AddImage(HBITMAP bitmap);
    void AddPlaceholder();
    void FillList(bool bThumbnails);

    int m_nSelectedNumber = 0;
    std::string m_strCatalogPath;
    std::vector<BYTE> m_numbers;
    std::vector<std::string> m_names;
    fw::UniqueImageList m_textImages;
    fw::UniqueImageList m_thumbnails;
    // Lends the control one of the lists above, and takes it back before the
    // control is destroyed.
    fw::ListView m_list;
};
