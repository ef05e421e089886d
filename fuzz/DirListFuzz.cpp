// Fuzz target for the listing parser: any bytes, read as a server listing,
// go line by line through ParseDirListLine and whole through
// ParseDirectoryList. Besides memory errors (no read past the fields) it
// checks that a record's name comes from its own line, that a record without
// a name is not understood, that Squeeze leaves no doubled blank and is stable,
// that the walk takes only plain names, and that CR LF, LF and CR line ends
// give the same walk.
//
// CorpusReplay.cpp replays its corpus as an ordinary test.

#include "FTPDataSocket.h"
#include "FTPDirList.h"
#include "FTPSessionClass.h"
#include "Globals.h"
#include "ManualClock.h"

#include <QCoreApplication>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void Violated(const char* rule, int line)
{
    std::fprintf(stderr, "DirListFuzz.cpp:%d: invariant violated: %s\n", line, rule);
    std::abort();
}

#define DIRLIST_CHECK(cond)            \
    do {                               \
        if (!(cond))                   \
            Violated(#cond, __LINE__); \
    } while (0)

void CheckLine(const QString& line)
{
    const QString squeezed = Squeeze(line, QStringLiteral(" "));
    DIRLIST_CHECK(!squeezed.contains(QLatin1String("  ")));
    DIRLIST_CHECK(Squeeze(squeezed, QStringLiteral(" ")) == squeezed);
    DIRLIST_CHECK(squeezed.size() <= line.size());

    const FTPParsedDirListLineClass record = ParseDirListLine(line);
    if (record.Name.isEmpty())
        DIRLIST_CHECK(!record.IsDir && !record.IsFile);
    DIRLIST_CHECK(squeezed.contains(record.Name));
    DIRLIST_CHECK(squeezed.contains(record.ModDate) && squeezed.contains(record.ModTime));
    DIRLIST_CHECK(record.Permissions.size() <= 9);
    DIRLIST_CHECK(record.Size >= 0);
    DIRLIST_CHECK(ParseDirListLine(squeezed).Name == record.Name);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_ftp_dirlist";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = QCoreApplication::instance() ? nullptr : new QCoreApplication(argc, argv);
    (void)app;

    const QString text = QString::fromLatin1(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString lines = text;
    lines.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& line : lines.split(QLatin1Char('\n')))
        CheckLine(line);

    ManualClock clock;
    Globals globals;
    FTPSessionClass session(globals, clock);
    session.FTPStatusInstance.reset();
    FTPDataSocket socket(&session);
    session.CurrentWorkingDirectory = QStringLiteral("/top");
    QStringList walks[3];
    const QString ends[3] = {QStringLiteral("\r\n"), QStringLiteral("\n"), QStringLiteral("\r")};
    for (int i = 0; i < 3; ++i) {
        session.DirList = {std::make_shared<FTPDirectoryClass>(QStringLiteral("/top"), QString())};
        socket.ParseDirectoryList(i == 0 ? text : QString(lines).replace(QLatin1Char('\n'), ends[i]));
        const FTPDirectoryClass& top = *session.DirList.front();
        for (const QString& file : top.Files)
            DIRLIST_CHECK(FTPIsPlainName(file));
        for (const QString& path : top.SubDirectories)
            DIRLIST_CHECK(path.startsWith(QLatin1String("/top/")) && FTPIsPlainName(path.mid(5)));
        DIRLIST_CHECK(session.DirList.size() == top.SubDirectories.size() + 1);
        walks[i] = top.Files + QStringList{QStringLiteral("|")} + top.SubDirectories;
    }
    DIRLIST_CHECK(walks[0] == walks[1] && walks[1] == walks[2]);
    return 0;
}
