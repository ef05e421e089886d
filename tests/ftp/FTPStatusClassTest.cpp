#include "FtpTestSupport.h"
#include "FirmwareServer.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

class FTPStatusClassTest : public ::testing::Test {
protected:
    LogSink log;
    Globals globals;
    FTPStatusClass status{globals};

    void SetUp() override { globals.AttachSink(&log); }
    QStringList Lines() const { return log.lines; }
};

TEST_F(FTPStatusClassTest, SuccessTextsShownToEveryUserOrOnlyInTrace)
{
    globals.FTPFile = QStringLiteral("vexil0114.hex");
    const struct {
        const char* text;
        const char* shown;
        bool always;
    } rows[] = {
        {"File Transfer Complete.", "Copied \"vexil0114.hex\" from Corvane", true},
        {"Connected to Corvane server.", "Connected to Corvane server.", true},
        {"Logoff Complete.", "Ready", true},
        {"Directory Change Complete.", "Directory Change Complete.", false},
        {"Transfer Aborted", "Transfer Aborted", false},
        {"LOGOFF COMPLETE.", "Ready", true}, // texts are compared without regard to case
        {"Logoff Complete", "Logoff Complete", false},
    };
    for (const auto& row : rows) {
        for (const bool verbose : {false, true}) {
            log.lines.clear();
            globals.m_Verbose = verbose;
            globals.FTPDone = false;
            globals.FTPError = false;
            status.Successful_FTP(QString::fromLatin1(row.text));
            EXPECT_TRUE(globals.FTPDone) << row.text;
            EXPECT_FALSE(globals.FTPError) << row.text;
            const QStringList expected = (row.always || verbose) ? QStringList{QString::fromUtf8(row.shown)} : QStringList{};
            EXPECT_EQ(Lines(), expected) << row.text << " verbose " << verbose;
        }
    }
}

TEST_F(FTPStatusClassTest, ErrorSetsBothFlagsAndShowsOnlyInTrace)
{
    status.Error_FTP(QStringLiteral("Error: The connection timed out. Ending session."));
    EXPECT_TRUE(globals.FTPError);
    EXPECT_TRUE(globals.FTPDone);
    EXPECT_EQ(Lines(), QStringList{});

    globals.m_Verbose = true;
    status.Error_FTP(QStringLiteral("Error: 102"));
    EXPECT_EQ(Lines(), QStringList{QStringLiteral("Error: 102")});
}

TEST_F(FTPStatusClassTest, OneCopyingLinePerDownloadWhateverTheCase)
{
    globals.m_FolderPath = QStringLiteral("/home/u/Vexil Firmware/");
    status.Response_FTP(QStringLiteral("RETR vexil0114.hex"));
    status.Response_FTP(QStringLiteral("retr vexilfwnotes.rtf"));
    status.Response_FTP(QStringLiteral("226 Transfer complete."));
    status.Response_FTP(QString());
    EXPECT_TRUE(globals.mRETR);
    EXPECT_EQ(Lines(), QStringList{QStringLiteral("Copying files to \"/home/u/Vexil Firmware/\"")});

    // The next download clears the flag and gets its own line; "retr x" counts as RETR.
    globals.mRETR = false;
    globals.m_Verbose = true;
    status.Response_FTP(QStringLiteral("retr x"));
    status.Response_FTP(QStringLiteral("RETRIEVE?"));
    EXPECT_EQ(Lines().mid(1), (QStringList{QStringLiteral("Copying files to \"/home/u/Vexil Firmware/\""),
                                           QStringLiteral("RETRIEVE?")}));
}

TEST_F(FTPStatusClassTest, OnlyTheConnectingMessageIsShownWithoutTrace)
{
    status.Status_FTP(QStringLiteral("Send UserID"));
    status.Status_FTP(FirmwareServer::ConnectingMessage());
    status.Status_FTP(QStringLiteral("Connecting to 127.0.0.1. Please be patient, this takes a few seconds."));
    EXPECT_EQ(Lines(), QStringList{QStringLiteral("Connecting to ftp.corvane.com. Please be patient, this takes a few seconds.")});
    EXPECT_FALSE(globals.FTPDone);
}

TEST_F(FTPStatusClassTest, ReportsStampTheActivityTime)
{
    status.Progress_FTP(4096);
    EXPECT_EQ(log.activity, 0); // no meter, no stamp
    status.Response_FTP(QString());
    EXPECT_EQ(log.activity, 1);
}

TEST_F(FTPStatusClassTest, FormatBytesBoundaries)
{
    const struct {
        qint64 bytes;
        const char* text;
    } rows[] = {
        {0, "0 bytes"},
        {1, "1 bytes"},
        {1024, "1024 bytes"},
        {1025, "1 KB"},
        {1536, "2 KB"},
        {1048576, "1024 KB"},
        {1048577, "1.0 MB"},
        {268435456, "256.0 MB"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(status.FormatBytes(row.bytes), QLatin1String(row.text)) << row.bytes;
}

} // namespace
