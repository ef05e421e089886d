#include "FtpTestSupport.h"

#include <QElapsedTimer>

namespace {

const QString kConnected = QStringLiteral("Successful: Connected to Corvane server.");

// Replies that real servers will not give on demand, played by a scripted peer.
class ScriptedSessionTest : public ::testing::Test, protected FtpSessionHarness {
protected:
    ScriptedFtpPeer peer;

    // The replies of an anonymous log-on that succeeds; a case may add more or replace them.
    ScriptedSessionTest() { peer.replies = {"220 Ready\r\n", "331 Password please\r\n", "230 Logged in\r\n"}; }
    void LogOn()
    {
        LogonTo(peer.Port());
        ASSERT_EQ(Ends(1), QStringList{kConnected});
    }
};

TEST(ScriptedLogonTest, GreetingsAndHostileReplies)
{
    const QByteArray overlong(FTPSessionClass::kMaxReplyLineBytes + 10, 'A');
    const struct { QList<QByteArray> replies; QStringList ends; } rows[] = {
        // Only the last line of a multi-line greeting moves the machine.
        {{"220-Welcome\r\n here is a note\r\n220 Ready\r\n", "331 Password\r\n", "230 In\r\n"}, {kConnected}},
        // A reply split across two reads is handled once its line ends; two in one read, in order.
        {{"220 Ready\r\n331 Pass", "word\r\n230 In\r\n", ""}, {kConnected}},
        // A server that asks no password is refused.
        {{"220 Ready\r\n", "230 Come in\r\n"}, {QStringLiteral("Error: Error: 230 Come in\n")}},
        // A line without end, even behind a complete one in the same read, ends the session before the memory.
        {{"220 Ready\r\n", "331 Password\r\n", "230 In\r\n" + overlong},
         {kConnected, QStringLiteral("Error: Error: The server sent a reply line longer than 65536 bytes. Ending session.")}},
    };
    for (const auto& row : rows) {
        FtpSessionHarness h;
        ScriptedFtpPeer peer;
        peer.replies = row.replies;
        h.LogonTo(peer.Port());
        EXPECT_EQ(h.Ends(row.ends.size()), row.ends) << row.replies.first().constData();
        const QStringList sent{QStringLiteral("USER anonymous"), QStringLiteral("PASS guest@example.org")};
        EXPECT_EQ(peer.received, sent.mid(0, row.replies.size() - 1));
        // Only the cancel for an overlong line drops the connection.
        EXPECT_EQ(h.session.CommandSocket == nullptr, row.ends.size() == 2) << row.replies.first().constData();
    }
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
    EXPECT_FALSE(session.ConnectionTimer->isActive());
}

// Right after the log-on: reported, and the next operation sends nothing.
TEST_F(ScriptedSessionTest, ServerClosesTheConnection)
{
    peer.closeAfterLast = true;
    LogonTo(peer.Port());
    EXPECT_EQ(Ends(2), (QStringList{kConnected, QStringLiteral("Error: Error: 102")}));
    EXPECT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Error: Connection Lost."));
    EXPECT_EQ(session.GetFTPSessionType(), QLatin1String("Logon"));
}

TEST_F(ScriptedSessionTest, OneCommandOperationsSendTheirCommandAndTakeTheirCode)
{
    const struct { std::function<void()> start; const char* command; QByteArray reply; const char* end; } rows[] = {
        {[&] { session.ParentDir(); }, "CDUP", "250 OK.", "Successful: Directory Change Complete."},
        {[&] { session.ChmodMask = QStringLiteral("644"); session.AddFileName(QStringLiteral("v.hex")); session.ChmodSingleFile(); },
         "SITE CHMOD 644 v.hex", "200 SITE CHMOD command ok.", "Successful: Chmod Command Complete."},
        {[&] { session.SITECommand(QStringLiteral("UMASK 2")); }, "SITE UMASK 2", "200 Set.", "Successful: FTP SITE command complete"},
        {[&] { session.SITECommand(QStringLiteral("IDLE 60")); }, "SITE IDLE 60", "250 Odd.", "Error: Error: 250 Odd.\n"},
        {[&] { session.AbortTransfer(); }, "ABOR", "226 Abort successful.", "Successful: Transfer Aborted"},
        // A 226 that is not about the abort ends quietly.
        {[&] { session.AbortTransfer(); }, "ABOR", "226 Closing data connection.\r\n225 No transfer.", "Error: Error: 225 No transfer.\n"},
        // A forced NOOP reaches the server; its reply finds no such step.
        {[&] { session.NextFTPStep(QStringLiteral("WAIT"), QStringLiteral("FORCENOOP"), QString()); }, "NOOP", "200 OK.",
         "Error: Unknown error during (WAIT)."},
    };
    QStringList commands{QStringLiteral("USER anonymous"), QStringLiteral("PASS guest@example.org")};
    for (const auto& row : rows) {
        peer.replies << row.reply + "\r\n";
        commands << QLatin1String(row.command);
    }
    LogOn();
    for (const auto& row : rows) {
        EXPECT_EQ(EndOf(row.start), QLatin1String(row.end)) << row.command;
        ASSERT_TRUE(session.SocketsActive()) << "a refused command must not cost the connection";
    }
    EXPECT_EQ(peer.received, commands);
}

TEST_F(ScriptedSessionTest, StepMachineRules)
{
    const struct { const char* type; const char* step; QByteArray buffer; QStringList ends; const char* stepAfter; } rows[] = {
        // An unexpected code ends with the line, the end-of-line string and what else is waiting.
        {"ChangeDir", "CWD", "550 No such directory.\r\n221 later\r\n", {"Error: Error: 550 No such directory.\n221 later\r\n"}, "CWD"},
        // In the TLS steps the separator is a carriage return.
        {"Logon", "PBSZ", "500 What?\r\n", {"Error: Error: 500 What?\r"}, "PBSZ"},
        // A refused private data channel still logs on.
        {"Logon", "PROT", "534 Denied.\r\n", {}, "USER"},
    };
    for (const auto& row : rows) {
        status->ends.clear();
        session.FTPSessionType = QLatin1String(row.type);
        session.CurrentFTPStep = QLatin1String(row.step);
        session.Buffer = row.buffer;
        session.ParseCommandBuffer();
        EXPECT_EQ(status->ends, row.ends) << row.buffer.constData();
        EXPECT_EQ(session.GetCurrentFTPStep(), QLatin1String(row.stepAfter)) << row.buffer.constData();
        EXPECT_EQ(session.Buffer, row.buffer.mid(row.buffer.indexOf("\r\n") + 2));
    }
}

// An application timer or socket event must not wait behind a burst of reply lines.
TEST_F(ScriptedSessionTest, TheEventLoopRunsBetweenTwoLinesOfOneRead)
{
    session.FTPStatusInstance.reset(); // the sink runs the event loop itself
    auto pending = std::make_shared<QByteArray>("(not run)");
    QMetaObject::invokeMethod(qApp, [this, pending] { *pending = session.Buffer; }, Qt::QueuedConnection);
    session.ReceiveControlBytes("211 one\r\n211 two\r\n");
    EXPECT_EQ(*pending, QByteArray("211 two\r\n"));
    Settle();
}

} // namespace
