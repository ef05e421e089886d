#include "FTPStatusClass.h"

#include "FirmwareServer.h"
#include "Globals.h"

FTPStatusClass::FTPStatusClass(Globals& globals, FTPSessionClass* session)
    : Session(session), m_globals(globals)
{
}

void FTPStatusClass::Error_FTP(const QString& text)
{
    m_globals.UpdateTimeStamp();
    m_globals.FTPError = true;
    m_globals.FTPDone = true;
    m_globals.SetStatusText(text, true);
}

void FTPStatusClass::Progress_FTP(qint64 bytes)
{
    // This application shows no transfer meter.
    Q_UNUSED(bytes);
}

void FTPStatusClass::Successful_FTP(const QString& text)
{
    m_globals.UpdateTimeStamp();
    const auto is = [&](const char* known) { return text.compare(QLatin1String(known), Qt::CaseInsensitive) == 0; };
    QString shown = text;
    bool verboseOnly = true;
    if (is("File Transfer Complete.")) {
        shown = QStringLiteral("Copied \"") + m_globals.FTPFile + QStringLiteral("\" from Corvane");
        verboseOnly = false;
    } else if (is("Connected to Corvane server.")) {
        verboseOnly = false;
    } else if (is("Logoff Complete.")) {
        shown = QStringLiteral("Ready");
        verboseOnly = false;
    }
    m_globals.FTPDone = true;
    m_globals.SetStatusText(shown, verboseOnly);
}

void FTPStatusClass::Response_FTP(const QString& text)
{
    m_globals.UpdateTimeStamp();
    if (text.isEmpty())
        return;
    // One "Copying files" line per download, however many files it fetches.
    if (text.left(4).compare(QLatin1String("RETR"), Qt::CaseInsensitive) == 0 && !m_globals.mRETR) {
        m_globals.mRETR = true;
        m_globals.SetStatusText(QStringLiteral("Copying files to \"") + m_globals.m_FolderPath + QLatin1Char('"'), false);
        return;
    }
    m_globals.SetStatusText(text, true);
}

QString FTPStatusClass::FormatBytes(qint64 bytes)
{
    if (bytes > 1048576)
        return QString::number(bytes / 1048576.0, 'f', 1) + QStringLiteral(" MB");
    if (bytes >= 1025)
        return QString::number(bytes / 1024.0, 'f', 0) + QStringLiteral(" KB");
    return QString::number(bytes) + QStringLiteral(" bytes");
}

void FTPStatusClass::Status_FTP(const QString& text)
{
    m_globals.UpdateTimeStamp();
    // Only the connecting message is for every user; the rest is trace detail.
    m_globals.SetStatusText(text, text.compare(FirmwareServer::ConnectingMessage(), Qt::CaseInsensitive) != 0);
}
