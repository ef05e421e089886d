#include "FtpServers.h"
#include "HexFile.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr std::uint32_t WindowStart = 0x1D008000, WindowSize = 0x38000;
const QByteArray kGood = SampleFirmware::Image(113);

// A copy of the good file with one data digit changed on line 101.
QByteArray BadCopy()
{
    QList<QByteArray> lines = kGood.split('\n');
    lines[100][12] = lines[100][12] == '0' ? '1' : '0';
    return lines.join('\n');
}

// vexilctl as a process with its own preferences, data and firmware folders.
struct Cli {
    QTemporaryDir home, folder;
    QString flash = home.filePath("flash.bin");
    QProcess process;

    explicit Cli(quint16 ftpPort = 0)
    {
        HexFile::Write(QDir(folder.path()), "vexil0113.hex", kGood);
        QDir(folder.path()).mkdir("bad");
        HexFile::Write(QDir(folder.filePath("bad")), "vexil0119.hex", BadCopy());
        HexFile::Write(QDir(folder.filePath("bad")), "vexil0120.hex", kGood.left(kGood.lastIndexOf(':') - 9));
        QDir(home.path()).mkpath("config");
        HexFile::Write(QDir(home.filePath("config")), "VexilUtilPrefs",
                       QString("FTPServer\n127.0.0.1\nFTPPort\n%1\n").arg(ftpPort).toUtf8());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        process.setProcessEnvironment(env);
    }
    void Start(const QStringList& args, const QString& sim)
    {
        const QStringList fixed{"--folder", folder.path(), "--simulate", "--sim", "flash=" + flash + "," + sim};
        process.start(VEXILCTL, fixed + QStringList(args).replaceInStrings("%F", folder.path()));
    }
    // Waits, bounded, until standard error holds `text`.
    bool WaitForError(const QString& text, QByteArray& err)
    {
        process.setReadChannel(QProcess::StandardError);
        for (QDeadlineTimer bound(20000); !err.contains(text.toUtf8()) && !bound.hasExpired();)
            if (process.waitForReadyRead(int(bound.remainingTime())))
                err += process.readAllStandardError();
        return err.contains(text.toUtf8());
    }
    int Finish(QString& out)
    {
        EXPECT_TRUE(process.waitForFinished(60000));
        out = QString::fromUtf8(process.readAllStandardOutput());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    // The flash of a run that erased it must hold the file's image; "" when nothing was erased.
    QString FlashState() const
    {
        QFile file(flash);
        if (!file.open(QIODevice::ReadOnly))
            return "untouched";
        const QByteArray bytes = file.readAll();
        for (std::uint32_t i = 0; i < WindowSize; ++i)
            if (bytes.size() != qsizetype(WindowSize) || std::uint8_t(bytes[i]) != std::uint8_t((WindowStart + i) * 31 + 113))
                return QString("differs at offset %1").arg(i);
        return "the file";
    }
};

TEST(Vexilctl, EachCommandsResultAndExitCode)
{
    RealFtpServer server(RealFtpServer::Kind::Pyftpdlib);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    const QDir served(server.RootPath() + "/Vexil/firmware");
    const QByteArray notes = "{\\rtf1 }";
    const struct {
        QStringList args;
        QString sim;
        QMap<QString, QByteArray> served;
        int code;
        QString out; // a pattern for standard output; %F is the firmware folder
        QString flash = "untouched";
    } rows[] = {
        {{"status"}, "", {}, 0, "^Vexil:  01.12\nFolder: %F/\nNewest: 01.13 \\(vexil0113.hex\\)\nNew firmware is available"},
        {{"status"}, "revision=113", {}, 7, "Nothing to load: the Vexil runs the newest"},
        {{"status"}, "absent", {}, 3, "^Vexil:  not found"},
        {{"status"}, "silent", {}, 4, "^Vexil:  found, but not answering"},
        {{"--json", "status"}, "", {}, 0, "^\\{\"command\":\"status\",\"device\":\\{\"answering\":true,\"found\":true,"
                                          "\"revision\":\"01.12\"\\},\"exitCode\":0,.*\"newFirmware\":true.*\\}\n$"},
        {{"verify", "%F/vexil0113.hex"}, "", {}, 0, "vexil0113.hex: Firmware image is sound: 14336 packets\n$"},
        {{"verify", "%F/bad/vexil0119.hex"}, "", {}, 5, "line 101: Intel Hex checksum verification failed\n$"},
        {{"verify", "%F/bad/vexil0120.hex"}, "", {}, 5, "line \\d+: End File record was not found\n$"},
        {{"load"}, "", {}, 0, "^Sending firmware: 0%\n(.*\n){9}Sending firmware: 100%\nVexil now runs firmware revision 01.13\n$",
         "the file"},
        {{"load", "%F/bad/vexil0119.hex"}, "", {}, 5, "line 101: Intel Hex checksum"},
        {{"load", "%F/bad"}, "", {}, 5, "carries no revision"},
        {{"load"}, "stale", {}, 4, "Vexil firmware load failed\nThe Vexil was erased and written to the end, but it reports "
                                   "revision 01.12, not 01.13", "the file"},
        {{"--json", "load"}, "unplug=200", {}, 4, "\"state\":\"erased\"", "differs at offset 3088"},
        {{"load"}, "missed-syncs=1", {}, 0, "Vexil now runs firmware revision 01.13\n$", "the file"},
        {{"load"}, "revision=140", {}, 8, "^Not loaded: the Vexil runs 01.40, and 01.13 is older; nothing was sent"},
        {{"load", "--allow-older"}, "revision=140", {}, 0, "Vexil now runs firmware revision 01.13\n$", "the file"},
        {{"load"}, "revision=113", {}, 8, "01.13 is the same revision; nothing was sent \\(use --allow-reinstall"},
        {{"load"}, "silent", {}, 4, "^The Vexil does not answer, so nothing was sent to it"},
        {{"load"}, "absent", {}, 3, "No Vexil found"},
        {{"fetch"}, "", {{"vexil0114.hex", kGood}, {"vexilfwnotes.rtf", notes}}, 0,
         "^Copied vexil0114.hex, vexilfwnotes.rtf to %F/\n$"},
        {{"fetch"}, "", {{"vexil0113.hex", kGood}}, 7, "^Nothing to fetch"},
        {{"fetch"}, "", {{"vexil0115.hex", BadCopy()}}, 5, "failed its check"},
        {{"fetch"}, "", {}, 6, "could not be fetched"},
        {{"frobnicate"}, "", {}, 2, "^$"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.args.join(' ').toStdString() + " " + row.sim.toStdString());
        QDir(server.RootPath() + "/Vexil").removeRecursively();
        if (!row.served.isEmpty())
            QDir().mkpath(served.path());
        for (auto file = row.served.begin(); file != row.served.end(); ++file)
            HexFile::Write(served, file.key(), file.value());
        Cli cli(server.Port());
        cli.Start(row.args, "latency-us=0,erase-ms=0," + row.sim);
        QString out;
        EXPECT_EQ(cli.Finish(out), row.code);
        EXPECT_TRUE(out.contains(QRegularExpression(QString(row.out).replace("%F", cli.folder.path()))))
            << out.toStdString() << cli.process.readAllStandardError().toStdString();
        EXPECT_EQ(cli.FlashState(), row.flash);
    }

    // No server to reach: the cause is told, and the Vexil is never opened.
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    Cli offline(closed.serverPort());
    closed.close();
    offline.Start({"fetch"}, "");
    QString out;
    EXPECT_EQ(offline.Finish(out), 6);
    const QString err = QString::fromUtf8(offline.process.readAllStandardError());
    EXPECT_TRUE(err.contains("No connection to the firmware server: 127.0.0.1") && !err.contains("Vexil firmware revision")) << err.toStdString();
}

TEST(Vexilctl, CtrlCCancelsBeforeTheEraseAndAfterItOnlyWhenPressedTwice)
{
    const struct {
        QString sim;
        QStringList waitsBeforeEachCtrlC;
        QString out, flash;
    } rows[] = {
        {"latency-us=200000", {"Vexil Bootloader revision"}, "Cancelled before the erase", "untouched"},
        {"latency-us=300,erase-ms=300", {"Sending firmware file", "Press Ctrl+C again"}, "Stopped: the Vexil is left without",
         "differs at offset"},
    };
    for (const auto& row : rows) {
        Cli cli;
        cli.Start({"load"}, row.sim);
        QByteArray err;
        for (const QString& wait : row.waitsBeforeEachCtrlC) {
            ASSERT_TRUE(cli.WaitForError(wait, err)) << err.toStdString();
            ::kill(pid_t(cli.process.processId()), SIGINT);
        }
        QString out;
        EXPECT_EQ(cli.Finish(out), 130);
        EXPECT_TRUE(out.contains(row.out)) << out.toStdString();
        EXPECT_TRUE(cli.FlashState().startsWith(row.flash));
    }
}

} // namespace
