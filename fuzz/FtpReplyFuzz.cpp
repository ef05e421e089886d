// Fuzz target for the control connection's reply handling: any bytes, cut into
// receive events at 0xFF, reach a session in any operation and step through
// the same path the socket uses. Besides memory errors it checks that every
// complete line is handled, that the buffer stays bounded, that no report ever
// carries a line end, and that the reply helpers agree with small independent
// readings of the same line.
//
// CorpusReplay.cpp replays its corpus as an ordinary test.

#include "FTPReply.h"
#include "FTPSessionClass.h"
#include "Globals.h"
#include "ManualClock.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

[[noreturn]] void Violated(const char* rule, int line)
{
    std::fprintf(stderr, "FtpReplyFuzz.cpp:%d: invariant violated: %s\n", line, rule);
    std::abort();
}

#define FTP_FUZZ_CHECK(cond)              \
    do {                                  \
        if (!(cond))                      \
            Violated(#cond, __LINE__);    \
    } while (0)

class CheckingStatus : public FTPStatusClass {
public:
    using FTPStatusClass::FTPStatusClass;
    void Response_FTP(const QString& text) override
    {
        FTP_FUZZ_CHECK(!text.contains(QLatin1String("\r\n")));
        FTPStatusClass::Response_FTP(text);
    }
};

const char* const kTypes[] = {
    "AbortTransfer", "ChangeDir", "ParentDir", "DeleteSingleFile", "RemoveDir", "MakeDir",
    "RenameSingleFile", "ChmodSingleFile", "GetWorkingDir", "Logon", "Logoff", "GetSystemInfo",
    "GetStatus", "SITECommand", "DirectCommand", "Unknown",
};
const char* const kSteps[] = {
    "START", "CONNECT", "AUTH", "PBSZ", "PROT", "USER", "PASS", "QUIT", "CWD", "CDUP", "PWD", "MKD",
    "RMD", "DONE", "TO", "PASV", "NOTPASV", "PORT", "TYPE", "DELETEFILE", "DELE", "NEXT", "STATUS",
    "SYSTEM", "ABORT", "Bogus",
};

// The reply code read independently: the digits that open the line.
int LeadingNumber(const QString& line)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,9}"));
    const QRegularExpressionMatch match = digits.match(line);
    if (!match.hasMatch())
        return 0;
    const QString number = match.captured();
    // Ten digits or more saturate; nine fit an int.
    if (line.size() > number.size() && line.at(number.size()).isDigit())
        return -1;
    return number.toInt();
}

void CheckHelpers(const QString& line)
{
    if (FTPFinalLineB(line))
        FTP_FUZZ_CHECK(FTPFinalLineA(line));
    const int code = FTPReplyCode(line);
    FTP_FUZZ_CHECK(code >= 0);
    const int expected = LeadingNumber(line);
    if (expected >= 0)
        FTP_FUZZ_CHECK(code == expected);

    static const QRegularExpression passive(QStringLiteral(
        "^[^(]*\\([ \\t]*([0-9]+)[ \\t]*,[ \\t]*([0-9]+)[ \\t]*,[ \\t]*([0-9]+)[ \\t]*,"
        "[ \\t]*([0-9]+)[ \\t]*,[ \\t]*([0-9]+)[ \\t]*,[ \\t]*([0-9]+)[ \\t]*\\)"));
    const std::optional<quint16> port = FTPPassivePort(line);
    const QRegularExpressionMatch match = passive.match(line);
    bool inRange = match.hasMatch();
    int fields[6] = {};
    for (int i = 0; inRange && i < 6; ++i) {
        bool ok = false;
        fields[i] = match.captured(i + 1).toInt(&ok);
        inRange = ok && fields[i] <= 255;
    }
    const int independent = inRange ? fields[4] * 256 + fields[5] : 0;
    if (port)
        FTP_FUZZ_CHECK(*port >= 1 && *port == independent);
    else
        FTP_FUZZ_CHECK(independent == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_ftp_reply";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = QCoreApplication::instance() ? nullptr : new QCoreApplication(argc, argv);
    (void)app;
    if (size < 2)
        return 0;

    ManualClock clock;
    Globals globals;
    FTPSessionClass session(globals, clock);
    session.FTPStatusInstance = std::make_unique<CheckingStatus>(globals, &session);
    session.FTPSessionType = QLatin1String(kTypes[data[0] % std::size(kTypes)]);
    session.CurrentFTPStep = QLatin1String(kSteps[data[1] % std::size(kSteps)]);
    session.FTPS = (data[0] & 0x80) != 0;
    session.PassiveMode = (data[1] & 0x80) != 0;
    session.AddFileName(QStringLiteral("new.hex"));
    session.AddFileName(QStringLiteral("old.hex"));

    const QByteArray input(reinterpret_cast<const char*>(data) + 2, static_cast<qsizetype>(size - 2));
    for (const QByteArray& chunk : input.split('\xff')) {
        session.ReceiveControlBytes(chunk);
        FTP_FUZZ_CHECK(!session.Buffer.contains("\r\n"));
        FTP_FUZZ_CHECK(session.Buffer.size() <= FTPSessionClass::kMaxReplyLineBytes);
    }
    for (const QByteArray& line : input.split('\n'))
        CheckHelpers(QString::fromLatin1(line));
    return 0;
}
