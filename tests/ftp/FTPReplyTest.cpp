#include "FTPReply.h"
#include "FTPSessionClass.h"
#include "FTPSocketError.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <climits>

TEST(FTPReplyTest, ReplyCodeIsTheLeadingDigitsOfTheFirstField)
{
    const struct {
        const char* line;
        int code;
    } rows[] = {
        {"220 Ready", 220},
        {"220-Welcome to the server", 220},
        {"257 \"/incoming\" is the current directory", 257},
        {"200", 200},
        {"x     ", 0},
        {" 220 continuation", 0},
        {"Ready 220", 0},
        {"", 0},
        {"12.7 odd", 12},
        {"-5 negative", 0},
        {"99999999999999 huge", INT_MAX},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FTPReplyCode(QString::fromLatin1(row.line)), row.code) << row.line;
}

TEST(FTPReplyTest, FinalLineTests)
{
    const struct {
        const char* line;
        bool a;
        bool b;
    } rows[] = {
        {"200 OK", true, true},
        {"200", true, false},          // bare code: final for A only
        {"220-Welcome", false, false}, // opens a multi-line reply
        {" 211 continued", false, false},
        {"2000 odd", true, false},
        {"20", true, false},
        {"", true, false},
        {"x     ", true, true}, // the line given with a bare code passes both
        {"abc-", false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FTPFinalLineA(QString::fromLatin1(row.line)), row.a) << "A: \"" << row.line << '"';
        EXPECT_EQ(FTPFinalLineB(QString::fromLatin1(row.line)), row.b) << "B: \"" << row.line << '"';
    }
}

TEST(FTPReplyTest, PassiveReplyPortAndAddress)
{
    const struct {
        const char* line;
        int port; // 0: refused
        const char* address;
    } rows[] = {
        {"227 Entering Passive Mode (10,0,0,5,117,49).", 30001, "10.0.0.5.117.49"},
        {"227 Entering Passive Mode (127,0,0,1,0,21)", 21, "127.0.0.1.0.21"},
        {"227 =(127, 0, 0, 1, 255, 255)", 65535, "127. 0. 0. 1. 255. 255"},
        {"227 Entering Passive Mode 127,0,0,1,117,49", 0, ""},
        {"227 (127,0,0,1,117)", 0, "127.0.0.1.117"},
        {"227 (127,0,0,1,117,49,1)", 0, "127.0.0.1.117.49.1"},
        {"227 (127,0,0,1,256,49)", 0, "127.0.0.1.256.49"},
        {"227 (127,0,0,1,-1,49)", 0, "127.0.0.1.-1.49"},
        {"227 (127,0,0,1,a,49)", 0, "127.0.0.1.a.49"},
        {"227 (127,0,0,1,,49)", 0, "127.0.0.1..49"},
        {"227 (127,0,0,1,0,0)", 0, "127.0.0.1.0.0"},
        {"227 (127,0,0,1,117,49", 0, ""},
        {"227 )127,0,0,1,117,49(", 0, ""},
        {"227 (127,0,0,1,99999999999,1)", 0, "127.0.0.1.99999999999.1"},
    };
    for (const auto& row : rows) {
        const QString line = QString::fromLatin1(row.line);
        EXPECT_EQ(FTPSessionClass::CalculatePassivePort(line), row.port) << row.line;
        EXPECT_EQ(FTPSessionClass::CalculatePassiveAddress(line), QLatin1String(row.address)) << row.line;
    }
}

TEST(FTPReplyTest, PortArgumentIsAddressAndPortBytes)
{
    EXPECT_EQ(FTPPortArgument(QHostAddress(QStringLiteral("127.0.0.1")), 30003), QLatin1String("127,0,0,1,117,51"));
    EXPECT_EQ(FTPPortArgument(QHostAddress(QStringLiteral("192.168.10.200")), 65535), QLatin1String("192,168,10,200,255,255"));
    // A dual-stack socket reports an IPv4 peer in mapped form.
    EXPECT_EQ(FTPPortArgument(QHostAddress(QStringLiteral("::ffff:10.1.2.3")), 256), QLatin1String("10,1,2,3,1,0"));
}

TEST(FTPReplyTest, SocketErrorsKeepThePeerCloseApart)
{
    EXPECT_EQ(FTPSocketErrorCode(QAbstractSocket::RemoteHostClosedError), 102);
    const QAbstractSocket::SocketError others[] = {
        QAbstractSocket::ConnectionRefusedError, QAbstractSocket::HostNotFoundError,
        QAbstractSocket::SocketTimeoutError,     QAbstractSocket::NetworkError,
        QAbstractSocket::SslHandshakeFailedError, QAbstractSocket::UnknownSocketError,
    };
    for (const auto error : others)
        EXPECT_NE(FTPSocketErrorCode(error), 102) << error;
}
