#include "DoEvents.h"
#include "Version.h"
#include "Window1.h"

void Window1::SendVexilButton_Action()
{
    SendVexilButton.SetEnabled(false);
    SendAllTimer.SetMode(Timer::ModeSingle);
}

void Window1::SendAllTimer_Action()
{
    if (mDeviceBusy || m_loadRunning)
        return;
    // Pressed while a revision check waits for the device: start once it is done.
    if (mExchanging) {
        SendAllTimer.SetMode(Timer::ModeSingle);
        return;
    }
    // From the first exchange to the last the window stays open: see Event_CancelClose.
    m_loadRunning = true;
    const bool loaded = SendAll();
    m_loadRunning = false;
    if (m_closeWhenLoadEnds) {
        m_closeWhenLoadEnds = false;
        emit closeRequested();
        return;
    }

    if (loaded) {
        m_MyYesWindowResponse = m_platform.MyYesWindow(
            QStringLiteral("Vexil firmware load has completed successfully\n"
                           "Remove Vexil power and reconnect it to your transceiver"),
            QStringLiteral("Do you want to quit the Vexil Utility?"), QStringLiteral("No"));
        if (m_MyYesWindowResponse)
            m_platform.Quit(0);
    }
}

bool Window1::SendAll()
{
    if (!CheckVexilRevisions())
        return false;

    // From here to the end the link belongs to this load: the other controls
    // stay usable, but none of them may start an exchange of its own.
    mDeviceBusy = true;
    bool loaded = false;
    Checklocalfiles();
    ProgressWin* progress = nullptr;
    if (!HasRequiredFiles()) {
        m_globals.SetStatusText(QStringLiteral("One or more required firmware files is missing."), false);
        m_globals.SetStatusText(QStringLiteral("Copy new files from Corvane server"), false);
        m_platform.MsgBox(
            QStringLiteral("One or more required firmware files is missing.\n\nCopy new files from Corvane server"));
    } else {
        progress = &GetProgressWin();
        progress->Left = Bounds().left() + 50;
        progress->Top = Bounds().top() + 150;
        progress->CloseIt.SetEnabled(false);
        progress->Show();
        m_globals.m_ProgressWinOpen = true;
        progress->SetActivityLog(QStringLiteral("Corvane Vexil Utility for OSX revision " VEXIL_SHORT_VERSION));
        GetOSVersion();
        StatusField.SetScrollPosition(StatusField.LineOfEnd());
        m_RevisionedFilename.m_strpath = m_RevisionedFilename.m_mstrPath;
        progress->ProgressBar1.SetValue(0);
        loaded = VexilLoader();
        if (!loaded)
            m_globals.SetStatusText(QStringLiteral("Vexil firmware load failed"), false);
    }

    // With trace on, the window stays for reading until the user closes it.
    if (progress && m_globals.m_TraceMode) {
        progress->CloseIt.SetEnabled(true);
        progress->SetActivityLog(QStringLiteral("Click \"Close\" to close this window"));
        progress->ProgressBar1.SetMaximum(100);
        progress->ProgressBar1.SetValue(progress->ProgressBar1.Maximum());
        progress->Refresh();
    } else if (progress) {
        progress->Close();
    }
    m_globals.m_ProgressWinOpen = false;

    mDeviceBusy = false;
    CheckVexilRevisions();
    m_globals.SetStatusText(QStringLiteral("Ready"), false);
    SendVexilButton.SetEnabled(true);
    DoEvents(-1);
    return loaded;
}
