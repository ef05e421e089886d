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
        QFile old(server.IncomingPath() + QStringLiteral("/old.hex"));
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.close();
        const auto in = [&](const char* path, void (FTPSessionClass::*operation)()) {
            return [this, path, operation] {
                session.ServerDirectory = QLatin1String(path);
                (session.*operation)();
            };
        };
        // end: its beginning
        const struct { std::function<void()> start; const char* end; } operations[] = {
            {in("/no-such-folder", &FTPSessionClass::ChangeDir), "Error: Error: 550"},
            {in("/incoming", &FTPSessionClass::ChangeDir), "Successful: Directory Change Complete."},
            {[&] { session.GetWorkingDir(); }, "Successful: The working directory has been transferred."},
            {in("/incoming/made", &FTPSessionClass::MakeDir), "Successful: Directory Created."},
            {in("/incoming/made", &FTPSessionClass::RemoveDir), "Successful: Empty Directory Removed."},
            {[&] { session.AddFileName(QStringLiteral("new.hex")); session.AddFileName(QStringLiteral("old.hex")); session.RenameSingleFile(); },
             "Successful: File Rename Complete."},
            {[&] { session.AddFileName(QStringLiteral("new.hex")); session.DeleteSingleFile(); }, "Successful: File has been deleted."},
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
            ASSERT_TRUE(QTest::qWaitFor([&] { return session.CommandSocket->LastErrorCode() != 0; }, 5000));
            Settle();
            EXPECT_EQ(status->ends.size(), ends);
        }

        const QString data = passive ? QStringLiteral("PASV") : QStringLiteral("PORT 127,0,0,1,");
        QStringList expected{QStringLiteral("USER anonymous"), QStringLiteral("PASS "), QStringLiteral("CWD /no-such-folder"),
                             QStringLiteral("CWD /incoming"), QStringLiteral("PWD"), QStringLiteral("MKD /incoming/made"),
                             QStringLiteral("RMD /incoming/made"), QStringLiteral("RNFR old.hex"), QStringLiteral("RNTO new.hex"),
                             data, QStringLiteral("TYPE I"), QStringLiteral("DELE new.hex"), data, QStringLiteral("SYST"),
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
    EXPECT_TRUE(EndOf([&] { LogonTo(server.Port()); }).startsWith(QLatin1String("Error: Error: 1"))) << status->ends.last().toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.CommandSocket->state() == QAbstractSocket::UnconnectedState; }, 5000));
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
