#include "ui/ConfigureDlg.h"
#include <mbstring.h>
#include <cstdio>
#include <cstring>
#include "fw/Beep.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
#include "fw/Module.h"
#include "hostlib/HostLibrary.h"
#include "res/resource.h"
#include "settings/IniNames.h"
#include "settings/Settings.h"
#include "templates/Template.h"
#include "text/TextService.h"
#include "ui/SaveAsDlg.h"
#include "ui/SelectionDlg.h"

// The template is made before the settings are loaded: it takes the default
// name as it stands then, which in a fresh process is still empty.
CConfigureDlg::CConfigureDlg(const std::string& catalogPath, HWND parent)
    : fw::Dialog(IDD_CONFIGURE, parent),
      m_strCatalogPath(catalogPath),
      m_pTemplate(std::make_unique<CTemplate>()) {}

CConfigureDlg::~CConfigureDlg() = default;

void CConfigureDlg::DoDataExchange() {
    m_canvas.Subclass(Item(IDC_LAYOUT_CANVAS));
    m_takeList.Attach(Item(IDC_TAKE_LIST));
    m_chart.Subclass(Item(IDC_TOOTH_CHART));
    ::CheckDlgButton(hwnd(), IDC_DEFINE_ORDER, m_bOrderMode ? BST_CHECKED : BST_UNCHECKED);
    ::CheckDlgButton(hwnd(), IDC_MIXED_DENTITION,
                     m_bMixedDentition ? BST_CHECKED : BST_UNCHECKED);
}

BOOL CConfigureDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    TranslateDialog(hwnd(), IDD_CONFIGURE,
                    {IDC_DEFINE_ORDER, IDC_MIXED_DENTITION, IDC_NEW, IDC_OPEN, IDC_DELETE,
                     IDC_SAVE, IDC_SAVE_AS, IDCANCEL});
    char title[256] = {};
    ::GetWindowTextA(hwnd(), title, sizeof title);
    m_strBaseTitle = title;
    m_chart.Init(this, m_strCatalogPath);
    m_canvas.Init(this, &m_strCatalogPath);
    m_canvas.SetTemplate(m_pTemplate.get());
    m_takeList.Init(this);
    UpdateView();
    CenterWindow();
    return TRUE;
}

bool CConfigureDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (code == BN_CLICKED) {
        switch (id) {
        case IDC_NEW: OnNew(); return true;
        case IDC_OPEN: OnOpen(); return true;
        case IDC_SAVE: SaveTemplate(); return true;
        case IDC_SAVE_AS: SaveTemplateAs(); return true;
        case IDC_DELETE: OnDelete(); return true;
        case IDC_DEFINE_ORDER: OnDefineOrder(); return true;
        case IDC_MIXED_DENTITION: OnMixedDentition(); return true;
        }
    }
    return fw::Dialog::OnCommand(id, code, control);
}

// Beenden, Enter and Esc: the dialog has no OK.
void CConfigureDlg::OnCancel() {
    if (SaveChangesFirst()) EndDialog(IDCANCEL);
}

// ---- caption and views -----------------------------------------------------

void CConfigureDlg::UpdateTitle() {
    const CTake* selected = m_canvas.GetSelectedTake();
    const int number = selected ? selected->GetPosition() + 1 : 0;
    const std::string label = selected ? selected->GetToothLabel() : std::string();
    const std::string format = fw::Module::LoadStr(IDS_CAPTION_FORMAT);  // "%s [%s #%d:%s]"
    char caption[1024];
    std::snprintf(caption, sizeof caption, format.c_str(), m_strBaseTitle.c_str(),
                  m_pTemplate->GetName().c_str(), number, label.c_str());
    // Setting a caption redraws the frame; the same caption again changes
    // nothing a user could see.
    char shown[sizeof caption];
    ::GetWindowTextA(hwnd(), shown, sizeof shown);
    if (std::strcmp(shown, caption) != 0) ::SetWindowTextA(hwnd(), caption);
}

void CConfigureDlg::UpdateView() {
    UpdateTitle();
    m_chart.SetCurrentTake(m_canvas.GetSelectedTake());
    m_canvas.Invalidate();
    m_chart.Invalidate();
}

void CConfigureDlg::UpdateChart() {
    UpdateTitle();
    m_chart.SetCurrentTake(m_canvas.GetSelectedTake());
    m_chart.Invalidate();
}

void CConfigureDlg::UpdateSelectedItem() {
    UpdateTitle();
    m_canvas.InvalidateSelected();
}

void CConfigureDlg::ReadCheckBoxes() {
    m_bOrderMode = ::IsDlgButtonChecked(hwnd(), IDC_DEFINE_ORDER) == BST_CHECKED;
    m_bMixedDentition = ::IsDlgButtonChecked(hwnd(), IDC_MIXED_DENTITION) == BST_CHECKED;
}

void CConfigureDlg::OnDefineOrder() {
    ReadCheckBoxes();
    m_canvas.SetOrderMode(m_bOrderMode != 0);
    m_canvas.SelectTake(0);
    UpdateView();
}

// Kept: no repaint here. The chart shows the other numbering at its next
// repaint; its hit test follows at once.
void CConfigureDlg::OnMixedDentition() {
    ReadCheckBoxes();
    m_chart.SetMixedDentition(m_bMixedDentition);
}

// ---- the palette's drag and the new take -----------------------------------

void CConfigureDlg::BeginDrag(int nPaletteIndex) {
    m_bDragging = TRUE;
    m_nDragEntry = nPaletteIndex;
    m_canvas.SelectTake(-1);
    UpdateView();
    // The moves and the release belong to the chart, wherever the mouse is.
    ::SetCapture(m_chart.hwnd());
}

int CConfigureDlg::EndDrag() {
    m_bDragging = FALSE;
    const int entry = m_nDragEntry;
    m_nDragEntry = 0;
    ::ReleaseCapture();
    return entry;
}

bool CConfigureDlg::IsDragVertical() const {
    const CSensor* entry = TheSettings().GetPaletteEntry(m_nDragEntry);
    return entry && entry->IsVertical();
}

bool CConfigureDlg::GetDragRegion(fw::UniqueRgn& region, int x, int y, bool bSide, double sx,
                                  double sy) const {
    const CSensor* entry = TheSettings().GetPaletteEntry(m_nDragEntry);
    return entry && entry->GetFootprintRegion(region, x, y, bSide, sx, sy);
}

bool CConfigureDlg::GetDragMarkerRegion(fw::UniqueRgn& region, int x, int y, bool bSide,
                                        double sx, double sy) const {
    const CSensor* entry = TheSettings().GetPaletteEntry(m_nDragEntry);
    return entry && entry->GetMarkerRegion(region, x, y, bSide, sx, sy);
}

bool CConfigureDlg::RefuseTake() {
    fw::Beep(MB_ICONASTERISK);
    UpdateView();
    return false;
}

bool CConfigureDlg::AddTakeFromPalette(const std::vector<BYTE>& teeth, int nPaletteIndex) {
    const CSettings& settings = TheSettings();
    if (m_pTemplate->GetTakeCount() + 1 > kMaxTakes || teeth.empty()) return RefuseTake();
    auto take = std::make_unique<CTake>();
    if (!settings.FindDropPosition(&teeth, take.get())) return RefuseTake();
    take->SetTeeth(teeth);
    // Two palette entries per sensor: lying, then standing.
    if (!take->SetSensor(nPaletteIndex / 2 + 1)) return RefuseTake();
    if (const CSensor* entry = settings.GetPaletteEntry(nPaletteIndex)) {
        if (entry->IsVertical()) take->Rotate();
        take->ClampToLayoutArea();
    }
    const CHolder* holder = settings.GetHolder(take->GetHolder() - 1);
    if (!holder) return RefuseTake();
    if (!holder->Allows(take->IsVertical())) {
        // Added all the same, turned the way the holder allows.
        fw::Beep(MB_ICONASTERISK);
        take->Rotate();
    }
    CTake* added = take.release();
    m_pTemplate->AddTake(added);
    m_canvas.AddTakeItem(added);
    UpdateView();
    return true;
}

void CConfigureDlg::DeleteTake(int position) {
    m_canvas.RemoveTakeItem(position);
    m_pTemplate->RemoveTake(position);
    m_canvas.SelectTake(0);
    UpdateView();
}

// ---- template commands -----------------------------------------------------

bool CConfigureDlg::SaveChangesFirst() {
    if (!m_pTemplate->IsModified()) return true;
    if (!HostBoxQuestion(hwnd(), IDS_ASK_SAVE)) return true;  // no: the changes go
    return SaveTemplate() != FALSE;
}

void CConfigureDlg::OnNew() {
    if (!SaveChangesFirst()) return;
    m_pTemplate->Reset();
    m_chart.SetCurrentTake(nullptr);
    m_canvas.SetTemplate(m_pTemplate.get());
    UpdateView();
}

void CConfigureDlg::OnOpen() {
    CSelectionDlg selection(m_strCatalogPath, hwnd());
    if (!SaveChangesFirst()) return;
    if (selection.DoModal() != IDOK) return;
    fw::WaitCursor wait;
    m_chart.SetCurrentTake(nullptr);
    const bool loaded = m_pTemplate->Load(selection.GetSelectedNumber(), m_strCatalogPath);
    // Loading has replaced the takes either way: the canvas lets go of the
    // old ones before anything can paint.
    m_canvas.SetTemplate(m_pTemplate.get());
    if (loaded) m_canvas.SelectTake(0);
    UpdateView();
    if (!loaded) HostBoxError(hwnd(), IDS_OPEN_FAILED);
}

bool CConfigureDlg::CanBeSaved() const {
    if (m_pTemplate->GetTakeCount() == 0) {
        HostBoxError(hwnd(), IDS_ADD_TAKES_FIRST);
        return false;
    }
    if (!m_pTemplate->AllTakesHaveTeeth()) {
        HostBoxError(hwnd(), IDS_TEETH_MISSING);
        return false;
    }
    return true;
}

BOOL CConfigureDlg::SaveTemplate() {
    fw::WaitCursor wait;
    if (!CanBeSaved()) return FALSE;
    if (!m_pTemplate->IsSaved()) return SaveTemplateAs();
    fw::UniqueBitmap thumbnail;
    m_canvas.RenderThumbnail(thumbnail);
    if (m_pTemplate->Save(thumbnail.get(), m_strCatalogPath, true)) return TRUE;
    HostBoxError(hwnd(), IDS_SAVE_FAILED);
    return FALSE;
}

BOOL CConfigureDlg::SaveTemplateAs() {
    CSaveAsDlg dlg(nullptr);
    if (!CanBeSaved()) return FALSE;
    if (dlg.DoModal() != IDOK) return FALSE;
    fw::WaitCursor wait;
    const std::string name = dlg.GetName();
    // Kept: the opened template's own entry counts too, since Save as always
    // makes a new entry.
    if (NameIsTaken(name)) {
        HostBoxError(hwnd(), IDS_NAME_TAKEN);
        return FALSE;
    }
    m_pTemplate->SetName(name);
    fw::UniqueBitmap thumbnail;
    m_canvas.RenderThumbnail(thumbnail);
    if (m_pTemplate->Save(thumbnail.get(), m_strCatalogPath, false)) return TRUE;
    HostBoxError(hwnd(), IDS_SAVE_FAILED);
    return FALSE;
}

// Live entries up to the first without a name; any letter case, multibyte-aware.
bool CConfigureDlg::NameIsTaken(const std::string& name) const {
    const fw::IniSnapshot catalog(m_strCatalogPath);
    for (int n = 1;; ++n) {
        const fw::IniSection section = catalog.Section(ini::Template(n));
        const std::string entry = section.Str("Name");
        if (entry.empty()) return false;
        if (section.Int("Deleted", 0) != 0) continue;
        if (_mbsicmp(reinterpret_cast<const unsigned char*>(entry.c_str()),
                     reinterpret_cast<const unsigned char*>(name.c_str())) == 0)
            return true;
    }
}

// No question first: the command acts at once.
void CConfigureDlg::OnDelete() {
    if (!m_pTemplate->IsSaved()) {
        HostBoxError(hwnd(), IDS_NOT_SAVED_NO_DELETE);
        return;
    }
    if (!m_pTemplate->Delete(m_strCatalogPath)) {
        HostBoxError(hwnd(), IDS_DELETE_FAILED);
        return;
    }
    OnNew();
}
