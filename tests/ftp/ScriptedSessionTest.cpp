#include "FtpTestSupport.h"
#include "QtPrinters.h"
#include "FtpServers.h"
#include "ScriptedFtpServer.h"

#include <QSslCertificate>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Replies that real servers will not give on demand, played by a scripted peer.
class ScriptedSessionTest : public ::testing::Test, protected FtpSessionHarness {
protected:
    ScriptedFtpServer server;

    void SetUp() override { ASSERT_TRUE(server.Listen()); }

    void TearDown() override
    {
        EXPECT_EQ(server.Mismatches(), QStringList{});
    }

    // The greeting and an anonymous log-on that succeeds.
    void ScriptLogon(const QByteArray& greeting = "220 Ready\r\n")
    {
        server.Send(greeting)
            .Expect(QStringLiteral("USER anonymous"))
            .Send("331 Password please\r\n")
            .Expect(QStringLiteral("PASS guest@example.org"))
            .Send("230 Logged in\r\n");
    }

    void LogOn()
    {
        LogonTo(server.Port());
        ASSERT_TRUE(WaitForEnd());
        ASSERT_EQ(LastEnd(), QLatin1String("Successful: Connected to Corvane server."));
    }

    bool WaitForScript() { return QTest::qWaitFor([&] { return server.Finished(); }, 5000); }
};

TEST_F(ScriptedSessionTest, ReplySplitAcrossTwoReceivesIsParsedWhenItsLineEnds)
{
    ScriptLogon();
    server.Expect(QStringLiteral("CWD /Vexil/firmware"))
        .Send("250 Directory suc")
        .Pause(150)
        .Send("cessfully changed.\r\n");
    LogOn();
    session.ServerDirectory = QStringLiteral("/Vexil/firmware");
    session.ChangeDir();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: Directory Change Complete."));
    EXPECT_TRUE(status->Of(QStringLiteral("Response")).contains(QLatin1String("250 Directory successfully changed.")));
    EXPECT_FALSE(status->Of(QStringLiteral("Response")).contains(QLatin1String("250 Directory suc")));
}

TEST_F(ScriptedSessionTest, TwoRepliesInOneReceiveAreParsedInOrder)
{
    server.Send("220 Ready\r\n331 Password please\r\n")
        .Expect(QStringLiteral("USER anonymous"))
        .Expect(QStringLiteral("PASS guest@example.org"))
        .Send("230 Logged in\r\n");
    LogOn();
    EXPECT_EQ(server.Received(), (QStringList{QStringLiteral("USER anonymous"), QStringLiteral("PASS guest@example.org")}));
}

TEST_F(ScriptedSessionTest, MultiLineGreetingMovesTheMachineOnce)
{
    // "Microsoft" on a continuation line never reaches the step.
    ScriptLogon("220-Welcome\r\n Served by Microsoft FTP Service\r\n220 Ready\r\n");
    LogOn();
    EXPECT_EQ(server.Received().count(QStringLiteral("USER anonymous")), 1);
    EXPECT_FALSE(session.NT);
    const QStringList responses = status->Of(QStringLiteral("Response"));
    EXPECT_TRUE(responses.contains(QLatin1String(" Served by Microsoft FTP Service")));
}

TEST_F(ScriptedSessionTest, GreetingKindAndRefusals)
{
    const struct {
        QByteArray greeting;
        bool nt;
    } rows[] = {
        {"530 Microsoft FTP Service, not yet\r\n", true}, // 530 greets as well as 220
        {"220 microsoft ftp\r\n", true},
    };
    for (const auto& row : rows) {
        ScriptedFtpServer peer;
        ASSERT_TRUE(peer.Listen());
        peer.Send(row.greeting)
            .Expect(QStringLiteral("USER anonymous"))
            .Send("331 Password please\r\n")
            .Expect(QStringLiteral("PASS guest@example.org"))
            .Send("230 Logged in\r\n");
        LogonTo(peer.Port());
        ASSERT_TRUE(WaitForEnd()) << row.greeting.constData();
        EXPECT_EQ(LastEnd(), QLatin1String("Successful: Connected to Corvane server."));
        EXPECT_EQ(session.NT, row.nt);
        EXPECT_EQ(peer.Mismatches(), QStringList{});
    }
    // A server that needs no password is refused at USER.
    ScriptedFtpServer lax;
    ASSERT_TRUE(lax.Listen());
    lax.Send("220 Ready\r\n").Expect(QStringLiteral("USER anonymous")).Send("230 Come in\r\n");
    LogonTo(lax.Port());
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Error: 230 Come in\n"));
}

TEST_F(ScriptedSessionTest, RefusedPrivateDataChannelContinuesOnlyOn534)
{
    QTemporaryDir dir;
    const QString cert = dir.filePath(QStringLiteral("cert.pem"));
    const QString key = dir.filePath(QStringLiteral("key.pem"));
    QString error;
    ASSERT_TRUE(MakeTestCertificate(cert, key, &error)) << error.toStdString();
    session.FTPS = true;
    session.TrustedCertificates = QSslCertificate::fromPath(cert);

    const struct {
        QByteArray reply;
        const char* end;
    } rows[] = {
        {"534 Request denied for policy reasons.", "Successful: Connected to Corvane server."},
        {"536 Requested PROT level not supported.", "Error: Error: 536 Requested PROT level not supported.\r"},
    };
    for (const auto& row : rows) {
        ScriptedFtpServer peer;
        ASSERT_TRUE(peer.Listen());
        peer.Send("220 Ready\r\n")
            .Expect(QStringLiteral("AUTH TLS"))
            .Send("234 Proceed with negotiation.\r\n")
            .StartTls(cert, key)
            .Expect(QStringLiteral("PBSZ 0"))
            .Send("200 PBSZ=0\r\n")
            .Expect(QStringLiteral("PROT P"))
            .Send(row.reply + "\r\n");
        if (row.reply.startsWith("534")) {
            peer.Expect(QStringLiteral("USER anonymous"))
                .Send("331 Password please\r\n")
                .Expect(QStringLiteral("PASS guest@example.org"))
                .Send("230 Logged in\r\n");
        }
        LogonTo(peer.Port());
        ASSERT_TRUE(WaitForEnd()) << row.reply.constData();
        EXPECT_EQ(LastEnd(), QLatin1String(row.end));
        EXPECT_TRUE(session.CommandSocket->SSLConnected());
        QTest::qWait(50);
        EXPECT_EQ(peer.Mismatches(), QStringList{});
        EXPECT_FALSE(peer.Received().contains(QLatin1String("USER anonymous")) && row.reply.startsWith("536"));
    }
}

TEST_F(ScriptedSessionTest, BareCodeIsFinalOnlyForTestA)
{
    ScriptLogon();
    server.Expect(QStringLiteral("MODE S"))
        .Send("200\r\n")
        .Pause(150)
        .Send("200 Mode set.\r\n")
        .Expect(QStringLiteral("PWD"))
        .Send("257\r\n");
    LogOn();
    session.DirectCommand(QStringLiteral("MODE S"));
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: FTP Direct Command complete"));
    // The bare line was seen but did not end the operation.
    const QStringList responses = status->Of(QStringLiteral("Response"));
    ASSERT_GE(responses.indexOf(QStringLiteral("200")), 0);
    EXPECT_LT(responses.indexOf(QStringLiteral("200")), responses.indexOf(QStringLiteral("200 Mode set.")));

    session.GetWorkingDir();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: The working directory has been transferred."));
}

TEST_F(ScriptedSessionTest, DirectCommandTakesAnyTwoHundredCode)
{
    const struct {
        const char* reply;
        const char* end;
    } rows[] = {
        {"200 Command okay.", "Successful: FTP Direct Command complete"},
        {"226 Closing data connection.", "Successful: FTP Direct Command complete"},
        {"250 Requested file action okay.", "Successful: FTP Direct Command complete"},
        {"331 User name okay, need password.", "Error: Error: 331 User name okay, need password.\n"},
    };
    ScriptLogon();
    for (const auto& row : rows)
        server.Expect(QStringLiteral("SITE HELP")).Send(QByteArray(row.reply) + "\r\n");
    LogOn();
    for (const auto& row : rows) {
        session.DirectCommand(QStringLiteral("SITE HELP"));
        ASSERT_TRUE(WaitForEnd()) << row.reply;
        EXPECT_EQ(LastEnd(), QLatin1String(row.end));
        // A failed command leaves the session logged on.
        EXPECT_NE(session.CommandSocket, nullptr);
    }
}

TEST_F(ScriptedSessionTest, OneCommandOperationsSendTheirCommandAndTakeTheirCode)
{
    const struct {
        std::function<void(FTPSessionClass&)> start;
        const char* command;
        const char* reply;
        const char* end; // empty: ends without a report
    } rows[] = {
        {[](FTPSessionClass& s) { s.ParentDir(); }, "CDUP", "250 OK.", "Successful: Directory Change Complete."},
        {[](FTPSessionClass& s) { s.ChmodMask = QStringLiteral("644"); s.AddFileName(QStringLiteral("vexil0114.hex")); s.ChmodSingleFile(); },
         "SITE CHMOD 644 vexil0114.hex", "200 SITE CHMOD command ok.", "Successful: Chmod Command Complete."},
        {[](FTPSessionClass& s) { s.SITECommand(QStringLiteral("UMASK 022")); }, "SITE UMASK 022", "200 UMASK set to 022.",
         "Successful: FTP SITE command complete"},
        {[](FTPSessionClass& s) { s.SITECommand(QStringLiteral("IDLE 60")); }, "SITE IDLE 60", "250 Odd but final.",
         "Error: Error: 250 Odd but final.\n"},
        {[](FTPSessionClass& s) { s.AbortTransfer(); }, "ABOR", "226 Abort successful.", "Successful: Transfer Aborted"},
        {[](FTPSessionClass& s) { s.AbortTransfer(); }, "ABOR", "226 Closing data connection.", ""},
        {[](FTPSessionClass& s) { s.AbortTransfer(); }, "ABOR", "225 No transfer to ABOR.", "Error: Error: 225 No transfer to ABOR.\n"},
    };
    ScriptLogon();
    for (const auto& row : rows)
        server.Expect(QLatin1String(row.command)).Send(QByteArray(row.reply) + "\r\n");
    LogOn();
    for (const auto& row : rows) {
        const qsizetype before = status->Ends().size();
        row.start(session);
        if (*row.end) {
            ASSERT_TRUE(WaitForEnd()) << row.command;
            EXPECT_EQ(LastEnd(), QLatin1String(row.end)) << row.command;
        } else {
            const QString line = QString::fromLatin1(row.reply);
            ASSERT_TRUE(QTest::qWaitFor([&] { return status->Of(QStringLiteral("Response")).contains(line); }, 5000));
            EXPECT_EQ(status->Ends().size(), before);
            EXPECT_FALSE(session.ConnectionTimer->isActive());
        }
    }
    ASSERT_TRUE(WaitForScript());
}

TEST_F(ScriptedSessionTest, PasswordNeverReachesAReport)
{
    server.Send("220 Ready\r\n")
        .Expect(QStringLiteral("USER vexil"))
        .Send("331 Password please\r\n")
        .Expect(QStringLiteral("PASS secret"))
        .Send("230 Logged in\r\n");
    LogonTo(server.Port(), QStringLiteral("vexil"), QStringLiteral("secret"));
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: Connected to Corvane server."));
    EXPECT_TRUE(status->Of(QStringLiteral("Response")).contains(QLatin1String("PASS")));
    EXPECT_FALSE(status->reports.join(QLatin1Char('\n')).contains(QLatin1String("secret")));
    EXPECT_FALSE(LogLines().join(QLatin1Char('\n')).contains(QLatin1String("secret")));
}

TEST_F(ScriptedSessionTest, SilenceTimesOutAndKeepsTheConnection)
{
    server.Send("220 Ready\r\n").Expect(QStringLiteral("USER anonymous"));
    session.Timeout = 300;
    LogonTo(server.Port());
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Error: The connection timed out. Ending session."));
    EXPECT_TRUE(session.IgnoreCancel);
    ASSERT_NE(session.CommandSocket, nullptr);
    EXPECT_TRUE(session.CommandSocket->IsConnected());
    EXPECT_NE(session.DataSocket, nullptr);
    QTest::qWait(400);
    EXPECT_EQ(status->Ends().size(), 1); // the timer fired once
    EXPECT_FALSE(server.ClientClosed());
}

TEST_F(ScriptedSessionTest, OperationAfterTheServerDroppedTheConnection)
{
    ScriptLogon();
    server.Pause(50).Close();
    LogOn();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Error: 102"));
    session.ServerDirectory = QStringLiteral("/Vexil/firmware");
    session.ChangeDir();
    ASSERT_TRUE(WaitForEnd(0));
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Connection Lost."));
    EXPECT_EQ(session.GetFTPSessionType(), QLatin1String("Logon"));
    QTest::qWait(100);
    EXPECT_FALSE(server.Received().contains(QLatin1String("CWD /Vexil/firmware")));
}

TEST_F(ScriptedSessionTest, LogoffWithTheServerClosingAtOnce)
{
    ScriptLogon();
    server.Expect(QStringLiteral("QUIT")).Send("221 Goodbye.\r\n").Close();
    LogOn();
    session.Logoff();
    ASSERT_TRUE(WaitForEnd());
    ASSERT_TRUE(WaitForScript());
    QTest::qWait(200); // room for a late error report
    EXPECT_EQ(status->Ends(), (QStringList{QStringLiteral("Successful: Connected to Corvane server."),
                                          QStringLiteral("Successful: Logoff Complete.")}));
    EXPECT_FALSE(globals.FTPError);
    EXPECT_TRUE(LogLines().contains(QLatin1String("Ready")));
    EXPECT_FALSE(session.ConnectionTimer->isActive());
}

TEST_F(ScriptedSessionTest, OverlongReplyLineEndsTheSession)
{
    ScriptLogon();
    server.Send(QByteArray(FTPSessionClass::kMaxReplyLineBytes + 10, 'A'));
    LogOn();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Error: The server sent a reply line longer than 65536 bytes. Ending session."));
    EXPECT_EQ(session.CommandSocket, nullptr);
    EXPECT_TRUE(session.Buffer.isEmpty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.ClientClosed(); }, 3000));
}

TEST_F(ScriptedSessionTest, PassiveReplyWithABadPortEndsTheOperationOnly)
{
    ScriptLogon();
    server.Expect(QStringLiteral("PASV"))
        .Send("227 Entering Passive Mode (127,0,0,1,300,1).\r\n")
        .Expect(QStringLiteral("CWD /"))
        .Send("250 OK\r\n");
    server.OpenDataListener();
    LogOn();
    session.AddFileName(QStringLiteral("vexil0100.hex"));
    session.DeleteSingleFile();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Error: Error: The server's passive mode reply names no valid port: "
                                       "227 Entering Passive Mode (127,0,0,1,300,1)."));
    session.ServerDirectory = QStringLiteral("/");
    session.ChangeDir();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: Directory Change Complete."));
    EXPECT_EQ(server.DataConnections(), 0);
    EXPECT_FALSE(server.Received().contains(QLatin1String("TYPE I")));
}

TEST_F(ScriptedSessionTest, PassiveDataConnectionGoesToTheControlPeer)
{
    ScriptLogon();
    const quint16 dataPort = server.OpenDataListener();
    // The reply names another host; the connection must still reach this one.
    const QByteArray reply = "227 Entering Passive Mode (10,0,0,5," + QByteArray::number(dataPort / 256) + ","
                             + QByteArray::number(dataPort % 256) + ").\r\n";
    server.Expect(QStringLiteral("PASV"))
        .Send(reply)
        .Expect(QStringLiteral("TYPE I"))
        .Send("200 Type set to I.\r\n")
        .Expect(QStringLiteral("DELE vexil0100.hex"))
        .Send("250 Deleted.\r\n");
    LogOn();
    session.AddFileName(QStringLiteral("vexil0100.hex"));
    session.DeleteSingleFile();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: File has been deleted."));
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.DataConnections() == 1; }, 3000));
    EXPECT_EQ(session.DataSocket->GetFileName(), QLatin1String("vexil0100.hex"));
}

TEST_F(ScriptedSessionTest, ForcedNoopGoesToTheServer)
{
    ScriptLogon();
    server.Expect(QStringLiteral("NOOP")).Send("200 NOOP ok.\r\n");
    LogOn();
    session.NextFTPStep(QStringLiteral("WAIT"), QStringLiteral("FORCENOOP"), QStringLiteral("Get file "));
    ASSERT_TRUE(WaitForScript());
    EXPECT_TRUE(status->reports.contains(QLatin1String("Response: FORCENOOP")));
    EXPECT_TRUE(status->reports.contains(QLatin1String("Status: Get file ")));
}

} // namespace
