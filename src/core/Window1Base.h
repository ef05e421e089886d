#pragma once

#include "Clock.h"
#include "Globals.h"
#include "Label.h"
#include "PlatformServices.h"
#include "ProgressWin.h"
#include "PushButton.h"
#include "RevisionedFilename.h"
#include "StatusSink.h"
#include "TextArea.h"
#include "Timer.h"

#include <QObject>

// The part of the main window every layer shares: its controls as models, the
// start-up flag, the status log and the progress window's accessor. The layers
// above add their operations by deriving from it, so that each operation stays
// in the library of its subsystem while remaining a method of the main window.
class Window1Base : public QObject, public StatusSink {
    Q_OBJECT
public:
    Window1Base(Globals& globals, Clock& clock, PlatformServices& platform, QObject* parent = nullptr);
    ~Window1Base() override;

    Label MCUinstalledText{QStringLiteral("??.??")};
    Label MCUavailableText{QStringLiteral("missing")};
    PushButton CheckRevisionsNowButton{QStringLiteral("Check Revisions Now")};
    PushButton SendVexilButton{QStringLiteral("Send Firmware to Vexil"), false};
    TextArea StatusField;
    Timer VexilRevisionsTimer{250};

    bool mStartup = true;
    RevisionedFilename m_RevisionedFilename;

    // Appends Globals.m_StatusMsg to StatusField with the time stamp.
    void SetStatus();
    void UpdateTimeStamp();
    // Globals' lines: every one stamps the activity time, a shown one lands in the log.
    void StatusPosted(const QString& text, bool shown) override;

    // The status log's events. It takes no typing, but the user may select,
    // copy, cut, paste and delete through shortcuts and its pop-up menu.
    void StatusField_Open();
    void StatusField_TextChange();
    // True when the key was a shortcut and is used up here.
    bool StatusField_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers);
    // True when the click was contextual and its menu has been shown.
    bool StatusField_MouseDown(int x, int y, bool contextual);

    // The one-message window: shown without waiting for the user.
    void MyMsgBox(const QString& text) { m_platform.MyMsgBox(text); }

    // The progress window; touching it creates one when none is open.
    ProgressWin& GetProgressWin();
    bool HasProgressWin() const { return m_progressWin != nullptr; }

    Globals& globals() { return m_globals; }
    Clock& clock() { return m_clock; }
    PlatformServices& platform() { return m_platform; }

signals:
    void progressWinCreated(ProgressWin* window);

protected:
    Globals& m_globals;
    Clock& m_clock;
    PlatformServices& m_platform;

private:
    ProgressWin* m_progressWin = nullptr;
};
