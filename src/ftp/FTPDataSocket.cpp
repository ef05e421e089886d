#include "FTPDataSocket.h"

#include "FTPDirList.h"
#include "FTPSessionClass.h"
#include "FTPStatusClass.h"

#include <QCoreApplication>
#include <QDir>
#include <QSslConfiguration>

#include <array>
#include <cstdio>
#include <utility>

namespace {
constexpr qint64 kReadBufferBytes = 512 * 1024;
} // namespace

void FTPDataListener::incomingConnection(qintptr descriptor)
{
    auto* socket = new QSslSocket(this);
    if (socket->setSocketDescriptor(descriptor))
        addPendingConnection(socket);
    else
        delete socket;
}

FTPDataSocket::FTPDataSocket(FTPSessionClass* session)
    : Session(session)
{
    connect(&m_listener, &QTcpServer::newConnection, this, [this] {
        auto* accepted = static_cast<QSslSocket*>(m_listener.nextPendingConnection());
        // One connection per PORT command; a second caller is not the server's transfer.
        m_listener.close();
        if (accepted) {
            Attach(accepted);
            m_probe.Watch(accepted->socketDescriptor());
            // The server connected, yet the client still leads the handshake.
            if (PrepareTls(accepted))
                accepted->startClientEncryption();
            QMetaObject::invokeMethod(this, &FTPDataSocket::Event_Connected, Qt::QueuedConnection);
        }
    });
}

FTPDataSocket::~FTPDataSocket()
{
    // A closed socket is left alone: the TLS layer's first use may come this
    // late, when the application that owns it is going away.
    if (m_socket && m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
}

FTPDataSocket::Role FTPDataSocket::CurrentRole() const
{
    static const std::array<std::pair<const char*, Role>, 15> roles{{
        {"GetDir", Role::ReceiveFile}, {"GetDirImmediate", Role::ReceiveFile}, {"GetFile", Role::ReceiveFile},
        {"GetSingleFile", Role::ReceiveFile}, {"RestartGetSingleFile", Role::ReceiveFile},
        {"PutDir", Role::SendFile}, {"PutDirImmediate", Role::SendFile}, {"PutFile", Role::SendFile},
        {"PutSingleFile", Role::SendFile}, {"RestartPutSingleFile", Role::SendFile},
        {"GetDirList", Role::ReceiveListing}, {"GetDirListImmediate", Role::ReceiveListing},
        {"DeleteDir", Role::ParseListing}, {"DeleteDirImmediate", Role::ParseListing},
        {"AbortTransfer", Role::Abort},
    }};
    if (!Session)
        return Role::None;
    for (const auto& [type, role] : roles) {
        if (IsType(type)) {
            // The tree walks fetch their listings on the file path.
            if (FileList && (IsType("GetDir") || IsType("GetDirImmediate")))
                return Role::ParseListing;
            return role;
        }
    }
    return Role::None;
}

bool FTPDataSocket::IsType(const char* type) const
{
    return Session && Session->GetFTPSessionType().compare(QLatin1String(type), Qt::CaseInsensitive) == 0;
}

void FTPDataSocket::UpdateTransferStatus(qint64 bytes)
{
    ByteCount = bytes;
    if (Session && Session->FTPStatusInstance)
        Session->FTPStatusInstance->Progress_FTP(ByteCount);
}

bool FTPDataSocket::Fail(const QString& text)
{
    if (Session)
        Session->EndFTPSession(text);
    return false;
}

bool FTPDataSocket::PutFileName(const QString& name)
{
    FileName = name;
    m_sendAllowed = m_sending = false;
    if (CurrentRole() != Role::ReceiveFile)
        return true;
    // A name from the server is used only as a plain name inside the folder.
    if (!FTPIsPlainName(name))
        return Fail("Error writing local file: " + FileName);
    return OpenReceived(QDir(Session->LocalDirectory).filePath(name), IsType("RestartGetSingleFile"));
}

void FTPDataSocket::SetFileFolderItem(const QFileInfo& item)
{
    FileFolderItem = item;
    FileName = item.fileName();
    if (CurrentRole() != Role::ReceiveFile || IsType("RestartGetSingleFile"))
        return;
    if (item.filePath().isEmpty())
        Fail("Error writing local file: " + FileName);
    else
        OpenReceived(item.absoluteFilePath(), false);
}

QString FTPDataSocket::TemporaryPathOf(const QString& target)
{
    const QFileInfo info(target);
    return info.dir().filePath("." + info.fileName() + ".part");
}

bool FTPDataSocket::OpenReceived(const QString& target, bool restart)
{
    CloseReceived();
    m_targetPath = target;
    m_writeFailed = false;
    const QString temporary = TemporaryPathOf(target);
    // A restart resumes what an interrupted fetch kept, else the file itself,
    // which stays untouched until the new bytes are complete.
    if (restart && !QFileInfo::exists(temporary) && QFileInfo::exists(target))
        QFile::copy(target, temporary);
    bs = std::make_unique<QFile>(temporary);
    // Unbuffered: every block received is on disk at once.
    const QIODevice::OpenMode mode = QIODevice::Unbuffered | (restart ? QIODevice::ReadWrite : QIODevice::WriteOnly | QIODevice::Truncate);
    if (!bs->open(mode)) {
        bs.reset();
        return Fail("Error writing local file: " + FileName);
    }
    if (restart) {
        Session->RestartByteCount = bs->size();
        bs->seek(bs->size());
    }
    BeginTransfer();
    return true;
}

void FTPDataSocket::CloseReceived()
{
    if (bs && bs->isOpen()) {
        if (!bs->flush())
            m_writeFailed = true;
        bs->close();
    }
}

bool FTPDataSocket::CommitReceivedFile()
{
    if (!bs || m_targetPath.isEmpty())
        return false;
    CloseReceived();
    const QString target = std::exchange(m_targetPath, QString());
    return !m_writeFailed
        && std::rename(QFile::encodeName(bs->fileName()).constData(), QFile::encodeName(target).constData()) == 0;
}

void FTPDataSocket::BeginTransfer()
{
    m_transferOpen = true;
    FileData.clear();
}

void FTPDataSocket::SetRestartPosition()
{
    // The 213 may come before the connection that opens the file: the
    // position is taken from RestartByteCount when sending starts.
    if (DataStream && DataStream->isOpen() && Session)
        DataStream->seek(Session->RestartByteCount);
}

void FTPDataSocket::AllowSending()
{
    m_sendAllowed = true;
    TrySending();
}

void FTPDataSocket::TrySending()
{
    if (!m_sendAllowed || m_sending || !DataStream || !DataStream->isOpen() || !Session)
        return;
    m_sending = true;
    DataStream->seek(IsType("RestartPutSingleFile") ? Session->RestartByteCount : 0);
    SendBlock(true);
}

void FTPDataSocket::SendBlock(bool first)
{
    if (!Session || !DataStream || !m_socket)
        return;
    const QByteArray block = DataStream->read(Session->SendBufferSize);
    BytesSent = first ? block.size() : BytesSent + block.size();
    const QPointer<FTPDataSocket> self = this;
    UpdateTransferStatus(BytesSent);
    if (!self)
        return; // the report ended the session
    if (block.isEmpty())
        QMetaObject::invokeMethod(this, &FTPDataSocket::Event_SendComplete, Qt::QueuedConnection);
    else
        m_socket->write(block);
}

void FTPDataSocket::ParseDirectoryList(const QString& text)
{
    QString lines = text;
    lines.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& line : lines.split(QLatin1Char('\n'))) {
        if (!Session)
            return;
        const FTPParsedDirListLineClass record = ParseDirListLine(line);
        // A name that is not plain ("a/b", "..", a link's target path) never
        // becomes a path of the walk.
        const bool plain = FTPIsPlainName(record.Name);
        const int index = Session->CurrentDirectoryIndex;
        if (index >= 0 && index < Session->DirList.size()) {
            const std::shared_ptr<FTPDirectoryClass> current = Session->DirList.at(index);
            if (record.IsDir && plain) {
                const QString path = Session->CurrentWorkingDirectory + '/' + record.Name;
                Session->DirList.append(std::make_shared<FTPDirectoryClass>(path, current->GetName()));
                current->AddSubDirectory(path);
            } else if (!record.IsDir && record.IsFile && plain) {
                current->AddFile(record.Name);
            }
        }
        QCoreApplication::processEvents();
    }
}

void FTPDataSocket::Attach(QSslSocket* socket)
{
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket->deleteLater();
    }
    m_probe.Release();
    m_socket = socket;
    m_socket->setParent(this);
    m_lastErrorCode = 0;
    connect(socket, &QAbstractSocket::connected, this, [this, socket] {
        if (socket == m_socket)
            m_probe.Watch(socket->socketDescriptor());
    });
    // A file goes out one small block per completion: waiting to coalesce
    // them would cost a delayed acknowledgement per block.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    // Bounds what waits in memory: the server is held back instead.
    socket->setReadBufferSize(kReadBufferBytes);
    connect(socket, &QAbstractSocket::connected, this, &FTPDataSocket::Event_Connected, Qt::QueuedConnection);
    connect(socket, &QIODevice::readyRead, this, &FTPDataSocket::Event_DataAvailable, Qt::QueuedConnection);
    connect(socket, &QIODevice::bytesWritten, this, [this, socket] {
        if (socket == m_socket && socket->bytesToWrite() == 0)
            QMetaObject::invokeMethod(this, &FTPDataSocket::Event_SendComplete, Qt::QueuedConnection);
    });
    connect(socket, &QAbstractSocket::errorOccurred, this, [this, socket](QAbstractSocket::SocketError error) {
        if (socket != m_socket)
            return;
        m_lastErrorCode = m_probe.Classify(error);
        const int code = m_lastErrorCode;
        QPointer<QTcpSocket> from = socket;
        QMetaObject::invokeMethod(this, [this, from, code] {
            if (from && from == m_socket)
                Event_Error(code);
        }, Qt::QueuedConnection);
    });
}

void FTPDataSocket::Connect(const QString& address, int port)
{
    m_listener.close();
    auto* socket = new QSslSocket(this);
    Attach(socket);
    if (PrepareTls(socket))
        socket->connectToHostEncrypted(address, static_cast<quint16>(port), Session->ServerAddress);
    else
        socket->connectToHost(address, static_cast<quint16>(port));
}

bool FTPDataSocket::PrepareTls(QSslSocket* socket)
{
    if (!m_private || !Session || !Session->CommandSocket)
        return false;
    // The configuration carries the control connection's session ticket too.
    socket->setSslConfiguration(Session->CommandSocket->sslConfiguration());
    socket->setPeerVerifyName(Session->ServerAddress);
    return true;
}

bool FTPDataSocket::Listen(const QHostAddress& address, int port)
{
    Close();
    return m_listener.listen(address, static_cast<quint16>(port));
}

void FTPDataSocket::Close()
{
    m_listener.close();
    m_probe.Release();
    if (m_socket) {
        // What a connection we closed reports later is not news.
        m_socket->disconnect(this);
        // The TLS close comes first: a server reads a bare one as a cut-off upload.
        m_socket->disconnectFromHost();
        m_socket->close();
    }
}

void FTPDataSocket::Poll()
{
    if (m_polling)
        return;
    m_polling = true;
    QPointer<FTPDataSocket> self = this;
    QCoreApplication::processEvents();
    if (self)
        m_polling = false;
}

bool FTPDataSocket::IsConnected() const
{
    return m_socket && m_socket->state() == QAbstractSocket::ConnectedState;
}

void FTPDataSocket::Event_Connected()
{
    const Role role = CurrentRole();
    if (role == Role::SendFile) {
        const bool fromPaths = IsType("PutDir") || IsType("PutDirImmediate");
        const QString local = fromPaths ? Session->Paths.value(Session->CurrentFileIndex)
                                        : QDir(Session->LocalDirectory).filePath(FileName);
        if (!QFileInfo(local).isFile()) {
            Fail("Cannot Find File: " + FileName);
            return Close();
        }
        DataStream = std::make_unique<QFile>(local);
        if (!DataStream->open(QIODevice::ReadOnly)) {
            Fail("Cannot open file: " + FileName);
            return Close();
        }
        const QPointer<FTPDataSocket> self = this;
        TrySending();
        if (self && Session)
            Session->ResetConnectionTimer();
    } else if (role == Role::ReceiveFile || role == Role::ParseListing || IsType("GetDirListImmediate")) {
        Poll();
    }
}

void FTPDataSocket::Event_DataAvailable()
{
    if (!Session || !m_socket || !m_socket->isOpen())
        return;
    // A progress report or a pass of the event loop may end the session, and
    // this socket with it: nothing of this object is touched after one of them.
    const QPointer<FTPDataSocket> self = this;
    switch (CurrentRole()) {
    case Role::ReceiveFile:
        // Only this block is held, in the same buffer each time: it goes to the file at once.
        FileData.resize(m_socket->bytesAvailable());
        FileData.resize(qMax<qint64>(0, m_socket->read(FileData.data(), FileData.size())));
        if (bs && bs->isOpen()) {
            if (bs->write(FileData) != FileData.size()) {
                m_writeFailed = true;
                Fail("Error writing local file: " + FileName);
                return;
            }
            UpdateTransferStatus(bs->pos());
            if (self)
                Poll();
        }
        break;
    case Role::ReceiveListing:
        FileData += m_socket->readAll();
        UpdateTransferStatus(FileData.size());
        if (self)
            Poll();
        break;
    case Role::ParseListing:
        FileData += m_socket->readAll();
        UpdateTransferStatus(FileData.size());
        break;
    default:
        // Bytes on a connection no operation reads are dropped, not piled up.
        m_socket->readAll();
        break;
    }
    if (self && Session)
        Session->ResetConnectionTimer();
}

void FTPDataSocket::Event_Error(int code)
{
    const Role role = CurrentRole();
    const QPointer<FTPDataSocket> self = this;
    // The last bytes may still wait in the socket when its close is handled.
    if (m_socket && m_socket->bytesAvailable() > 0 && role != Role::SendFile && role != Role::Abort) {
        Event_DataAvailable();
        if (!self)
            return;
    }
    // A TLS peer's close leaves the connection up until we close it in turn,
    // and the server may wait for that before its final reply.
    if (m_socket)
        m_socket->close();
    if (!Session)
        return;
    const QString number = QString::number(code);
    const bool closed = code == FTPSocketError::kPeerClosed;
    switch (role) {
    case Role::SendFile:
    case Role::Abort:
        if (DataStream)
            DataStream->close();
        CloseReceived();
        Session->EndFTPSession("Error while sending the file: " + number);
        break;
    case Role::ReceiveFile:
        CloseReceived();
        FileData.clear();
        ByteCount = 0;
        if (!closed)
            Session->EndFTPSession("Error while receiving the file: " + number);
        break;
    case Role::ParseListing:
        if (closed) {
            const QString text = Session->Decode(FileData);
            ParseDirectoryList(text);
            FileData.clear();
            ByteCount = 0;
        } else {
            Session->EndFTPSession("Error while receiving the directory list: " + number);
        }
        break;
    case Role::ReceiveListing:
        if (closed) {
            Session->DirectoryFileList = Session->Decode(FileData);
            FileData.clear();
        } else {
            Session->EndFTPSession("Error while receiving the directory list: " + number);
        }
        break;
    case Role::None:
        break;
    }
    // Ending the session reports, and a report may end this socket too.
    if (self)
        m_transferOpen = false;
}

void FTPDataSocket::Event_SendComplete()
{
    if (!Session)
        return;
    const Role role = CurrentRole();
    if (role == Role::SendFile) {
        if (!DataStream || !DataStream->isOpen())
            return;
        // As on receiving: a report or a pass of the event loop may end this socket.
        const QPointer<FTPDataSocket> self = this;
        if (DataStream->atEnd()) {
            // A close drops what the socket still buffers; the next bytesWritten
            // brings us back once the last block is on its way.
            if (m_socket && m_socket->bytesToWrite() > 0)
                return;
            // Closing the connection tells the server the file is complete.
            UpdateTransferStatus(BytesSent);
            if (!self)
                return;
            DataStream->close();
            Close();
        } else {
            SendBlock(false);
            if (!self)
                return;
            Poll();
        }
        if (self && Session)
            Session->ResetConnectionTimer();
    } else if (role == Role::Abort) {
        if (DataStream)
            DataStream->close();
        Close();
    }
}
