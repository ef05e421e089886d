#include "FTPSocketError.h"

int FTPSocketErrorCode(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::RemoteHostClosedError:
        return FTPSocketError::kPeerClosed;
    case QAbstractSocket::HostNotFoundError:
        return FTPSocketError::kHostNotFound;
    case QAbstractSocket::ConnectionRefusedError:
        return FTPSocketError::kConnectionRefused;
    case QAbstractSocket::AddressInUseError:
        return FTPSocketError::kAddressInUse;
    case QAbstractSocket::SocketTimeoutError:
        return FTPSocketError::kTimedOut;
    case QAbstractSocket::NetworkError:
        return FTPSocketError::kNetwork;
    case QAbstractSocket::SslHandshakeFailedError:
        return FTPSocketError::kTlsHandshakeFailed;
    case QAbstractSocket::SslInternalError:
    case QAbstractSocket::SslInvalidUserDataError:
        return FTPSocketError::kTlsProtocol;
    default:
        return FTPSocketError::kOther;
    }
}
