#include "FTPCommandSocket.h"

#include "FTPSessionClass.h"
#include "FTPSocketError.h"

#include <QCoreApplication>
#include <QEventLoop>

FTPCommandSocket::FTPCommandSocket(FTPSessionClass* session)
    : Session(session)
{
    connect(this, &QIODevice::readyRead, this, &FTPCommandSocket::Event_DataAvailable, Qt::QueuedConnection);
    connect(this, &QAbstractSocket::connected, this, [this] { m_probe.Watch(socketDescriptor()); });
    connect(this, &QAbstractSocket::disconnected, this, [this] { m_probe.Release(); });
    connect(this, &QAbstractSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
        m_lastErrorCode = m_probe.Classify(error);
        const int code = m_lastErrorCode;
        QMetaObject::invokeMethod(this, [this, code] { Event_Error(code); }, Qt::QueuedConnection);
    });
}

void FTPCommandSocket::SetSecure(bool secure)
{
    if (secure && m_connectionType == kConnectionTypeTLS && !isEncrypted())
        startClientEncryption();
}

void FTPCommandSocket::Connect(const QString& address, int port)
{
    connectToHost(address, static_cast<quint16>(port));
}

void FTPCommandSocket::Write(const QByteArray& bytes)
{
    write(bytes);
}

void FTPCommandSocket::Poll()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void FTPCommandSocket::Event_DataAvailable()
{
    if (Session)
        Session->CommandDataAvailable(this);
}

void FTPCommandSocket::Event_Error(int code)
{
    if (Session)
        Session->CommandSocketError(this, code);
}
