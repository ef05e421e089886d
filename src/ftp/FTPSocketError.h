#pragma once

#include <QAbstractSocket>

// The client's socket error numbers, the ones its error texts show. The peer's
// orderly close is 102, which the transfer and log-off steps treat as an end
// rather than a fault; every other condition has a number of its own.
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
} // namespace FTPSocketError

// The one place where Qt's socket errors become the client's numbers.
int FTPSocketErrorCode(QAbstractSocket::SocketError error);
