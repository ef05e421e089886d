#include "FtpServers.h"
#include "FtpTestSupport.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QSslCertificate>

#include <gtest/gtest.h>

#include <functional>

namespace {

struct ServerCase {
    const char* name;
    bool vsftpd;
    bool passive;
};

void PrintTo(const ServerCase& serverCase, std::ostream* os)
{
    *os << serverCase.name;
}

// The session against real servers on 127.0.0.1, in passive and active mode.
class RealServerTest : public ::testing::TestWithParam<ServerCase>, protected FtpSessionHarness {
protected:
    std::unique_ptr<VsftpdServer> vsftpd;
    std::unique_ptr<PyftpdlibServer> pyftpdlib;
    FtpServerFixture* server = nullptr;
    std::function<QStringList()> commandsSeen;

    void SetUp() override
    {
        QString error;
        if (GetParam().vsftpd) {
            vsftpd = std::make_unique<VsftpdServer>();
            ASSERT_TRUE(vsftpd->Start(&error)) << error.toStdString();
            server = vsftpd.get();
            commandsSeen = [this] { return vsftpd->CommandsSeen(); };
        } else {
            pyftpdlib = std::make_unique<PyftpdlibServer>();
            ASSERT_TRUE(pyftpdlib->Start(&error)) << error.toStdString();
            server = pyftpdlib.get();
            commandsSeen = [this] { return pyftpdlib->CommandsSeen(); };
        }
        session.PassiveMode = GetParam().passive;
    }

    // Runs one operation and returns how it ended.
    QString Run(const std::function<void()>& operation)
    {
        operation();
        if (!WaitForEnd())
            return QStringLiteral("(no end reported)");
        return LastEnd();
    }

    QString Incoming(const QString& name = QString()) const
    {
        return QStringLiteral("/") + server->WritableDirName() + (name.isEmpty() ? QString() : QLatin1Char('/') + name);
    }
};

TEST_P(RealServerTest, LoggedOnSessionRunsTheSimpleCommands)
{
    const QString success = QStringLiteral("Successful: ");
    LogonTo(server->Port());
    ASSERT_EQ(Run([] {}), success + QStringLiteral("Connected to Corvane server."));

    session.ServerDirectory = QStringLiteral("/no-such-folder");
    EXPECT_TRUE(Run([&] { session.ChangeDir(); }).startsWith(QLatin1String("Error: Error: 550")));
    ASSERT_TRUE(session.SocketsActive()) << "a failed CWD must not cost the connection";

    session.ServerDirectory = Incoming();
    EXPECT_EQ(Run([&] { session.ChangeDir(); }), success + QStringLiteral("Directory Change Complete."));
    EXPECT_EQ(Run([&] { session.GetWorkingDir(); }), success + QStringLiteral("The working directory has been transferred."));
    const QStringList responses = status->Of(QStringLiteral("Response"));
    EXPECT_TRUE(std::any_of(responses.begin(), responses.end(), [&](const QString& line) {
        return line.startsWith(QLatin1String("257 ")) && line.contains(Incoming());
    })) << responses.join(QLatin1Char('\n')).toStdString();

    session.ServerDirectory = Incoming(QStringLiteral("made"));
    EXPECT_EQ(Run([&] { session.MakeDir(); }), success + QStringLiteral("Directory Created."));
    EXPECT_TRUE(QFileInfo(server->WritablePath() + QStringLiteral("/made")).isDir());
    EXPECT_EQ(Run([&] { session.RemoveDir(); }), success + QStringLiteral("Empty Directory Removed."));
    EXPECT_FALSE(QFileInfo::exists(server->WritablePath() + QStringLiteral("/made")));

    QFile old(server->WritablePath() + QStringLiteral("/vexil0100.hex"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write(":00000001FF\r\n");
    old.close();
    // The old name is taken first, from the end of the queue.
    session.AddFileName(QStringLiteral("vexil0101.hex"));
    session.AddFileName(QStringLiteral("vexil0100.hex"));
    EXPECT_EQ(Run([&] { session.RenameSingleFile(); }), success + QStringLiteral("File Rename Complete."));
    EXPECT_FALSE(QFileInfo::exists(server->WritablePath() + QStringLiteral("/vexil0100.hex")));
    EXPECT_TRUE(QFileInfo::exists(server->WritablePath() + QStringLiteral("/vexil0101.hex")));

    session.AddFileName(QStringLiteral("vexil0101.hex"));
    EXPECT_EQ(Run([&] { session.DeleteSingleFile(); }), success + QStringLiteral("File has been deleted."));
    EXPECT_FALSE(QFileInfo::exists(server->WritablePath() + QStringLiteral("/vexil0101.hex")));

    EXPECT_EQ(Run([&] { session.GetSystemInfo(); }), success + QStringLiteral("System information received."));
    EXPECT_TRUE(status->Of(QStringLiteral("Response")).filter(QRegularExpression(QStringLiteral("^215 "))).size() == 1);
    EXPECT_EQ(Run([&] { session.GetStatus(); }), success + QStringLiteral("System information received."));

    EXPECT_EQ(Run([&] { session.DirectCommand(QStringLiteral("TYPE A")); }), success + QStringLiteral("FTP Direct Command complete"));
    EXPECT_EQ(Run([&] { session.DirectCommand(QStringLiteral("CWD /")); }), success + QStringLiteral("FTP Direct Command complete"));
    EXPECT_TRUE(Run([&] { session.DirectCommand(QStringLiteral("MKD /")); }).startsWith(QLatin1String("Error: Error: 5")));
    ASSERT_TRUE(session.SocketsActive());

    EXPECT_EQ(Run([&] { session.Logoff(); }), success + QStringLiteral("Logoff Complete."));
    QTest::qWait(300); // the server's close must not be reported
    EXPECT_EQ(status->Ends().filter(QStringLiteral("Error: Error: 102")), QStringList{});
    EXPECT_EQ(status->Ends().count(success + QStringLiteral("Logoff Complete.")), 1);

    const QStringList seen = commandsSeen();
    const QString dataCommand = GetParam().passive ? QStringLiteral("PASV") : QStringLiteral("PORT 127,0,0,1,");
    EXPECT_EQ(seen.filter(QRegularExpression(QStringLiteral("^") + dataCommand)).size(), 3)
        << seen.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(seen.contains(QLatin1String("RNFR vexil0100.hex")));
    EXPECT_LT(seen.indexOf(QStringLiteral("RNFR vexil0100.hex")), seen.indexOf(QStringLiteral("RNTO vexil0101.hex")));
    EXPECT_TRUE(seen.contains(QLatin1String("QUIT")));
}

INSTANTIATE_TEST_SUITE_P(Servers, RealServerTest,
                         ::testing::Values(ServerCase{"VsftpdPassive", true, true}, ServerCase{"VsftpdActive", true, false},
                                           ServerCase{"PyftpdlibPassive", false, true},
                                           ServerCase{"PyftpdlibActive", false, false}),
                         [](const ::testing::TestParamInfo<ServerCase>& info) { return std::string(info.param.name); });

class TlsLogonTest : public ::testing::Test, protected FtpSessionHarness {
protected:
    VsftpdServer server{true};

    void SetUp() override
    {
        QString error;
        ASSERT_TRUE(server.Start(&error)) << error.toStdString();
        session.FTPS = true;
    }
};

TEST_F(TlsLogonTest, ControlConnectionIsSecuredAfterAuthTls)
{
    session.TrustedCertificates = QSslCertificate::fromPath(server.CaCertificatePath());
    ASSERT_EQ(session.TrustedCertificates.size(), 1);
    LogonTo(server.Port());
    ASSERT_TRUE(WaitForEnd());
    ASSERT_EQ(LastEnd(), QLatin1String("Successful: Connected to Corvane server."));
    ASSERT_NE(session.CommandSocket, nullptr);
    EXPECT_TRUE(session.CommandSocket->SSLConnected());

    session.ServerDirectory = QStringLiteral("/incoming");
    session.ChangeDir();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: Directory Change Complete."));
    session.Logoff();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(LastEnd(), QLatin1String("Successful: Logoff Complete."));

    const QStringList seen = server.CommandsSeen();
    const QStringList order{QStringLiteral("AUTH TLS"), QStringLiteral("PBSZ 0"), QStringLiteral("PROT P"),
                            QStringLiteral("USER anonymous"), QStringLiteral("CWD /incoming"), QStringLiteral("QUIT")};
    qsizetype at = -1;
    for (const QString& command : order) {
        const qsizetype next = seen.indexOf(command, at + 1);
        EXPECT_GT(next, at) << command.toStdString() << " in " << seen.join(QLatin1Char('|')).toStdString();
        at = next;
    }
    EXPECT_TRUE(status->reports.contains(QLatin1String("Status: \"Sending AUTH\"")));
}

TEST_F(TlsLogonTest, UntrustedCertificateEndsTheLogonWithoutHanging)
{
    LogonTo(server.Port());
    ASSERT_TRUE(WaitForEnd(session.Timeout + 5000));
    EXPECT_TRUE(LastEnd().startsWith(QLatin1String("Error: Error: 1"))) << LastEnd().toStdString();
    EXPECT_FALSE(server.CommandsSeen().contains(QLatin1String("USER anonymous")));
    QTest::qWait(200);
    EXPECT_EQ(status->Ends().size(), 1);
}

} // namespace
