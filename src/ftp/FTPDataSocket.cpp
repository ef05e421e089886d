#include "FTPDataSocket.h"

#include "FTPSessionClass.h"
#include "FTPSocketError.h"
#include "FTPStatusClass.h"

#include <QCoreApplication>

FTPDataSocket::FTPDataSocket(FTPSessionClass* session)
    : Session(session)
{
    connect(&m_listener, &QTcpServer::newConnection, this, [this] {
        QTcpSocket* accepted = m_listener.nextPendingConnection();
        // One connection per PORT command; a second caller is not the server's transfer.
        m_listener.close();
        if (accepted) {
            Attach(accepted);
            QMetaObject::invokeMethod(this, &FTPDataSocket::Event_Connected, Qt::QueuedConnection);
        }
    });
}

FTPDataSocket::~FTPDataSocket()
{
    if (m_socket)
        m_socket->abort();
}

void FTPDataSocket::UpdateTransferStatus(qint64 bytes)
{
    ByteCount = bytes;
    if (Session && Session->FTPStatusInstance)
        Session->FTPStatusInstance->Progress_FTP(ByteCount);
}

void FTPDataSocket::PutFileName(const QString& name)
{
    FileName = name;
}

void FTPDataSocket::Attach(QTcpSocket* socket)
{
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket->deleteLater();
    }
    m_socket = socket;
    m_socket->setParent(this);
    m_lastErrorCode = 0;
    connect(socket, &QAbstractSocket::connected, this, &FTPDataSocket::Event_Connected, Qt::QueuedConnection);
    connect(socket, &QIODevice::readyRead, this, &FTPDataSocket::Event_DataAvailable, Qt::QueuedConnection);
    connect(socket, &QIODevice::bytesWritten, this, [this, socket] {
        if (socket == m_socket && socket->bytesToWrite() == 0)
            QMetaObject::invokeMethod(this, &FTPDataSocket::Event_SendComplete, Qt::QueuedConnection);
    });
    connect(socket, &QAbstractSocket::errorOccurred, this, [this, socket](QAbstractSocket::SocketError error) {
        if (socket != m_socket)
            return;
        m_lastErrorCode = FTPSocketErrorCode(error);
        const int code = m_lastErrorCode;
        QMetaObject::invokeMethod(this, [this, code] { Event_Error(code); }, Qt::QueuedConnection);
    });
}

void FTPDataSocket::Connect(const QString& address, int port)
{
    m_listener.close();
    Attach(new QTcpSocket(this));
    m_socket->connectToHost(address, static_cast<quint16>(port));
}

bool FTPDataSocket::Listen(const QHostAddress& address, int port)
{
    Close();
    return m_listener.listen(address, static_cast<quint16>(port));
}

void FTPDataSocket::Close()
{
    m_listener.close();
    if (m_socket)
        m_socket->close();
}

void FTPDataSocket::Poll()
{
    QCoreApplication::processEvents();
}

bool FTPDataSocket::IsConnected() const
{
    return m_socket && m_socket->state() == QAbstractSocket::ConnectedState;
}

void FTPDataSocket::Event_Connected()
{
    // What arrives or leaves depends on the session's operation; the operations
    // of a logged-on session that only open the data side move nothing.
}

void FTPDataSocket::Event_DataAvailable()
{
    if (!Session || !m_socket)
        return;
    // Nothing here takes data yet: bytes on an unused data connection are
    // dropped rather than left to pile up.
    m_socket->readAll();
    Session->ResetConnectionTimer();
}

void FTPDataSocket::Event_Error(int code)
{
    if (!Session)
        return;
    if (Session->GetFTPSessionType().compare(QLatin1String("AbortTransfer"), Qt::CaseInsensitive) == 0)
        Session->EndFTPSession(QStringLiteral("Error while sending the file: ") + QString::number(code));
}

void FTPDataSocket::Event_SendComplete()
{
    if (!Session)
        return;
    if (Session->GetFTPSessionType().compare(QLatin1String("AbortTransfer"), Qt::CaseInsensitive) == 0) {
        if (DataStream)
            DataStream->close();
        Close();
    }
}
