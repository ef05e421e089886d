#include "Window1.h"

#include "Version.h"

Window1::Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, QObject* parent)
    : Window1Firmware(globals, clock, platform, hid, parent)
{
}

void Window1::SetTitle(const QString& title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit titleChanged();
}

void Window1::Event_Open()
{
    mStartup = true;
    SetTitle(QStringLiteral("Corvane Vexil Utility Revision " VEXIL_SHORT_VERSION));
    m_globals.m_FirmwareStatus = QStringLiteral("Unknown");
    if (m_globals.m_FolderPath.isEmpty())
        m_globals.m_FolderPath = MakeDefaultFolder();
    FolderPath.SetText(m_globals.m_FolderPath);
    m_globals.SetStatusText(QStringLiteral("Corvane Vexil Utility for OS X Revision " VEXIL_SHORT_VERSION), false);
    WriteFrame = ProgramFrame{};
    ResponsePacket = ProgramPacket{};
    // The folder first: the device check enables the send button whenever the link opens.
    Checklocalfiles();
    CheckVexilRevisions();
    mStartup = false;
}

void Window1::Event_Close()
{
    if (mStartup)
        return;
    hid().Close();
}
