#pragma once

#include "FTPSocketError.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QSslSocket>
#include <QTcpServer>

#include <memory>

class FTPSessionClass;

// Accepts the server's active-mode connection as a socket that can be
// secured, as a passive one can.
class FTPDataListener : public QTcpServer {
protected:
    void incomingConnection(qintptr descriptor) override;
};

// The session's one data connection, made once per log-on and set up again for
// every transfer: either it connects to the server's passive port, or it
// listens on an active-mode port for the server to connect.
//
// A received file goes to a temporary file beside its target, "." + name +
// ".part", and is renamed over the target only when the transfer is complete;
// an interrupted fetch leaves the target as it was and keeps its bytes in the
// temporary file, from which a restart resumes.
class FTPDataSocket : public QObject {
    Q_OBJECT
public:
    explicit FTPDataSocket(FTPSessionClass* session);
    ~FTPDataSocket() override;

    QString FileName;
    bool FileList = false;
    qint64 BytesSent = 0;
    std::unique_ptr<QFile> DataStream;
    qint64 ByteCount = 0;
    std::unique_ptr<QFile> bs;
    QByteArray FileData;
    // Null once the session has dropped this socket: its late events are ignored.
    FTPSessionClass* Session;
    QFileInfo FileFolderItem;

    void UpdateTransferStatus(qint64 bytes);
    void SetFileFolderItem(const QFileInfo& item);
    QString GetFileName() const { return FileName; }
    void SetFileList() { FileList = true; }
    void ParseDirectoryList(const QString& text);
    // Stores the name; for a received file it also opens the temporary file.
    // False when that failed and the session has been ended.
    bool PutFileName(const QString& name);
    void SetRestartPosition();

    // The server has opened the upload (150 or 125 to STOR): the first block
    // goes out once the connection is up too. Sending earlier would reach a
    // server that has not yet been told what the bytes are.
    void AllowSending();
    // A transfer starts: what arrives from now on belongs to it.
    void BeginTransfer();
    // The data side of the transfer has closed and nothing is left over.
    bool TransferDone() const { return !m_transferOpen && FileData.isEmpty(); }
    // The received file renamed over its target; false when that failed.
    bool CommitReceivedFile();
    static QString TemporaryPathOf(const QString& target);

    // Drops any earlier connection and connects to a passive port.
    void Connect(const QString& address, int port);
    // Drops any earlier connection and waits for the server on this port of the
    // given local address; false when the port cannot be had.
    bool Listen(const QHostAddress& address, int port);
    void Close();
    // After PROT P every data connection is a TLS client, in both modes, with
    // the control connection's trust, its peer name and its session resumed
    // (a server may insist on that, as proof that both come from one client).
    void SetPrivate(bool on) { m_private = on; }
    // Services the connection now; not again from inside itself.
    void Poll();
    bool IsConnected() const;
    bool IsListening() const { return m_listener.isListening(); }
    int LastErrorCode() const { return m_lastErrorCode; }

private:
    // What the session's operation does with this connection, classed once
    // from its type.
    enum class Role { None, ReceiveFile, SendFile, ReceiveListing, ParseListing, Abort };
    Role CurrentRole() const;
    bool IsType(const char* type) const;

    void Attach(QSslSocket* socket);
    // Gives the socket the control connection's TLS setup; false when the
    // connection stays plain.
    bool PrepareTls(QSslSocket* socket);
    void Event_Connected();
    void Event_DataAvailable();
    void Event_Error(int code);
    void Event_SendComplete();
    bool OpenReceived(const QString& target, bool restart);
    void CloseReceived();
    void SendBlock(bool first);
    void TrySending();
    bool Fail(const QString& text);

    FTPDataListener m_listener;
    QPointer<QSslSocket> m_socket;
    FTPResetProbe m_probe;
    QString m_targetPath;
    int m_lastErrorCode = 0;
    bool m_transferOpen = false;
    bool m_sendAllowed = false;
    bool m_sending = false;
    bool m_writeFailed = false;
    bool m_polling = false;
    bool m_private = false;
};
