#include "FtpTestSupport.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

class SessionEngineTest : public ::testing::Test, protected FtpSessionHarness {};

TEST_F(SessionEngineTest, BothConstructorsSetTheSameDefaults)
{
    FTPSessionClass tagged(globals, clock, QStringLiteral("firmware"));
    for (FTPSessionClass* s : {&session, &tagged}) {
        EXPECT_EQ(s->DataPortStart, 30003);
        EXPECT_EQ(s->DataPortEnd, 30100);
        EXPECT_GE(s->DataPort, 30003);
        EXPECT_LE(s->DataPort, 30099);
        EXPECT_EQ(s->CommandPort, 21);
        EXPECT_EQ(s->Timeout, 20000);
        EXPECT_EQ(s->SendBufferSize, 2048);
        EXPECT_EQ(s->ServerTextEncoding, QStringConverter::Latin1);
        EXPECT_TRUE(s->PassiveMode);
        EXPECT_EQ(s->FTPTransferType, QLatin1String("I"));
        EXPECT_EQ(s->FileDelimiter, QLatin1String(":"));
        EXPECT_EQ(s->FTPCommandCRLF, QByteArray("\r\n"));
        EXPECT_NE(s->FTPStatusInstance, nullptr);
        EXPECT_NE(s->ConnectionTimer, nullptr);
        EXPECT_FALSE(s->ConnectionTimer->isActive());
        EXPECT_EQ(s->CommandSocket, nullptr);
        EXPECT_EQ(s->DataSocket, nullptr);
    }
    EXPECT_EQ(tagged.ID, QLatin1String("firmware"));
    EXPECT_TRUE(session.ID.isEmpty());
}

TEST_F(SessionEngineTest, FilesQueueIsLastInFirstOut)
{
    session.AddFileName(QStringLiteral("new.hex"));
    session.AddFileName(QStringLiteral("old.hex"));
    session.AddFileName(QStringLiteral("old.hex"));
    EXPECT_EQ(session.GetFileCount(), 2);
    session.DeleteFileName(QStringLiteral("old.hex"));
    EXPECT_EQ(session.GetFileCount(), 0);
    session.AddFileName(QStringLiteral("old.hex"));
    EXPECT_EQ(session.GetNextFileName(), QLatin1String("old.hex"));
    EXPECT_EQ(session.GetNextFileName(), QLatin1String("new.hex"));
    EXPECT_EQ(session.GetNextFileName(), QString());
    EXPECT_EQ(session.GetFileCount(), -1);
}

TEST_F(SessionEngineTest, LocalNoopMovesTheMachineWithoutTrafficOrStepText)
{
    session.FTPSessionType = QStringLiteral("DirectCommand");
    session.DirectCommandText = QStringLiteral("HELP");
    session.NextFTPStep(QStringLiteral("START"), QStringLiteral("NOOP"), QStringLiteral("entry text"));
    EXPECT_EQ(session.GetCurrentFTPStep(), QLatin1String("DONE"));
    EXPECT_EQ(status->reports, (QStringList{QStringLiteral("Response: 200 NOOP command successful."),
                                            QStringLiteral("Response: HELP"), QStringLiteral("Status: HELP")}));
    EXPECT_TRUE(session.Buffer.isEmpty());
}

TEST_F(SessionEngineTest, NoPasswordReachesAReport)
{
    const char* commands[] = {"PASS secret", "pass secret", "SITE PASSWD hunter2", "XPASS"};
    for (const char* command : commands) {
        status->reports.clear();
        session.NextFTPStep(QStringLiteral("PASS"), QString::fromLatin1(command), QStringLiteral("Send Password"));
        EXPECT_EQ(status->reports, (QStringList{QStringLiteral("Response: PASS"), QStringLiteral("Status: Send Password")}))
            << command;
    }
    EXPECT_FALSE(LogLines().join(QLatin1Char('\n')).contains(QLatin1String("secret")));
    EXPECT_FALSE(LogLines().join(QLatin1Char('\n')).contains(QLatin1String("hunter2")));
}

TEST_F(SessionEngineTest, SuccessIsKnownOnlyByTheFourteenTextsInAnyCase)
{
    const char* successes[] = {
        "File has been deleted.", "The file list has been transferred.", "File Transfer Complete.",
        "File Rename Complete.", "The directory has been deleted.", "Directory Transfer Complete.",
        "Directory Change Complete.", "Empty Directory Removed.", "Directory Created.",
        "The working directory has been transferred.", "Connected to Corvane server.", "Logoff Complete.",
        "Chmod Command Complete.", "System information received.", "logoff complete.",
    };
    for (const char* text : successes)
        EXPECT_TRUE(FTPSessionClass::SuccessfulMessage(QString::fromLatin1(text))) << text;
    const char* failures[] = {"", "Transfer Aborted", "FTP Direct Command complete", "Logoff Complete",
                              " Logoff Complete.", "Error: 102"};
    for (const char* text : failures)
        EXPECT_FALSE(FTPSessionClass::SuccessfulMessage(QString::fromLatin1(text))) << text;
}

TEST_F(SessionEngineTest, EndClassifiesItsTextAndAnEmptyTextReportsNothing)
{
    session.EndFTPSession(QStringLiteral("Directory Created."));
    session.EndFTPSession(QStringLiteral("Error: 550"));
    session.EndFTPSession(QString());
    session.CancelFTPSession(QString());
    EXPECT_EQ(status->Ends(), (QStringList{QStringLiteral("Successful: Directory Created."),
                                          QStringLiteral("Error: Error: 550"), QStringLiteral("Error: ")}));
}

TEST_F(SessionEngineTest, OperationOnANewSessionEndsWithTheMissingSocket)
{
    session.ChangeDir();
    EXPECT_EQ(status->Ends(), QStringList{QStringLiteral("Error: Data Socket is no longer active.")});
    EXPECT_TRUE(session.GetFTPSessionType().isEmpty());
    EXPECT_TRUE(globals.FTPError);
}

TEST_F(SessionEngineTest, StepMachineRules)
{
    const struct {
        const char* type;
        const char* step;
        QByteArray buffer;
        QStringList ends;
        const char* stepAfter;
    } rows[] = {
        // Unexpected code: the line, the end-of-line string and what else is waiting.
        {"ChangeDir", "CWD", "550 No such directory.\r\n221 later\r\n",
         {QStringLiteral("Error: Error: 550 No such directory.\n221 later\r\n")}, "CWD"},
        // In the TLS steps the separator is a carriage return.
        {"Logon", "PBSZ", "500 What?\r\n", {QStringLiteral("Error: Error: 500 What?\r")}, "PBSZ"},
        {"Logon", "BOGUS", "200 OK\r\n", {QStringLiteral("Error: Unknown error during (BOGUS).")}, "BOGUS"},
        // Test B drops a bare code; test A takes it.
        {"ChangeDir", "CWD", "250\r\n", {}, "CWD"},
        {"GetWorkingDir", "pwd", "257\r\n", {QStringLiteral("Successful: The working directory has been transferred.")}, "pwd"},
        // Continuation lines never reach a step.
        {"ChangeDir", "CWD", "250-Here is a note\r\n", {}, "CWD"},
        {"ChangeDir", "cwd", " 250 indented\r\n", {}, "cwd"},
        // A type without a machine does nothing.
        {"ListEverything", "START", "500 Nope\r\n", {}, "START"},
    };
    for (const auto& row : rows) {
        status->reports.clear();
        session.FTPSessionType = QString::fromLatin1(row.type);
        session.CurrentFTPStep = QString::fromLatin1(row.step);
        session.Buffer = row.buffer;
        session.ParseCommandBuffer();
        EXPECT_EQ(status->Ends(), row.ends) << row.type << ' ' << row.buffer.constData();
        EXPECT_EQ(session.GetCurrentFTPStep(), QLatin1String(row.stepAfter)) << row.buffer.constData();
    }
}

TEST_F(SessionEngineTest, BareCodeEntryPassesBothTests)
{
    session.FTPSessionType = QStringLiteral("RemoveDir");
    session.CurrentFTPStep = QStringLiteral("RMD");
    session.Buffer = QByteArrayLiteral("kept");
    session.ParseCommandBuffer(250);
    EXPECT_EQ(status->Ends(), QStringList{QStringLiteral("Successful: Empty Directory Removed.")});
    EXPECT_EQ(session.Buffer, QByteArray("kept"));
}

TEST_F(SessionEngineTest, SilenceEndsTheSessionOnceWithTheTimeOutText)
{
    session.Timeout = 30;
    session.ResetConnectionTimer();
    ASSERT_TRUE(WaitForEnd(2000));
    QTest::qWait(100);
    EXPECT_EQ(status->Ends(), QStringList{QStringLiteral("Error: Error: The connection timed out. Ending session.")});
    EXPECT_TRUE(globals.FTPError);
    EXPECT_TRUE(globals.FTPDone);
}

TEST_F(SessionEngineTest, SessionTimeIsSecondsSinceConstruction)
{
    clock.Advance(2'500'000);
    EXPECT_DOUBLE_EQ(session.CalcSessionTime(), 2.5);
}

TEST_F(SessionEngineTest, DataPortArithmetic)
{
    session.SetDataPortRange(40000, 40000);
    EXPECT_EQ(session.DataPort, 40000);
    session.SetDataPortRange(40000, 40002);
    EXPECT_GE(session.DataPort, 40000);
    EXPECT_LT(session.DataPort, 40002);
    session.DataPort = 40002;
    session.NextDataPort();
    EXPECT_EQ(session.DataPort, 40000);
    session.NextDataPort();
    EXPECT_EQ(session.DataPort, 40001);
}

} // namespace
