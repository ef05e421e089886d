#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtGlobal>

#include <memory>

class QDeadlineTimer;
class QProcess;

// A self-signed certificate for 127.0.0.1 (CN and subjectAltName IP) and its key, made by openssl.
bool MakeTestCertificate(const QString& certPath, const QString& keyPath, QString* error);

// What both real-server fixtures share: a temporary folder holding the served tree, the server
// process, and its shutdown. Start() blocks (bounded) because it runs before the client exists.
//
// Layout: RootPath() is what the client sees as "/", root-owned, mode 0755, not writable by the
// anonymous user; WritablePath() is "/incoming" in it, where anonymous may MKD, RMD, RNFR/RNTO,
// DELE and STOR, but which cannot itself be removed or renamed. Both folders exist right after
// construction, so a test may place files before Start(). Files the test creates must be
// world-readable to be downloadable (vsftpd refuses others); QFile gives 0644 under the usual
// umask, QTemporaryFile gives 0600. On vsftpd the client acts as user "ftp": it may delete or
// rename what the test puts directly in WritablePath(), but not write into a folder the test
// makes there (root-owned) unless the test chowns it.
//
// CommandsSeen() holds a command at the latest once its reply has reached the client.
//
// The destructor stops the server (SIGTERM, SIGKILL after a bounded wait, then any leftover
// per-connection process of this fixture) and removes the temporary folder.
class FtpServerFixture {
public:
    FtpServerFixture(const FtpServerFixture&) = delete;
    FtpServerFixture& operator=(const FtpServerFixture&) = delete;

    // Starts on a free port of 127.0.0.1 and waits (at most 10 s) until it greets with 220.
    // On failure returns false with the reason, including the server's output and log tail.
    virtual bool Start(QString* error) = 0;
    // Every command line received so far by any session, in order.
    virtual QStringList CommandsSeen() const = 0;

    // 0 until Start() has succeeded.
    quint16 Port() const { return m_Port; }
    QString RootPath() const;
    QString WritableDirName() const { return QStringLiteral("incoming"); }
    QString WritablePath() const;

protected:
    struct Launch {
        QString program;
        QStringList arguments;
    };

    FtpServerFixture();
    virtual ~FtpServerFixture();

    // Writes whatever one start attempt needs for these ports and says how to run the server;
    // an empty program means failure, with the reason in *error.
    virtual Launch PrepareAttempt(quint16 port, quint16 pasvMin, quint16 pasvMax, QString* error) = 0;
    // Log tails worth showing when the server does not come up.
    virtual QString Diagnostics() const = 0;

    bool StartServer(const QString& serverName, QString* error);
    QString FilePath(const QString& name) const;
    static QString TailOf(const QString& path, int lines);

    QTemporaryDir m_Dir;
    QString m_SetupError;

private:
    enum class Outcome { Serving, Exited, Failed };
    Outcome WaitUntilServing(const QString& serverName, const QDeadlineTimer& deadline, QString* error);
    void Stop();
    void KillStrays();

    std::unique_ptr<QProcess> m_Process;
    QStringList m_Arguments;
    quint16 m_Port = 0;
    bool m_Started = false;
};

// vsftpd run as its own process (not the system service), anonymous only.
//
// vsftpd asks anonymous for a password (331) like any public server: the client's log-on refuses
// a 230 in answer to USER.
// CommandsSeen() comes from vsftpd's protocol log, which is not byte-exact: PASS always appears as
// "PASS <password>" whatever was sent, the command word is upper-cased ("noop" shows as "NOOP"),
// and every byte outside printable ASCII shows as '?' (UTF-8 "é" becomes "??"). vsftpd also takes
// a bare LF as a line end, so "NOOP x\ny" counts as two commands.
class VsftpdServer : public FtpServerFixture {
public:
    explicit VsftpdServer(bool tls = false);
    ~VsftpdServer() override;

    bool Start(QString* error) override;
    QStringList CommandsSeen() const override;
    // TLS only (empty otherwise): the self-signed certificate the server presents, CN and
    // subjectAltName IP 127.0.0.1; trust exactly this file.
    QString CaCertificatePath() const;

protected:
    Launch PrepareAttempt(quint16 port, quint16 pasvMin, quint16 pasvMax, QString* error) override;
    QString Diagnostics() const override;

private:
    bool MakeCertificate(QString* error);

    bool m_Tls;
};

// pyftpdlib (Debian's python3-pyftpdlib) run by /usr/bin/python3, anonymous only.
//
// It answers "USER anonymous" with 331 and takes any password. CommandsSeen() holds every line
// exactly as received, PASS included.
class PyftpdlibServer : public FtpServerFixture {
public:
    PyftpdlibServer();
    ~PyftpdlibServer() override;

    bool Start(QString* error) override;
    QStringList CommandsSeen() const override;

protected:
    Launch PrepareAttempt(quint16 port, quint16 pasvMin, quint16 pasvMax, QString* error) override;
    QString Diagnostics() const override;
};
