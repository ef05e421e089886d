#include "FTPConnectionTimer.h"

#include "FTPSessionClass.h"

FTPConnectionTimer::FTPConnectionTimer(FTPSessionClass* session)
    : Session(session)
{
    setSingleShot(true);
    connect(this, &QTimer::timeout, this, &FTPConnectionTimer::Event_Action);
}

void FTPConnectionTimer::Event_Action()
{
    stop();
    if (!Session)
        return;
    // The session may delete this timer inside the report; it then goes later.
    Firing = true;
    Session->EndFTPSession(QStringLiteral("Error: The connection timed out. Ending session."));
    if (!Session)
        return;
    Firing = false;
}
