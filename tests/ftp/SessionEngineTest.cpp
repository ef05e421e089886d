#include "FtpTestSupport.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

class SessionEngineTest : public ::testing::Test, protected FtpSessionHarness {};

TEST_F(SessionEngineTest, DefaultsOfBothConstructors)
{
    FTPSessionClass tagged(globals, clock, QStringLiteral("firmware"));
    for (const FTPSessionClass* s : {&session, &tagged}) {
        EXPECT_EQ(std::tuple(s->Timeout, s->CommandPort, s->DataPortStart, s->DataPortEnd, s->PassiveMode, s->ServerTextEncoding,
                             s->FTPTransferType, s->ConnectionTimer->isActive()),
                  std::tuple(20000, 21, 30003, 30100, true, QStringConverter::Latin1, QStringLiteral("I"), false));
        EXPECT_TRUE(s->DataPort >= 30003 && s->DataPort < 30100) << s->DataPort;
    }
    clock.Advance(2'500'000);
    EXPECT_DOUBLE_EQ(session.CalcSessionTime(), 2.5);
}

TEST_F(SessionEngineTest, FileQueueAndDataPortRange)
{
    for (const char* name : {"new.hex", "old.hex", "old.hex"})
        session.AddFileName(QLatin1String(name));
    EXPECT_EQ(session.GetFileCount(), 2);
    session.DeleteFileName(QStringLiteral("old.hex"));
    session.AddFileName(QStringLiteral("last.hex"));
    EXPECT_EQ(session.GetNextFileName(), QLatin1String("last.hex")); // last in, first out
    EXPECT_EQ(session.GetNextFileName(), QLatin1String("new.hex"));
    EXPECT_EQ(session.GetNextFileName(), QString());
    EXPECT_EQ(session.GetFileCount(), -1);

    session.SetDataPortRange(40000, 40002);
    EXPECT_TRUE(session.DataPort >= 40000 && session.DataPort < 40002) << session.DataPort;
    session.DataPort = 40002;
    session.NextDataPort();
    EXPECT_EQ(session.DataPort, 40000);
}

TEST_F(SessionEngineTest, WhatAStepSendsAndReports)
{
    const struct { const char* command; QStringList reports; } rows[] = {
        // No password reaches a report.
        {"PASS secret", {QStringLiteral("Response: PASS"), QStringLiteral("Status: step text")}},
        {"SITE passwd hunter2", {QStringLiteral("Response: PASS"), QStringLiteral("Status: step text")}},
        {"FORCENOOP", {QStringLiteral("Response: FORCENOOP"), QStringLiteral("Status: step text")}},
        // A local NOOP moves the machine as if the server had said 200, and its step text is not told.
        {"NOOP", {QStringLiteral("Response: 200 NOOP command successful."), QStringLiteral("Response: HELP"),
                  QStringLiteral("Status: HELP")}},
    };
    session.FTPSessionType = QStringLiteral("DirectCommand");
    session.DirectCommandText = QStringLiteral("HELP");
    for (const auto& row : rows) {
        status->reports.clear();
        session.NextFTPStep(QStringLiteral("START"), QLatin1String(row.command), QStringLiteral("step text"));
        EXPECT_EQ(status->reports, row.reports) << row.command;
    }
    EXPECT_FALSE(LogLines().join(QLatin1Char(' ')).contains(QLatin1String("secret")));
}

TEST_F(SessionEngineTest, AnEndIsASuccessOnlyByOneOfFourteenTexts)
{
    const char* successes[] = {
        "File has been deleted.", "The file list has been transferred.", "File Transfer Complete.",
        "File Rename Complete.", "The directory has been deleted.", "Directory Transfer Complete.",
        "Directory Change Complete.", "Empty Directory Removed.", "Directory Created.",
        "The working directory has been transferred.", "Connected to Corvane server.", "Logoff Complete.",
        "Chmod Command Complete.", "System information received.", "logoff complete."};
    for (const char* text : successes)
        EXPECT_EQ(EndOf([&] { session.EndFTPSession(QLatin1String(text)); }), QStringLiteral("Successful: ") + text);
    for (const char* text : {"Transfer Aborted", "FTP Direct Command complete", "Logoff Complete", " Logoff Complete."})
        EXPECT_EQ(EndOf([&] { session.EndFTPSession(QLatin1String(text)); }), QStringLiteral("Error: ") + text);
    // An empty text ends silently, unless the session is cancelled.
    const qsizetype before = status->ends.size();
    session.EndFTPSession(QString());
    EXPECT_EQ(status->ends.size(), before);
    EXPECT_EQ(EndOf([&] { session.CancelFTPSession(QString()); }), QLatin1String("Error: "));
    EXPECT_EQ(EndOf([&] { session.ChangeDir(); }), QLatin1String("Error: Data Socket is no longer active."));
    EXPECT_TRUE(session.GetFTPSessionType().isEmpty());
}

TEST_F(SessionEngineTest, StepMachineRules)
{
    // code: given alone instead of a line from the buffer
    const struct { const char* type; const char* step; QByteArray buffer; int code; QStringList ends; const char* stepAfter; }
        rows[] = {
        // An unexpected code ends with the line, the end-of-line string and what else is waiting.
        {"ChangeDir", "CWD", "550 No such directory.\r\n221 later\r\n", 0,
         {QStringLiteral("Error: Error: 550 No such directory.\n221 later\r\n")}, "CWD"},
        // In the TLS steps the separator is a carriage return.
        {"Logon", "PBSZ", "500 What?\r\n", 0, {QStringLiteral("Error: Error: 500 What?\r")}, "PBSZ"},
        {"Logon", "PROT", "536 Not supported.\r\n", 0, {QStringLiteral("Error: Error: 536 Not supported.\r")}, "PROT"},
        // A refused private data channel still logs on.
        {"Logon", "PROT", "534 Denied.\r\n", 0, {}, "USER"},
        {"Logon", "AUTH", "234 Go ahead.\r\n", 0, {QStringLiteral("Error: Command Socket is no longer active.")}, "AUTH"},
        {"Logon", "BOGUS", "200 OK\r\n", 0, {QStringLiteral("Error: Unknown error during (BOGUS).")}, "BOGUS"},
        // Test B drops a bare code; test A takes it. Step names are compared without regard to case.
        {"ChangeDir", "CWD", "250\r\n", 0, {}, "CWD"},
        {"GetWorkingDir", "pwd", "257\r\n", 0, {QStringLiteral("Successful: The working directory has been transferred.")}, "pwd"},
        // Continuation lines never reach a step.
        {"ChangeDir", "CWD", "250-Here is a note\r\n", 0, {}, "CWD"},
        {"ChangeDir", "cwd", " 250 indented\r\n", 0, {}, "cwd"},
        {"ListEverything", "START", "500 Nope\r\n", 0, {}, "START"}, // a type without a machine
        // A code given alone passes both final-line tests and leaves the buffer alone.
        {"RemoveDir", "RMD", "kept", 250, {QStringLiteral("Successful: Empty Directory Removed.")}, "RMD"},
    };
    for (const auto& row : rows) {
        status->ends.clear();
        session.FTPSessionType = QLatin1String(row.type);
        session.CurrentFTPStep = QLatin1String(row.step);
        session.Buffer = row.buffer;
        row.code ? session.ParseCommandBuffer(row.code) : session.ParseCommandBuffer();
        EXPECT_EQ(status->ends, row.ends) << row.buffer.constData();
        EXPECT_EQ(session.GetCurrentFTPStep(), QLatin1String(row.stepAfter)) << row.buffer.constData();
        EXPECT_EQ(session.Buffer, row.code ? row.buffer : row.buffer.mid(row.buffer.indexOf("\r\n") + 2));
    }
}

// An application timer or socket event must not wait behind a burst of reply lines.
TEST_F(SessionEngineTest, TheEventLoopRunsBetweenTwoLinesOfOneRead)
{
    session.FTPStatusInstance.reset(); // the sink runs the event loop itself
    auto pending = std::make_shared<QByteArray>("(not run)");
    QMetaObject::invokeMethod(qApp, [this, pending] { *pending = session.Buffer; }, Qt::QueuedConnection);
    session.ReceiveControlBytes("211 one\r\n211 two\r\n");
    EXPECT_EQ(*pending, QByteArray("211 two\r\n"));
    Settle();
}

} // namespace
