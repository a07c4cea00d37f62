// A holder type: its colours on the layout and which orientations it allows.
#pragma once
#include <windows.h>
#include <string>

class CHolder {
public:
    explicit CHolder(const std::string& name = std::string()) : m_strName(name) {}
    virtual ~CHolder() = default;

    const std::string& GetName() const { return m_strName; }
    COLORREF GetColor() const { return m_crColor; }
    COLORREF GetInactiveColor() const { return m_crInactiveColor; }
    COLORREF GetTextColor() const { return m_crTextColor; }
    bool IsHorizontalAllowed() const { return m_bHorizontal != 0; }
    bool IsVerticalAllowed() const { return m_bVertical != 0; }
    bool Allows(bool bVertical) const { return bVertical ? IsVerticalAllowed() : IsHorizontalAllowed(); }

    void SetName(const std::string& name) { m_strName = name; }
    void SetColor(COLORREF c) { m_crColor = c; }
    void SetInactiveColor(COLORREF c) { m_crInactiveColor = c; }
    void SetTextColor(COLORREF c) { m_crTextColor = c; }
    void SetOrientations(BOOL bHorizontal, BOOL bVertical) {
        m_bHorizontal = bHorizontal;
        m_bVertical = bVertical;
    }

private:
    std::string m_strName;
    COLORREF m_crColor = RGB(255, 255, 255);
    COLORREF m_crInactiveColor = RGB(196, 196, 196);
    COLORREF m_crTextColor = RGB(0, 0, 0);
    BOOL m_bHorizontal = TRUE;
    BOOL m_bVertical = TRUE;
};
