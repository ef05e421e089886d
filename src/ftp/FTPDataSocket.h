#pragma once

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

class FTPSessionClass;

// The session's one data connection, made once per log-on and set up again for
// every transfer: either it connects to the server's passive port, or it
// listens on an active-mode port for the server to connect.
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
    QString GetFileName() const { return FileName; }
    void SetFileList() { FileList = true; }
    void PutFileName(const QString& name);

    // Drops any earlier connection and connects to a passive port.
    void Connect(const QString& address, int port);
    // Drops any earlier connection and waits for the server on this port of the
    // given local address; false when the port cannot be had.
    bool Listen(const QHostAddress& address, int port);
    void Close();
    void Poll();
    bool IsConnected() const;
    bool IsListening() const { return m_listener.isListening(); }
    int LastErrorCode() const { return m_lastErrorCode; }

private:
    void Attach(QTcpSocket* socket);
    void Event_Connected();
    void Event_DataAvailable();
    void Event_Error(int code);
    void Event_SendComplete();

    QTcpServer m_listener;
    QPointer<QTcpSocket> m_socket;
    int m_lastErrorCode = 0;
};
