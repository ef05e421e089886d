#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <functional>
#include <memory>

// The file's bytes; none when it cannot be read.
QByteArray FileBytes(const QString& path);

// A real FTP server run as a child process on a free port of 127.0.0.1, anonymous only. The
// client sees a read-only "/" and a writable "/incoming". vsftpd also offers AUTH TLS with a
// certificate made at start; the client trusts exactly CertificatePath().
class RealFtpServer {
public:
    enum class Kind { Vsftpd, Pyftpdlib };
    explicit RealFtpServer(Kind kind);
    ~RealFtpServer();

    // Waits, bounded, for the server's 220 greeting; on failure says why.
    bool Start(QString* error);
    quint16 Port() const { return m_port; }
    // "/" on disk, root's own and not writable by the anonymous user.
    QString RootPath() const { return m_dir.filePath(QStringLiteral("root")); }
    // "/incoming" on disk. Files put there must be world-readable to be fetched.
    QString IncomingPath() const { return m_dir.filePath(QStringLiteral("root/incoming")); }
    QString CertificatePath() const { return m_dir.filePath(QStringLiteral("cert.pem")); }
    // Every command line received, in order; one is there once its reply reached the client.
    // vsftpd logs PASS as "PASS <password>" whatever was sent.
    QStringList CommandsSeen() const;

    const Kind kind;

private:
    bool Launch(quint16 port, QString* error);

    QTemporaryDir m_dir;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};

// A control-connection peer for replies real servers will not give on demand. It greets with
// replies[0] and answers the client's n-th line with replies[n] (an empty one answers nothing).
class ScriptedFtpPeer : public QObject {
public:
    ScriptedFtpPeer();
    ~ScriptedFtpPeer() override;

    quint16 Port() const { return m_listener.serverPort(); }
    void Send(const QByteArray& bytes) { m_client->write(bytes); }

    QList<QByteArray> replies;
    // Close the connection once the last reply has been sent.
    bool closeAfterLast = false;
    QStringList received;
    std::function<void(const QString&)> onLine; // runs on each line received, before its reply

private:
    void Reply(qsizetype index);

    QTcpServer m_listener;
    QTcpSocket* m_client = nullptr;
    QByteArray m_buffer;
};
