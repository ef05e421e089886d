#include "Window1Device.h"

#include "DoEvents.h"
#include "RevisionText.h"

namespace {

// The status letter as shown in messages; a report without one shows nothing
// between the quotes rather than a NUL character in the log.
QString StatusLetter(std::uint8_t status)
{
    return status == 0 ? QString() : QString(QChar::fromLatin1(static_cast<char>(status)));
}

} // namespace

Window1Device::Window1Device(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid,
                             QObject* parent)
    : Window1Base(globals, clock, platform, parent), m_hid(hid)
{
    connect(&VexilRevisionsTimer, &Timer::Action, this, &Window1Device::VexilRevisionsTimer_Action);
}

QString Window1Device::Hex2(int value)
{
    const QString digits = QString::number(value, 16).toUpper();
    return value < 16 ? QLatin1Char('0') + digits : digits;
}

void Window1Device::ReportLine(const QString& text, bool verboseOnly)
{
    m_globals.SetStatusText(text, verboseOnly);
    if (m_globals.m_ProgressWinOpen)
        GetProgressWin().SetActivityLog(text);
}

void Window1Device::ReportUnexpectedStatus(const char* commandName)
{
    ReportLine(QString::fromLatin1(commandName) + QStringLiteral(" unexpected response status \"")
                   + StatusLetter(ResponsePacket.status) + QLatin1Char('"'),
               true);
}

void Window1Device::OpenHid()
{
    m_hid.Close();
    m_globals.m_FirmwareStatus = QStringLiteral("Unknown");
    if (m_hid.Open())
        m_globals.m_FirmwareStatus = QStringLiteral("Main");
    else
        m_globals.SetStatusText(
            QStringLiteral("Unable to open Vexil device. See Vexil Utility Help, Getting Started."), false);
}

bool Window1Device::VexilWriteReadResponse(char cmd)
{
    ProgramPacket answer;
    int timeoutMs = AnswerTimeoutMs;
    std::uint8_t expected = 'A';

    if (cmd != COMMAND_PROGRAM_PACKET)
        WriteFrame.pkt = ProgramPacket{};
    else if (static_cast<std::uint32_t>(WriteFrame.pkt.addr) == LOAD_COMPLETE_ADDRESS)
        expected = 'B';

    WriteFrame.pkt.cmd = cmd;
    if (cmd == COMMAND_ERASE_FLASH)
        timeoutMs = EraseTimeoutMs;

    const bool trace = m_globals.m_TraceMode && m_globals.m_ProgressWinOpen;
    if (trace) {
        QString line = QStringLiteral("write '") + QLatin1Char(cmd) + QLatin1Char('\'');
        if (WriteFrame.pkt.addr != 0) {
            line += QLatin1Char(' ') + QString::number(WriteFrame.pkt.pkno) + QLatin1Char(' ')
                + QString::number(static_cast<std::uint32_t>(WriteFrame.pkt.addr), 16).toUpper() + QLatin1Char(' ');
            for (std::uint8_t byte : WriteFrame.pkt.data)
                line += Hex2(byte);
        }
        GetProgressWin().SetActivityLog(line);
    }

    if (!m_hid.Write(WriteFrame)) {
        ReportLine(QStringLiteral("VexilWriteReadResponse VexilHid Write failed"), true);
        return false;
    }

    const qint64 start = m_clock.Microseconds();
    while ((m_clock.Microseconds() - start) / 1000.0 < timeoutMs) {
        if (m_hid.Read(answer)) {
            ResponsePacket = answer;
            if (answer.status != 0) {
                const double elapsedMs = (m_clock.Microseconds() - start) / 1000.0;
                if (m_globals.m_TraceMode && m_globals.m_ProgressWinOpen)
                    GetProgressWin().SetActivityLog(QStringLiteral("read status '") + StatusLetter(answer.status)
                                                    + QStringLiteral("' ") + QString::number(qRound(elapsedMs))
                                                    + QStringLiteral(" ms"));
                if (answer.status == expected)
                    return true;
            }
        }
        answer = ProgramPacket{};
        // The window is served while the device works (a flash erase takes
        // seconds), as between packets; mExchanging keeps the timers served
        // here from starting an exchange of their own.
        mExchanging = true;
        DoEvents(-1);
        mExchanging = false;
    }

    ReportLine(QStringLiteral("VexilWriteReadResponse VexilHid Read Timed Out"), true);
    return false;
}

bool Window1Device::VexilSync()
{
    if (VexilWriteReadResponse(COMMAND_SYNC))
        return true;
    ReportUnexpectedStatus("COMMAND_SYNC");
    return false;
}

bool Window1Device::VexilBootVersion()
{
    if (!VexilWriteReadResponse(COMMAND_READ_VERSION)) {
        ReportUnexpectedStatus("COMMAND_READ_VERSION");
        return false;
    }
    QString version;
    for (int i = 0; i < 5; ++i)
        version += QChar::fromLatin1(static_cast<char>(ResponsePacket.data[i]));
    ReportLine(QStringLiteral("Vexil Bootloader revision ") + version, false);
    m_globals.m_FirmwareStatus = QStringLiteral("Main");
    return true;
}

bool Window1Device::VexilAppVersion()
{
    if (!VexilWriteReadResponse(COMMAND_GET_APP_VER)) {
        ReportUnexpectedStatus("COMMAND_GET_APP_VER");
        m_globals.m_strMcuRevision = QStringLiteral("N/A");
        return false;
    }
    m_globals.m_strMcuRevision = RevisionText(ResponsePacket.data[0]);
    ReportLine(QStringLiteral("Vexil firmware revision ") + m_globals.m_strMcuRevision, false);
    m_globals.m_FirmwareStatus = QStringLiteral("Main");
    return true;
}

bool Window1Device::CheckVexilRevisions()
{
    bool result = false;
    OpenHid();
    if (m_globals.m_FirmwareStatus == QLatin1String("Main")) {
        if (VexilSync())
            result = VexilAppVersion();
        // Says only that the link opened: a silent device can still take a load.
        SendVexilButton.SetEnabled(true);
    } else {
        SendVexilButton.SetEnabled(false);
    }
    CheckRevisionsNowButton.SetEnabled(true);

    if (result)
        MCUinstalledText.SetText(m_globals.m_strMcuRevision);
    else if (!mStartup)
        MCUinstalledText.SetText(QStringLiteral("--"));
    return result;
}

void Window1Device::VexilRevisionsTimer_Action()
{
    // A check asked for while a load or an exchange runs waits for it to end.
    if (mDeviceBusy || mExchanging) {
        VexilRevisionsTimer.SetMode(Timer::ModeSingle);
        return;
    }
    CheckVexilRevisions();
}
