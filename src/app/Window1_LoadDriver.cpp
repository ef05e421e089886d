#include "DoEvents.h"
#include "Version.h"
#include "Window1.h"

#include <QFileInfo>

#include <utility>

namespace {

const QString LoadFailed = QStringLiteral("Vexil firmware load failed");
const QString LoadSucceeded = QStringLiteral("Vexil firmware load has completed successfully\n"
                                             "Remove Vexil power and reconnect it to your transceiver");

} // namespace

void Window1::SendVexilButton_Action()
{
    SendVexilButton.SetEnabled(false);
    SendAllTimer.SetMode(Timer::ModeSingle);
}

bool Window1::_FileSendFirmwareFile_Action()
{
    if (mDeviceBusy || m_loadRunning)
        return true;
    const QString path = m_platform.ChooseFile(QStringLiteral("Send Firmware File"), m_globals.m_FolderPath,
                                               QStringLiteral("Vexil firmware (vexil*.hex);;All files (*)"));
    if (path.isEmpty())
        return true;
    m_chosenFile = path;
    SendVexilButton_Action();
    return true;
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
        // Whoever closed the window during the load still learns how it ended.
        if (loaded || !m_loadEndMessage.isEmpty())
            m_platform.MsgBox(loaded ? LoadSucceeded : m_loadEndMessage);
        emit closeRequested();
        return;
    }

    if (loaded) {
        m_MyYesWindowResponse = m_platform.MyYesWindow(LoadSucceeded, QStringLiteral("Do you want to quit the Vexil Utility?"),
                                                       QStringLiteral("No"));
        if (m_MyYesWindowResponse)
            m_platform.Quit(0);
    } else if (!m_loadEndMessage.isEmpty()) {
        m_platform.MsgBox(m_loadEndMessage);
    }
}

void Window1::SetLoadControlsEnabled(bool enabled)
{
    for (PushButton* button : {&CheckRevisionsNowButton, &DefaultButton, &BrowseButton})
        button->SetEnabled(enabled);
    FolderPath.SetEnabled(enabled);
    FileSendFirmwareFile.SetEnabled(enabled);
}

bool Window1::MaySendRevision(const QString& revision)
{
    const QString device = m_globals.m_strMcuRevision;
    const double running = RevisionValue(device);
    const double offered = RevisionValue(revision);
    if (offered > running)
        return true;
    // Going back, or writing the same again, erases the Vexil for no gain unless the user means it.
    const bool older = offered < running;
    m_MyYesWindowResponse = m_platform.MyYesWindow(
        older ? QStringLiteral("The Vexil runs %1. Replace it with the older %2?").arg(device, revision)
              : QStringLiteral("The Vexil already runs %1. Send %1 to it again?").arg(device),
        older ? QStringLiteral("Older firmware may lack fixes of the one it runs.")
              : QStringLiteral("The Vexil is erased and written again with the same firmware."),
        QStringLiteral("No"));
    if (!m_MyYesWindowResponse)
        m_globals.SetStatusText(
            QStringLiteral("Firmware load cancelled: nothing was sent, and the Vexil still runs firmware revision ") + device,
            false);
    return m_MyYesWindowResponse;
}

bool Window1::SendAll()
{
    const QString chosen = std::exchange(m_chosenFile, QString());
    m_loadEndMessage.clear();
    if (!CheckVexilRevisions()) {
        // A Vexil that opens but never answers would otherwise end the press in silence.
        if (m_globals.m_FirmwareStatus == QLatin1String("Main")) {
            m_loadEndMessage = QStringLiteral("The Vexil does not answer, so nothing was sent to it. Unplug it, plug "
                                              "it in again, wait a few seconds and send again; if it still does not "
                                              "answer, see Troubleshooting in Vexil Utility Help.");
            m_globals.SetStatusText(m_loadEndMessage, false);
        }
        return false;
    }

    // From here to the end the link belongs to this load: the controls that
    // would start an exchange or change the folder are out of use until it ends.
    mDeviceBusy = true;
    SetLoadControlsEnabled(false);
    bool loaded = false;
    ProgressWin* progress = nullptr;
    bool haveFile = true;
    QString revision = MCUavailableText.Text();
    if (chosen.isEmpty()) {
        Checklocalfiles();
        haveFile = HasRequiredFiles();
        if (!haveFile) {
            m_globals.SetStatusText(QStringLiteral("One or more required firmware files is missing."), false);
            m_globals.SetStatusText(QStringLiteral("Copy new files from Corvane server"), false);
            m_platform.MsgBox(QStringLiteral(
                "One or more required firmware files is missing.\n\nCopy new files from Corvane server"));
        }
    } else {
        // The revision in the name is what the Vexil must report afterwards.
        revision = FileRevisionText(QFileInfo(chosen).fileName());
        haveFile = !revision.isEmpty();
        if (!haveFile) {
            const QString refused = QStringLiteral("\"%1\" cannot be sent: its name carries no revision "
                                                   "(vexil<revision>.hex), so the load could not be checked. Nothing "
                                                   "was sent to the Vexil.")
                                        .arg(QFileInfo(chosen).fileName());
            m_globals.SetStatusText(refused, false);
            m_platform.MsgBox(refused);
        }
    }
    if (haveFile && MaySendRevision(revision)) {
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
        loaded = chosen.isEmpty()
            ? VexilLoader()
            : VexilLoadImage(FirmwareImage::FromFile(chosen, QFileInfo(chosen).fileName(), revision));
        if (!loaded) {
            m_globals.SetStatusText(LoadFailed, false);
            // After the failure, what the Vexil now holds and what to do about it.
            ReportLine(m_LastLoad.Describe(), false);
            m_loadEndMessage = LoadFailed + QStringLiteral("\n\n") + m_LastLoad.Describe();
        }
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
    SetLoadControlsEnabled(true);
    CheckVexilRevisions();
    m_globals.SetStatusText(QStringLiteral("Ready"), false);
    SendVexilButton.SetEnabled(true);
    DoEvents(-1);
    return loaded;
}
