#include "Globals.h"

#include "DoEvents.h"
#include "Window1Base.h"

void Globals::SetStatusText(const QString& text, bool verboseOnly)
{
    if (m_window)
        m_window->UpdateTimeStamp();
    if (m_window && !(verboseOnly && !m_Verbose)) {
        m_StatusMsg = text;
        m_window->SetStatus();
    }
    // Last, so that a nested call from a timer cannot mix with this message.
    DoEvents(-1);
}

void Globals::UpdateTimeStamp()
{
    if (m_window)
        m_window->UpdateTimeStamp();
}
