#include "FTPSocketError.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

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

void FTPResetProbe::Watch(qintptr descriptor)
{
    Release();
    if (descriptor >= 0)
        m_fd = ::dup(static_cast<int>(descriptor));
}

int FTPResetProbe::Classify(QAbstractSocket::SocketError error)
{
    int code = FTPSocketErrorCode(error);
    if (code == FTPSocketError::kPeerClosed && m_fd >= 0) {
        // A close by FIN leaves the connection half open (CLOSE_WAIT); a reset closes it.
        tcp_info info{};
        socklen_t length = sizeof info;
        if (::getsockopt(m_fd, IPPROTO_TCP, TCP_INFO, &info, &length) == 0 && info.tcpi_state == TCP_CLOSE)
            code = FTPSocketError::kPeerReset;
    }
    Release();
    return code;
}

void FTPResetProbe::Release()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}
