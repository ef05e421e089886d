#pragma once

#include <QByteArray>
#include "FTPSocketError.h"

#include <QSslSocket>

class FTPSessionClass;

// The control connection. It starts in plain text; with AUTH TLS the session
// secures it in place. Its events run queued, from the event loop, so that a
// step machine may wait on the loop (the TLS handshake does) without sitting
// inside the socket's own signal, where Qt would hold back further reads.
class FTPCommandSocket : public QSslSocket {
    Q_OBJECT
public:
    // The connection type that allows securing the connection after it opened.
    static constexpr int kConnectionTypeTLS = 3;

    explicit FTPCommandSocket(FTPSessionClass* session);

    // Null once the session has dropped this socket: its late events are ignored.
    FTPSessionClass* Session;

    void SetConnectionType(int code) { m_connectionType = code; }
    int ConnectionType() const { return m_connectionType; }
    // True starts the TLS handshake on the open connection.
    void SetSecure(bool secure);
    bool SSLConnected() const { return isEncrypted(); }

    void Connect(const QString& address, int port);
    void Write(const QByteArray& bytes);
    QByteArray ReadAll() { return readAll(); }
    // Serves pending events, waiting for one when none is pending.
    void Poll();
    bool IsConnected() const { return state() == QAbstractSocket::ConnectedState; }
    int LastErrorCode() const { return m_lastErrorCode; }
    QString AddressText() const { return peerAddress().toString(); }
    QString LocalAddressText() const { return localAddress().toString(); }

private:
    void Event_DataAvailable();
    void Event_Error(int code);

    FTPResetProbe m_probe;
    int m_connectionType = 0;
    int m_lastErrorCode = 0;
};
