// Asks for the name under which the current template is saved as a new
// catalog entry. Only the length is checked here; the caller checks the name
// against the catalog.
#pragma once
#include <windows.h>
#include <string>
#include "fw/Dialog.h"

class CSaveAsDlg : public fw::Dialog {
public:
    explicit CSaveAsDlg(HWND parent = nullptr);

    // The name as typed; meaningful after IDOK.
    const std::string& GetName() const { return m_strName; }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;

private:
    void NameToEdit() const;
    void EditToName();

    std::string m_strName;
};
