#include "FtpServers.h"
#include "FtpTestSupport.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace {

const QString kConnected = QStringLiteral("Successful: Connected to Corvane server.");

// The replies of an anonymous log-on that succeeds, then these.
QList<QByteArray> Logon(const QList<QByteArray>& more = {})
{
    return QList<QByteArray>{"220 Ready\r\n", "331 Password please\r\n", "230 Logged in\r\n"} + more;
}

// Replies that real servers will not give on demand, played by a scripted peer.
class ScriptedSessionTest : public ::testing::Test, protected FtpSessionHarness {
protected:
    ScriptedFtpPeer peer;

    void LogOn()
    {
        LogonTo(peer.Port());
        ASSERT_EQ(Ends(1), QStringList{kConnected});
    }
};

TEST(ScriptedLogonTest, GreetingsAndHostileReplies)
{
    const QByteArray overlong(FTPSessionClass::kMaxReplyLineBytes + 10, 'A');
    const struct { QList<QByteArray> replies; QStringList ends; bool nt; } rows[] = {
        // Only the last line of a multi-line greeting moves the machine; the server kind is not read from a continuation.
        {{"220-Welcome\r\n Served by Microsoft FTP Service\r\n220 Ready\r\n", "331 Password\r\n", "230 In\r\n"}, {kConnected}, false},
        {{"530 Microsoft FTP Service, not yet\r\n", "331 Password\r\n", "230 In\r\n"}, {kConnected}, true},
        {{"220 microsoft ftp\r\n", "331 Password\r\n", "230 In\r\n"}, {kConnected}, true},
        // Two replies in one read are handled in order.
        {{"220 Ready\r\n331 Password please\r\n", "", "230 In\r\n"}, {kConnected}, false},
        // A server that asks no password is refused.
        {{"220 Ready\r\n", "230 Come in\r\n"}, {QStringLiteral("Error: Error: 230 Come in\n")}, false},
        // A line without end, even behind a complete one in the same read, ends the session before the memory.
        {{"220 Ready\r\n", "331 Password\r\n", "230 In\r\n" + overlong},
         {kConnected, QStringLiteral("Error: Error: The server sent a reply line longer than 65536 bytes. Ending session.")},
         false},
    };
    for (const auto& row : rows) {
        FtpSessionHarness h;
        ScriptedFtpPeer peer;
        peer.replies = row.replies;
        h.LogonTo(peer.Port());
        EXPECT_EQ(h.Ends(row.ends.size()), row.ends) << row.replies.first().constData();
        EXPECT_EQ(h.session.NT, row.nt) << row.replies.first().constData();
        const QStringList sent{QStringLiteral("USER anonymous"), QStringLiteral("PASS guest@example.org")};
        EXPECT_EQ(peer.received, sent.mid(0, row.replies.size() - 1));
        // Only the cancel for an overlong line drops the connection.
        EXPECT_EQ(h.session.CommandSocket == nullptr, row.ends.size() == 2) << row.replies.first().constData();
    }
}

TEST_F(ScriptedSessionTest, ReplySplitAcrossTwoReadsIsHandledWhenItsLineEnds)
{
    peer.replies = Logon({"250 Directory suc"});
    LogOn();
    session.ServerDirectory = QStringLiteral("/Vexil/firmware");
    session.ChangeDir();
    ASSERT_TRUE(QTest::qWaitFor([&] { return session.Buffer == "250 Directory suc"; }, 5000));
    peer.Send("cessfully changed.\r\n");
    EXPECT_EQ(Ends(2).last(), QLatin1String("Successful: Directory Change Complete."));
    EXPECT_TRUE(status->reports.contains(QLatin1String("Response: 250 Directory successfully changed.")));
    EXPECT_EQ(peer.received.last(), QLatin1String("CWD /Vexil/firmware"));
}

TEST_F(ScriptedSessionTest, SilenceEndsTheOperationButKeepsTheConnection)
{
    peer.replies = {"220 Ready\r\n"};
    session.Timeout = 500;
    QElapsedTimer elapsed;
    elapsed.start();
    LogonTo(peer.Port());
    EXPECT_EQ(Ends(1), QStringList{QStringLiteral("Error: Error: The connection timed out. Ending session.")});
    EXPECT_TRUE(elapsed.elapsed() >= 450 && elapsed.elapsed() < 1500) << elapsed.elapsed() << " ms for a 500 ms period";
    ASSERT_NE(session.CommandSocket, nullptr);
    EXPECT_TRUE(session.CommandSocket->IsConnected());
    EXPECT_NE(session.DataSocket, nullptr);
    EXPECT_FALSE(session.ConnectionTimer->isActive());
    EXPECT_FALSE(peer.clientClosed);
}

// Right after the log-on: reported, and the next operation sends nothing.
TEST_F(ScriptedSessionTest, ServerClosesTheConnection)
{
    peer.replies = Logon();
    peer.closeAfterLast = true;
    LogonTo(peer.Port());
    EXPECT_EQ(Ends(2), (QStringList{kConnected, QStringLiteral("Error: Error: 102")}));
    EXPECT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Error: Connection Lost."));
    EXPECT_EQ(session.GetFTPSessionType(), QLatin1String("Logon"));
}

TEST_F(ScriptedSessionTest, OneCommandOperationsSendTheirCommandAndTakeTheirCode)
{
    // end empty: ends without a report
    const struct { std::function<void()> start; const char* command; QByteArray reply; const char* end; } rows[] = {
        {[&] { session.ParentDir(); }, "CDUP", "250 OK.", "Successful: Directory Change Complete."},
        {[&] { session.ChmodMask = QStringLiteral("644"); session.AddFileName(QStringLiteral("v.hex")); session.ChmodSingleFile(); },
         "SITE CHMOD 644 v.hex", "200 SITE CHMOD command ok.", "Successful: Chmod Command Complete."},
        {[&] { session.SITECommand(QStringLiteral("UMASK 2")); }, "SITE UMASK 2", "200 Set.", "Successful: FTP SITE command complete"},
        {[&] { session.SITECommand(QStringLiteral("IDLE 60")); }, "SITE IDLE 60", "250 Odd.", "Error: Error: 250 Odd.\n"},
        {[&] { session.DirectCommand(QStringLiteral("HELP")); }, "HELP", "226 Closing.", "Successful: FTP Direct Command complete"},
        {[&] { session.DirectCommand(QStringLiteral("HELP")); }, "HELP", "331 Need password.", "Error: Error: 331 Need password.\n"},
        {[&] { session.AbortTransfer(); }, "ABOR", "226 Abort successful.", "Successful: Transfer Aborted"},
        {[&] { session.AbortTransfer(); }, "ABOR", "226 Closing data connection.", ""},
        {[&] { session.AbortTransfer(); }, "ABOR", "225 No transfer.", "Error: Error: 225 No transfer.\n"},
        // A forced NOOP reaches the server; its reply finds no such step.
        {[&] { session.NextFTPStep(QStringLiteral("WAIT"), QStringLiteral("FORCENOOP"), QString()); }, "NOOP", "200 OK.",
         "Error: Unknown error during (WAIT)."},
    };
    peer.replies = Logon();
    QStringList commands{QStringLiteral("USER anonymous"), QStringLiteral("PASS guest@example.org")};
    for (const auto& row : rows) {
        peer.replies << row.reply + "\r\n";
        commands << QLatin1String(row.command);
    }
    LogOn();
    for (const auto& row : rows) {
        if (*row.end) {
            EXPECT_EQ(EndOf(row.start), QLatin1String(row.end)) << row.command;
        } else {
            const qsizetype before = status->ends.size();
            row.start();
            const QString line = QStringLiteral("Response: ") + QLatin1String(row.reply);
            ASSERT_TRUE(QTest::qWaitFor([&] { return status->reports.contains(line); }, 5000)) << row.command;
            EXPECT_EQ(status->ends.size(), before);
            EXPECT_FALSE(session.ConnectionTimer->isActive());
        }
        ASSERT_TRUE(session.SocketsActive()) << "a refused command must not cost the connection";
    }
    EXPECT_EQ(peer.received, commands);
}

} // namespace
