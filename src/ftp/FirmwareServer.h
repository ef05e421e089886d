#pragma once

#include <QString>

// The maker's firmware server and the anonymous log-on it expects. The
// preference keys "FTPServer" and "FTPPort" may point a download elsewhere (a
// mirror, a test server); the connecting message keeps this name regardless.
namespace FirmwareServer {

inline constexpr char kHost[] = "ftp.corvane.com";
inline constexpr int kPort = 21;
// Anonymous servers ask for an e-mail address as the password.
inline constexpr char kAnonymousPassword[] = "vexil-utility@corvane.com";

inline QString ConnectingMessage()
{
    return QStringLiteral("Connecting to ") + QLatin1String(kHost)
        + QStringLiteral(". Please be patient, this takes a few seconds.");
}

} // namespace FirmwareServer
