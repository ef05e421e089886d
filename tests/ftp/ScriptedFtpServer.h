#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpServer>

class QTcpSocket;

// An FTP control-connection peer that plays a fixed script, for replies and timings real servers
// will not produce on demand (split replies, odd bytes, resets). Event-driven only: it makes
// progress while the test spins the Qt event loop.
//
// The script is played on the first connection accepted; later connections are closed at once.
// Steps run strictly in order and may be queued before or after the client connects.
//
// Once the control connection is gone (closed by the client, or by Close()/Reset()), a Send, or
// an Expect/ExpectPrefix with no line left to take, can no longer run: the script stops there,
// records a mismatch and Finished() stays false. Pause, Close and Reset still run, so a script
// may end with Close() after the client quit.
class ScriptedFtpServer : public QObject {
    Q_OBJECT
public:
    ScriptedFtpServer();
    ~ScriptedFtpServer() override;

    // 127.0.0.1, free port; false on failure.
    bool Listen();
    quint16 Port() const;

    // Writes these bytes (no CR LF added) at once; what the kernel cannot take yet follows as the
    // event loop runs.
    ScriptedFtpServer& Send(const QByteArray& bytes);
    // Waits this long before the next step, so that two Sends reach the client as two receive events.
    ScriptedFtpServer& Pause(int ms);
    // Takes the next complete client line (CR LF stripped), including one that arrived before this
    // step ran, and records a mismatch unless it equals line exactly.
    ScriptedFtpServer& Expect(const QString& line);
    // Same, but only the beginning must match.
    ScriptedFtpServer& ExpectPrefix(const QString& prefix);
    // Orderly close: FIN once everything sent so far has left, then the server goes on reading
    // (into Received()) until the client closes its end.
    ScriptedFtpServer& Close();
    // Abortive close: SO_LINGER {on, 0} and then abort(), so the kernel sends RST. abort() alone
    // sends FIN unless unread data happens to be pending. Whatever the client has not yet read
    // may be dropped by the reset, so put a Pause between a Send and a Reset.
    ScriptedFtpServer& Reset();
    // Answers the client's TLS handshake with this certificate and key, and runs the next step
    // once the connection is secured; later lines go both ways encrypted.
    ScriptedFtpServer& StartTls(const QString& certPath, const QString& keyPath);

    // Every line the client sent, in order, CR LF stripped; also those after the script ended.
    QStringList Received() const;
    // Human-readable failures of Expect/ExpectPrefix, and steps that could not run; empty when all
    // matched.
    QStringList Mismatches() const;
    // Every queued step has run.
    bool Finished() const;
    // A client has connected (stays true after it is gone).
    bool ClientConnected() const;
    // The client closed or aborted the control connection before the script did.
    bool ClientClosed() const;

    // A second listener on 127.0.0.1 for passive data connections, opened on the first call; later
    // calls return the same port. It keeps the connections it accepts open and discards what they
    // carry.
    quint16 OpenDataListener();
    int DataConnections() const;

    // "227 Entering Passive Mode (127,0,0,1,p1,p2).\r\n"
    static QByteArray Reply227(quint16 port);

signals:
    void lineReceived(const QString& line);
    void finished();

private:
    enum class Kind { Send, Pause, Expect, ExpectPrefix, Close, Reset, StartTls };
    struct Step {
        Kind kind;
        QByteArray bytes;
        QString text;
        int ms = 0;
    };

    ScriptedFtpServer& Queue(Step step);
    void Run();
    bool RunStep(const Step& step);
    void OnNewConnection();
    void OnReadyRead();
    void OnDisconnected();
    void OnNewDataConnection();
    QString Describe(const Step& step) const;

    // Accepts every connection as a TLS-capable socket that starts in plain text.
    class Listener : public QTcpServer {
    protected:
        void incomingConnection(qintptr descriptor) override;
    };

    Listener m_Server;
    QTcpServer m_DataServer;
    QTcpSocket* m_Client = nullptr;
    QList<Step> m_Steps;
    qsizetype m_Next = 0;
    qsizetype m_Announced = -1;
    QByteArray m_Buffer;
    QStringList m_Unconsumed;
    QStringList m_Received;
    QStringList m_Mismatches;
    int m_DataConnections = 0;
    bool m_Connected = false;
    bool m_ClientClosed = false;
    bool m_ClosedByScript = false;
    bool m_Pausing = false;
    bool m_Stopped = false;
    bool m_Running = false;
};
