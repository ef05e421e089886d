#include "ProgressWin.h"

#include "DoEvents.h"

ProgressWin::ProgressWin(QObject* parent) : QObject(parent)
{
    connect(&CloseIt, &PushButton::Action, this, &ProgressWin::CloseIt_Action);
}

void ProgressWin::Show()
{
    m_visible = true;
    emit shown();
}

void ProgressWin::Close()
{
    if (!m_visible)
        return;
    m_visible = false;
    emit closed();
}

void ProgressWin::SetActivityLog(const QString& text)
{
    ActivityLog.AppendText(text + QLatin1Char('\n'));
    ActivityLog.SetScrollPosition(ActivityLog.LineOfEnd());
    Refresh();
    ActivityLog.Refresh();
    DoEvents(-1);
}

void ProgressWin::CloseIt_Action()
{
    Close();
}
