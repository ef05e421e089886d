#pragma once

#include "Window1Firmware.h"

#include <QString>

// The main window's controller. Every operation of the program hangs off it;
// the widgets in Window1View only draw its controls and forward clicks.
class Window1 : public Window1Firmware {
    Q_OBJECT
public:
    static constexpr int DesignWidth = 600;
    static constexpr int DesignHeight = 570;

    Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, QObject* parent = nullptr);

    QString Title() const { return m_title; }
    void SetTitle(const QString& title);

    void Event_Open();
    void Event_Close();

signals:
    void titleChanged();

private:
    QString m_title = QStringLiteral("Corvane Vexil Utility");
};
