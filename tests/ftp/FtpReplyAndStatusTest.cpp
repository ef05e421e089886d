#include "FTPReply.h"
#include "FTPSocketError.h"
#include "FtpTestSupport.h"

#include <climits>

namespace {

TEST(FTPReplyTest, ReplyCodeAndFinalLineTests)
{
    const struct { const char* line; int code; bool a; bool b; } rows[] = {
        {"200 OK", 200, true, true},       {"200", 200, true, false}, // a bare code is final for test A only
        {"220-Welcome", 220, false, false}, {" 211 continued", 0, false, false},
        {"2000 odd", 2000, true, false},    {"20", 20, true, false},
        {"12.7 odd", 12, true, false},      {"Ready 220", 0, true, false},
        {"-5 x", 0, true, false},           {"99999999999999 huge", INT_MAX, true, false},
    };
    for (const auto& row : rows) {
        const QString line = QString::fromLatin1(row.line);
        EXPECT_EQ(FTPReplyCode(line), row.code) << row.line;
        EXPECT_EQ(FTPFinalLineA(line), row.a) << "A: " << row.line;
        EXPECT_EQ(FTPFinalLineB(line), row.b) << "B: " << row.line;
    }
}

TEST(FTPReplyTest, PassiveReplyPort)
{
    // port -1: refused
    const std::pair<const char*, int> rows[] = {
        {"227 Entering Passive Mode (10,0,0,5,117,49).", 30001}, {"227 =(127, 0, 0, 1, 255,\t255)", 65535},
        {"227 (127,0,0,1,0,0)", -1}, // port 0 is no port
        {"227 Entering Passive Mode 127,0,0,1,117,49", -1}, {"227 (127,0,0,1,117)", -1}, {"227 (127,0,0,1,117,49,1)", -1},
        {"227 (127,0,0,1,256,49)", -1}, {"227 (127,0,0,1,117,49", -1}, {"227 (127,0,0,1,99999999999,1)", -1},
    };
    for (const auto& [line, port] : rows) {
        const std::optional<quint16> parsed = FTPPassivePort(QLatin1String(line));
        EXPECT_EQ(parsed ? int(*parsed) : -1, port) << line;
    }
}

TEST(FTPReplyTest, PortArgumentAndPeerCloseCode)
{
    EXPECT_EQ(FTPPortArgument(QHostAddress(QStringLiteral("192.168.10.200")), 30003), QLatin1String("192,168,10,200,117,51"));
    // A dual-stack socket reports an IPv4 address in mapped form.
    EXPECT_EQ(FTPPortArgument(QHostAddress(QStringLiteral("::ffff:10.1.2.3")), 256), QLatin1String("10,1,2,3,1,0"));
    // Only the peer's orderly close is 102, the code a log-off expects.
    for (const auto error : {QAbstractSocket::ConnectionRefusedError, QAbstractSocket::SocketTimeoutError,
                             QAbstractSocket::NetworkError, QAbstractSocket::SslHandshakeFailedError})
        EXPECT_NE(FTPSocketErrorCode(error), 102) << error;
}

class FTPStatusClassTest : public ::testing::Test, protected FtpSessionHarness {};

TEST_F(FTPStatusClassTest, WhatEveryUserSeesAndWhatOnlyTheTraceShows)
{
    FTPStatusClass& sink = *status; // records, then does what the application's sink does
    using Report = void (FTPStatusClass::*)(const QString&);
    const Report success = &FTPStatusClass::Successful_FTP, error = &FTPStatusClass::Error_FTP,
                 response = &FTPStatusClass::Response_FTP, step = &FTPStatusClass::Status_FTP;
    // shown: the text itself when null
    const struct { Report report; const char* text; bool always; const char* shown = nullptr; } rows[] = {
        {success, "File Transfer Complete.", true, "Copied \"vexil0114.hex\" from Corvane"},
        {success, "Connected to Corvane server.", true},
        {success, "LOGOFF COMPLETE.", true, "Ready"},
        {success, "Logoff Complete", false},
        {success, "Directory Change Complete.", false},
        {error, "Error: The connection timed out. Ending session.", false},
        {step, "Connecting to ftp.corvane.com. Please be patient, this takes a few seconds.", true},
        {step, "Connecting to 127.0.0.1. Please be patient, this takes a few seconds.", false},
        {response, "retr vexil0114.hex", true, "Copying files to \"/home/u/Vexil Firmware/\""},
        {response, "226 Transfer complete.", false},
        {response, "", false},
    };
    globals.FTPFile = QStringLiteral("vexil0114.hex");
    globals.m_FolderPath = QStringLiteral("/home/u/Vexil Firmware/");
    for (const auto& row : rows) {
        for (const bool verbose : {false, true}) {
            log.lines.clear();
            log.activity = 0;
            globals.m_Verbose = verbose;
            globals.FTPDone = globals.FTPError = globals.mRETR = false;
            (sink.*row.report)(QString::fromLatin1(row.text));
            const QString shown = QString::fromUtf8(row.shown ? row.shown : row.text);
            const QStringList expected = !shown.isEmpty() && (row.always || verbose) ? QStringList{shown} : QStringList{};
            EXPECT_EQ(log.lines, expected) << row.text << verbose;
            EXPECT_EQ(globals.FTPDone, row.report == success || row.report == error) << row.text;
            EXPECT_EQ(globals.FTPError, row.report == error) << row.text;
            EXPECT_GE(log.activity, 1) << row.text << ": every report stamps the activity time";
        }
    }
}

} // namespace
