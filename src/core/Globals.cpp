#include "Globals.h"

#include "DoEvents.h"

void Globals::SetStatusText(const QString& text, bool verboseOnly)
{
    const bool shown = !(verboseOnly && !m_Verbose);
    if (shown)
        m_StatusMsg = text;
    if (m_sink)
        m_sink->StatusPosted(text, shown);
    // Last, so that a nested call from a timer cannot mix with this message.
    DoEvents(-1);
}

void Globals::UpdateTimeStamp()
{
    if (m_sink)
        m_sink->StatusPosted(QString(), false);
}
