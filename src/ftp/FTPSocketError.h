#pragma once

#include <QAbstractSocket>

// The client's socket error numbers, the ones its error texts show. The peer's
// orderly close is 102, which the transfer and log-off steps treat as an end
// rather than a fault; every other condition has a number of its own, a reset
// (110) included, so that a reset mid-transfer never passes for the end of a file.
namespace FTPSocketError {
inline constexpr int kOther = 100;
inline constexpr int kPeerClosed = 102;
inline constexpr int kHostNotFound = 103;
inline constexpr int kConnectionRefused = 104;
inline constexpr int kAddressInUse = 105;
inline constexpr int kTimedOut = 106;
inline constexpr int kNetwork = 107;
inline constexpr int kTlsHandshakeFailed = 108;
inline constexpr int kTlsProtocol = 109;
inline constexpr int kPeerReset = 110;
} // namespace FTPSocketError

// The one place where Qt's socket errors become the client's numbers.
int FTPSocketErrorCode(QAbstractSocket::SocketError error);

// Tells a reset from an orderly close. The socket layer reports both as the
// peer's close and has closed its descriptor by then, so the probe keeps a
// duplicate of it from the connection on and asks the kernel for the state
// the connection ended in.
class FTPResetProbe {
public:
    FTPResetProbe() = default;
    FTPResetProbe(const FTPResetProbe&) = delete;
    FTPResetProbe& operator=(const FTPResetProbe&) = delete;
    ~FTPResetProbe() { Release(); }

    void Watch(qintptr descriptor);
    // The error number for a socket error, kPeerReset for a reset.
    int Classify(QAbstractSocket::SocketError error);
    // Lets the connection go: the peer sees our close only once this is done.
    void Release();

private:
    int m_fd = -1;
};
