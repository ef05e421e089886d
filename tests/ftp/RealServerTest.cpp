#include "FtpServers.h"
#include "FtpTestSupport.h"

#include <QFile>
#include <QSslCertificate>

#include <gtest/gtest.h>

namespace {

// The session against real servers on 127.0.0.1: each server starts once and serves every mode.
class RealServerTest : public ::testing::Test, protected FtpSessionHarness {
protected:
    // Logs on, runs every operation of a logged-on session and logs off; checks each end and the
    // commands the server saw.
    void RunSession(RealFtpServer& server, bool passive, bool tls)
    {
        SCOPED_TRACE(std::string(passive ? "passive" : "active") + (tls ? " AUTH TLS" : ""));
        session.PassiveMode = passive;
        session.FTPS = tls;
        const qsizetype seenBefore = server.CommandsSeen().size();
        ASSERT_EQ(EndOf([&] { LogonTo(server.Port()); }), QLatin1String("Successful: Connected to Corvane server."));
        ASSERT_EQ(session.CommandSocket->SSLConnected(), tls);
        QFile old(server.IncomingPath() + QStringLiteral("/v1.hex"));
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.close();
        const struct { std::function<void()> start; const char* end; } operations[] = {
            {[&] { session.ServerDirectory = QStringLiteral("/no-such-folder"); session.ChangeDir(); }, "Error: Error: 550"},
            {[&] { session.ServerDirectory = QStringLiteral("/incoming"); session.ChangeDir(); }, "Successful: Directory Change Complete."},
            {[&] { session.GetWorkingDir(); }, "Successful: The working directory has been transferred."},
            {[&] { session.ServerDirectory = QStringLiteral("/incoming/made"); session.MakeDir(); }, "Successful: Directory Created."},
            {[&] { session.ServerDirectory = QStringLiteral("/incoming/made"); session.RemoveDir(); }, "Successful: Empty Directory Removed."},
            {[&] { session.AddFileName(QStringLiteral("v2.hex")); session.AddFileName(QStringLiteral("v1.hex"));
                   session.RenameSingleFile(); },
             "Successful: File Rename Complete."},
            {[&] { session.AddFileName(QStringLiteral("v2.hex")); session.DeleteSingleFile(); }, "Successful: File has been deleted."},
            {[&] { session.GetSystemInfo(); }, "Successful: System information received."},
            {[&] { session.GetStatus(); }, "Successful: System information received."},
            {[&] { session.DirectCommand(QStringLiteral("MKD /")); }, "Error: Error: 5"},
            {[&] { session.DirectCommand(QStringLiteral("TYPE A")); }, "Successful: FTP Direct Command complete"},
            {[&] { session.Logoff(); }, "Successful: Logoff Complete."},
        };
        for (const auto& operation : operations)
            EXPECT_TRUE(EndOf(operation.start).startsWith(QLatin1String(operation.end))) << status->ends.last().toStdString();
        // The server's close after QUIT is not reported (pyftpdlib waits for the data connection to go).
        const qsizetype ends = status->ends.size();
        if (server.kind == RealFtpServer::Kind::Vsftpd) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return session.CommandSocket && session.CommandSocket->LastErrorCode() != 0; }, 5000));
            Settle();
            EXPECT_EQ(status->ends.size(), ends);
        }

        const QString data = passive ? QStringLiteral("PASV") : QStringLiteral("PORT 127,0,0,1,");
        QStringList expected{QStringLiteral("USER anonymous"), QStringLiteral("PASS "), QStringLiteral("CWD /no-such-folder"),
                             QStringLiteral("CWD /incoming"), QStringLiteral("PWD"), QStringLiteral("MKD /incoming/made"),
                             QStringLiteral("RMD /incoming/made"), QStringLiteral("RNFR v1.hex"), QStringLiteral("RNTO v2.hex"),
                             data, QStringLiteral("TYPE I"), QStringLiteral("DELE v2.hex"), data, QStringLiteral("SYST"),
                             data, QStringLiteral("STAT"), QStringLiteral("MKD /"), QStringLiteral("TYPE A"), QStringLiteral("QUIT")};
        if (tls)
            expected = QStringList{QStringLiteral("AUTH TLS"), QStringLiteral("PBSZ 0"), QStringLiteral("PROT P")} + expected;
        const QStringList seen = server.CommandsSeen().mid(seenBefore);
        ASSERT_EQ(seen.size(), expected.size()) << seen.join(QLatin1Char('|')).toStdString();
        for (qsizetype i = 0; i < seen.size(); ++i)
            EXPECT_TRUE(seen[i].startsWith(expected[i])) << seen[i].toStdString() << " is not " << expected[i].toStdString();
    }
};

TEST_F(RealServerTest, Vsftpd)
{
    RealFtpServer server(RealFtpServer::Kind::Vsftpd);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    // A certificate the client does not trust ends the log-on, once, before the user name is sent.
    session.FTPS = true;
    const QString end = EndOf([&] { LogonTo(server.Port()); });
    EXPECT_TRUE(end.startsWith(QLatin1String("Error: Error: 1"))) << end.toStdString();
    const QPointer<FTPCommandSocket> socket = session.CommandSocket;
    ASSERT_TRUE(QTest::qWaitFor([&] { return socket && socket->state() == QAbstractSocket::UnconnectedState; }, 5000));
    Settle();
    EXPECT_EQ(status->ends.size(), 1);
    EXPECT_EQ(server.CommandsSeen(), QStringList{QStringLiteral("AUTH TLS")});

    session.TrustedCertificates = QSslCertificate::fromPath(server.CertificatePath());
    RunSession(server, true, false);
    RunSession(server, false, false);
    RunSession(server, true, true);
}

TEST_F(RealServerTest, Pyftpdlib)
{
    RealFtpServer server(RealFtpServer::Kind::Pyftpdlib);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    RunSession(server, true, false);
    RunSession(server, false, false);
}

} // namespace
