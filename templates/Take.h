// One exposure of a template: sensor and orientation, holder, the teeth it must
// show and the rectangle of its image in the 1024 x 768 layout space.
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "fw/IniSection.h"

class CTake {
public:
    CTake() = default;
    virtual ~CTake() = default;

    // Persistence: section "Take_<template>_<take>" of the template's INI file.
    bool Read(int nTemplate, int nTake, const std::string& file);
    bool Read(const fw::IniSection& section, int nTake);  // the section already read
    bool Write(int nTemplate, int nTake, const std::string& file);
    // The section's keys and values in the order they are written.
    fw::IniSection::KeyValues SectionKeys() const;
    void MarkSaved() { m_bModified = FALSE; }
    void CopyFrom(const CTake& other);

    // Teeth: FDI numbers as bytes, unique, ascending with a 0 always last.
    void ToggleTooth(int tooth);
    void SetTeeth(const std::vector<BYTE>& teeth);
    const std::vector<BYTE>& GetTeeth() const { return m_teeth; }
    bool HasTeeth() const { return !m_teeth.empty(); }
    std::string GetTeethString() const;
    std::string GetToothLabel() const;
    BYTE GetCenterTooth() const;
    std::string GetCenterToothString() const;
    int GetQuadrant() const;

    int GetSensor() const { return m_nSensor; }
    bool SetSensor(int n);
    int GetHolder() const { return m_nHolder; }
    bool SetHolder(int n);
    int GetPosition() const { return m_nPosition; }
    void SetPosition(int n);
    bool IsVertical() const { return m_bVertical != 0; }
    SIZE GetPictureSize() const { return {m_nPictureWidth, m_nPictureHeight}; }
    RECT GetRect() const { return m_rect; }
    POINT GetTopLeft() const { return {m_rect.left, m_rect.top}; }
    int GetZoomNumerator() const { return static_cast<int>(m_nZoomNum); }
    int GetZoomDenominator() const { return static_cast<int>(m_nZoomDen); }
    bool IsModified() const { return m_bModified != 0; }

    // Placement in the layout area; see Placement.cpp.
    bool MoveTo(int x, int y);
    bool MoveBy(int dx, int dy);
    bool FitsLayoutArea() const;
    bool ClampToLayoutArea();
    void ZoomIn();
    void ZoomOut();
    void Rotate();
    bool Place(int x, int y, UINT num, UINT den);

private:
    bool FitPosition(int& x, int& y) const;
    void RecomputeRect();
    void ClipZoom();
    void FinishZoom(UINT oldNum, UINT oldDen);

    std::vector<BYTE> m_teeth;
    int m_nSensor = 0;
    int m_nHolder = 0;
    int m_nPosition = 0;
    BOOL m_bVertical = FALSE;
    int m_nPictureWidth = 0;
    int m_nPictureHeight = 0;
    RECT m_rect{0, 0, 0, 0};
    UINT m_nZoomNum = 1;
    UINT m_nZoomDen = 1;
    BOOL m_bModified = FALSE;
};
