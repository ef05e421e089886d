#include "Window1.h"

#include "Version.h"

Window1::Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, QObject* parent)
    : Window1Firmware(globals, clock, platform, hid, parent)
{
    connect(&CheckRevisionsNowButton, &PushButton::Action, this, &Window1::CheckRevisionsNowButton_Action);
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
    m_globals.SetStatusText(QStringLiteral("Corvane Vexil Utility for OS X Revision " VEXIL_SHORT_VERSION), false);
    WriteFrame = ProgramFrame{};
    ResponsePacket = ProgramPacket{};
    CheckVexilRevisions();
    mStartup = false;
}

void Window1::Event_Close()
{
    if (mStartup)
        return;
    hid().Close();
}

void Window1::CheckRevisionsNowButton_Action()
{
    CheckRevisionsNowButton.SetEnabled(false);
    VexilRevisionsTimer.SetMode(Timer::ModeSingle);
}
