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
    if (Session)
        Session->EndFTPSession(QStringLiteral("Error: The connection timed out. Ending session."));
}
