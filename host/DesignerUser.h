// Plays the user in the template designer with real mouse and keyboard input
// (SendInput), from a thread other than the dialog's: drags sensors from the
// palette onto teeth of the chart, clicks teeth and takes, moves takes, and
// saves. Used by the demo's automatic user and by the tests.
#pragma once
#include <windows.h>
#include <string>

class DesignerUser {
public:
    // `settingsFile`: the Zemblax.ini whose tooth outlines the chart shows.
    DesignerUser(HWND dialog, std::string settingsFile);

    HWND dialog() const { return m_dialog; }
    std::string Caption() const;
    // Drags palette entry `index` (two per sensor: lying, standing) onto the
    // middle of FDI tooth `tooth`, releasing it there.
    void DragSensor(int index, int tooth);
    void ClickTooth(int tooth);
    // Centre of tooth `tooth` in chart client coordinates.
    POINT ToothPoint(int tooth) const;
    // A canvas point on the take with acquisition number `number` (1-based),
    // found by clicking across the canvas and reading the caption; the take
    // is then selected. {-1, -1} when there is none.
    POINT FindTake(int number);
    void ClickCanvas(POINT client);
    void DragCanvas(POINT from, POINT to);
    void ClickControl(int id);
    // Save as: the button, the name typed into the dialog that opens, OK.
    bool SaveAs(const std::string& name);
    // The dialog as it looks now, as a 24-bit BMP file.
    bool Snapshot(const std::string& bmpPath) const;

    static void MoveTo(POINT screen);
    static void Press(DWORD downOrUp);
    static void Type(const std::string& text);
    static void Settle(int ms = 120) { Sleep(ms); }

private:
    POINT ScreenOf(int id, POINT client) const;

    HWND m_dialog;
    std::string m_settings;
};
