#include "ScriptedFtpServer.h"

#include <QHostAddress>
#include <QSslKey>
#include <QSslSocket>
#include <QFile>
#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

ScriptedFtpServer::ScriptedFtpServer()
{
    connect(&m_Server, &QTcpServer::newConnection, this, &ScriptedFtpServer::OnNewConnection);
    connect(&m_DataServer, &QTcpServer::newConnection, this, &ScriptedFtpServer::OnNewDataConnection);
}

ScriptedFtpServer::~ScriptedFtpServer()
{
    // Deleting a connected socket emits disconnected(); it must not reach a half-destroyed script.
    if (m_Client) {
        disconnect(m_Client, nullptr, this, nullptr);
        delete m_Client;
    }
}

bool ScriptedFtpServer::Listen()
{
    return m_Server.listen(QHostAddress::LocalHost, 0);
}

quint16 ScriptedFtpServer::Port() const
{
    return m_Server.serverPort();
}

ScriptedFtpServer& ScriptedFtpServer::Send(const QByteArray& bytes)
{
    return Queue({Kind::Send, bytes, {}, 0});
}

ScriptedFtpServer& ScriptedFtpServer::Pause(int ms)
{
    return Queue({Kind::Pause, {}, {}, ms});
}

ScriptedFtpServer& ScriptedFtpServer::Expect(const QString& line)
{
    return Queue({Kind::Expect, {}, line, 0});
}

ScriptedFtpServer& ScriptedFtpServer::ExpectPrefix(const QString& prefix)
{
    return Queue({Kind::ExpectPrefix, {}, prefix, 0});
}

ScriptedFtpServer& ScriptedFtpServer::Close()
{
    return Queue({Kind::Close, {}, {}, 0});
}

ScriptedFtpServer& ScriptedFtpServer::Reset()
{
    return Queue({Kind::Reset, {}, {}, 0});
}

ScriptedFtpServer& ScriptedFtpServer::StartTls(const QString& certPath, const QString& keyPath)
{
    return Queue({Kind::StartTls, keyPath.toUtf8(), certPath, 0});
}

void ScriptedFtpServer::Listener::incomingConnection(qintptr descriptor)
{
    auto* socket = new QSslSocket(this);
    if (socket->setSocketDescriptor(descriptor))
        addPendingConnection(socket);
    else
        delete socket;
}

QStringList ScriptedFtpServer::Received() const
{
    return m_Received;
}

QStringList ScriptedFtpServer::Mismatches() const
{
    return m_Mismatches;
}

bool ScriptedFtpServer::Finished() const
{
    return m_Next == m_Steps.size();
}

bool ScriptedFtpServer::ClientConnected() const
{
    return m_Connected;
}

bool ScriptedFtpServer::ClientClosed() const
{
    return m_ClientClosed;
}

quint16 ScriptedFtpServer::OpenDataListener()
{
    if (!m_DataServer.isListening() && !m_DataServer.listen(QHostAddress::LocalHost, 0))
        return 0;
    return m_DataServer.serverPort();
}

int ScriptedFtpServer::DataConnections() const
{
    return m_DataConnections;
}

QByteArray ScriptedFtpServer::Reply227(quint16 port)
{
    return QByteArrayLiteral("227 Entering Passive Mode (127,0,0,1,") + QByteArray::number(port >> 8) + ','
           + QByteArray::number(port & 0xff) + QByteArrayLiteral(").\r\n");
}

ScriptedFtpServer& ScriptedFtpServer::Queue(Step step)
{
    m_Steps.append(std::move(step));
    Run();
    return *this;
}

void ScriptedFtpServer::Run()
{
    // Run() is re-entered from signals emitted while a step runs (lineReceived, disconnected);
    // the outer loop picks up whatever those queued.
    if (m_Running || m_Pausing || m_Stopped || !m_Connected)
        return;
    m_Running = true;
    while (m_Next < m_Steps.size() && !m_Pausing && !m_Stopped) {
        const Step step = m_Steps[m_Next];
        if (!RunStep(step))
            break;
        ++m_Next;
    }
    m_Running = false;
    if (Finished() && m_Announced != m_Next) {
        m_Announced = m_Next;
        emit finished();
    }
}

bool ScriptedFtpServer::RunStep(const Step& step)
{
    const bool open = m_Client && !m_ClientClosed && !m_ClosedByScript;
    switch (step.kind) {
    case Kind::Send:
        if (!open) {
            m_Mismatches.append(Describe(step) + QStringLiteral(": the control connection is already closed"));
            m_Stopped = true;
            return false;
        }
        m_Client->write(step.bytes);
        m_Client->flush();
        return true;
    case Kind::Pause:
        m_Pausing = true;
        QTimer::singleShot(step.ms, this, [this] {
            m_Pausing = false;
            ++m_Next;
            Run();
        });
        return false;
    case Kind::Expect:
    case Kind::ExpectPrefix: {
        if (m_Unconsumed.isEmpty()) {
            if (!open) {
                m_Mismatches.append(Describe(step)
                                    + QStringLiteral(": the control connection closed before the line arrived"));
                m_Stopped = true;
            }
            return false;
        }
        const QString line = m_Unconsumed.takeFirst();
        const bool matches = step.kind == Kind::Expect ? line == step.text : line.startsWith(step.text);
        if (!matches)
            m_Mismatches.append(Describe(step) + QStringLiteral(": got \"%1\"").arg(line));
        return true;
    }
    case Kind::Close:
        if (open) {
            if (m_Client->bytesToWrite() > 0)
                return false;
            // close() would send RST instead of FIN whenever client bytes are still unread, so
            // shut down the sending side and keep reading until the client closes too.
            m_ClosedByScript = true;
            ::shutdown(int(m_Client->socketDescriptor()), SHUT_WR);
        }
        return true;
    case Kind::Reset:
        if (open) {
            m_ClosedByScript = true;
            const qintptr fd = m_Client->socketDescriptor();
            if (fd != -1) {
                const linger hard{1, 0};
                ::setsockopt(int(fd), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
            }
            m_Client->abort();
        }
        return true;
    case Kind::StartTls: {
        auto* tls = qobject_cast<QSslSocket*>(m_Client);
        if (!open || !tls) {
            m_Mismatches.append(Describe(step) + QStringLiteral(": no open connection to secure"));
            m_Stopped = true;
            return false;
        }
        tls->setLocalCertificate(step.text);
        QFile key(QString::fromUtf8(step.bytes));
        if (!key.open(QIODevice::ReadOnly)) {
            m_Mismatches.append(Describe(step) + QStringLiteral(": cannot read the key"));
            m_Stopped = true;
            return false;
        }
        tls->setPrivateKey(QSslKey(&key, QSsl::Rsa));
        m_Pausing = true;
        connect(tls, &QSslSocket::encrypted, this, [this] {
            m_Pausing = false;
            ++m_Next;
            Run();
        }, Qt::SingleShotConnection);
        tls->startServerEncryption();
        return false;
    }
    }
    return false;
}

QString ScriptedFtpServer::Describe(const Step& step) const
{
    const QString number = QStringLiteral("step %1").arg(m_Next + 1);
    switch (step.kind) {
    case Kind::Send:
        return number + QStringLiteral(" (send \"%1\")").arg(QString::fromUtf8(step.bytes.left(40)).trimmed());
    case Kind::Expect:
        return number + QStringLiteral(" (expect \"%1\")").arg(step.text);
    case Kind::ExpectPrefix:
        return number + QStringLiteral(" (expect a line starting \"%1\")").arg(step.text);
    case Kind::Pause:
    case Kind::Close:
    case Kind::Reset:
    case Kind::StartTls:
        break;
    }
    return number;
}

void ScriptedFtpServer::OnNewConnection()
{
    while (QTcpSocket* socket = m_Server.nextPendingConnection()) {
        if (m_Connected) {
            connect(socket, &QAbstractSocket::disconnected, socket, &QObject::deleteLater);
            socket->disconnectFromHost();
            continue;
        }
        m_Client = socket;
        m_Connected = true;
        // Small replies go out as written instead of waiting for Nagle.
        m_Client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(m_Client, &QTcpSocket::readyRead, this, &ScriptedFtpServer::OnReadyRead);
        connect(m_Client, &QTcpSocket::bytesWritten, this, &ScriptedFtpServer::Run);
        connect(m_Client, &QTcpSocket::disconnected, this, &ScriptedFtpServer::OnDisconnected);
        if (m_Client->bytesAvailable() > 0)
            OnReadyRead();
    }
    Run();
}

void ScriptedFtpServer::OnReadyRead()
{
    m_Buffer += m_Client->readAll();
    qsizetype end;
    while ((end = m_Buffer.indexOf("\r\n")) >= 0) {
        const QString line = QString::fromUtf8(m_Buffer.left(end));
        m_Buffer.remove(0, end + 2);
        m_Received.append(line);
        m_Unconsumed.append(line);
        emit lineReceived(line);
    }
    Run();
}

void ScriptedFtpServer::OnDisconnected()
{
    if (m_Client->bytesAvailable() > 0)
        OnReadyRead();
    if (!m_ClosedByScript)
        m_ClientClosed = true;
    Run();
}

void ScriptedFtpServer::OnNewDataConnection()
{
    while (QTcpSocket* socket = m_DataServer.nextPendingConnection()) {
        ++m_DataConnections;
        connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
    }
}
