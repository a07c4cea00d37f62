// Replaces the module's German texts by translations from the host's language
// database, reached through the host's automation objects. Where nothing comes
// back, the resource text stays.
#pragma once
#include <windows.h>
#include <initializer_list>
#include <memory>
#include <string>
#include "fw/Dispatch.h"
#include "fw/Handle.h"

constexpr int kTextString = 1;  // string-table texts, and OK/Cancel by id
constexpr int kTextDialog = 2;  // dialog captions and control texts

class CTextService {
public:
    CTextService();
    virtual ~CTextService();

    BOOL Open(const std::string& section, const std::string& databasePath);
    BOOL Connect();
    void Disconnect();
    bool IsConnected() const { return m_pTexts != nullptr; }
    BOOL GetText(std::string& out, UINT nId, int nKind);
    BOOL LoadText(std::string& out, UINT nId, int nKind);
    BOOL GetTextByKey(std::string& out, const std::string& key, int nKind);
    BOOL TranslateWindow(HWND hwnd, UINT nId, int nKind);
    BOOL TranslateControl(HWND control, int nKind);
    // Top-level items and, in sub-menus, the items that open further
    // sub-menus are looked up by their text, the others by their command id.
    BOOL TranslateMenu(HMENU menu, int nKind, bool bTopLevel = true);
    BOOL ShowMessage(UINT nId, int nKind, UINT nType, int* pResult);
    void SetLanguage(int nLanguage) { m_nLanguage = nLanguage; }
    int GetLanguage() const { return m_nLanguage; }
    int GetUserLanguage();
    BOOL SetResourceHandle(HINSTANCE h);
    BOOL RestoreResourceHandle();
    bool HasSavedResource() const { return m_hSavedResource != nullptr; }
    void SetSourceLanguage(int nLanguage);
    BYTE GetCharSet();
    HFONT CreateLanguageFont(std::string& faceName, int& nHeight);
    const std::string& GetDatabasePath() const { return m_strDatabasePath; }

private:
    BOOL LookupById(std::string& out, UINT nId, int nKind, int nLanguage);

    std::unique_ptr<fw::Dispatch> m_pServer;
    std::unique_ptr<fw::Dispatch> m_pTexts;
    int m_nSourceLanguage = 1031;
    int m_nLanguage = 0;
    fw::UniqueFont m_pFont;
    std::string m_strSection;
    long m_nCookie = -1;
    std::string m_strDatabasePath;
    CLSID m_clsidServer{};
    bool m_bUnavailable = false;  // the last Connect since Open failed
    HINSTANCE m_hSavedResource = nullptr;
};

CTextService& GetTextService();
void BeginTexts(const std::string& section, int nLanguage, HINSTANCE hResource,
                const std::string& databasePath);
void EndTexts();
// A dialog's caption (by the dialog's id) and the given controls (by their
// ids), all of kind 2, in the user's language where the host has them.
void TranslateDialog(HWND dialog, UINT dialogId, std::initializer_list<int> controlIds);
