#include "FirmwareDownload.h"
#include "FtpServers.h"
#include "HexFile.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "StatusLog.h"
#include "Window1Firmware.h"

#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QTest>
#include <gtest/gtest.h>

#include <map>

#include <sys/socket.h>

namespace {

const QByteArray kGood = HexFile::Image(0x1D008000, 256);

// One download run on the simulated device with its own firmware folder.
struct Rig {
    QTemporaryDir dir;
    ManualClock clock;
    SimulatedVexil sim{clock};
    VexilHid hid{sim};
    Globals globals;
    ScriptedPlatformServices platform;
    Window1Firmware window{globals, clock, platform, hid};
    PushButton button;
    FirmwareDownload download{window, button};

    // `want`: the RETR commands the server saw; the lines and message boxes
    // that tell the outcome, in order (%F: the folder); the folder's files,
    // hidden ones included; the available revision.
    void Run(quint16 port, const QStringList& local, QStringList want, const std::function<QStringList()>& commands,
             bool reached = true)
    {
        static const QRegularExpression told("^(Cop|Your|Skipped|Unable|Deleted|MsgBox|Error: |\"vexil|No connection)");
        const QString folder = globals.m_FolderPath = dir.path() + '/';
        globals.m_Verbose = true;
        window.mStartup = false;
        for (const QString& name : local)
            HexFile::Write(QDir(folder), name, kGood);
        download.SetServer("127.0.0.1", port);
        download.CopyNewFilesButton_Action();
        download.DoMacDownload();
        // A server reached is logged off, and that is told once.
        EXPECT_EQ(QTest::qWaitFor([&] { return StatusLinesOf(window.StatusField).contains("Ready"); }, reached ? 5000 : 0), reached);
        EXPECT_TRUE(button.Enabled());
        EXPECT_EQ(StatusLinesOf(window.StatusField).count("Ready"), reached ? 1 : 0);
        const QStringList after{QDir(folder).entryList(QDir::Files | QDir::Hidden).join(' '), window.MCUavailableText.Text()};
        // A server's own words after a reply code vary from server to server.
        const QStringList shown = (StatusLinesOf(window.StatusField) + platform.calls).filter(told).replaceInStrings(
            QRegularExpression("^(Error: \\d+).*"), "\\1");
        EXPECT_EQ(commands().filter("RETR ") + shown + after, want.replaceInStrings("%F", folder));
    }
};

void RunAgainst(RealFtpServer::Kind kind)
{
    const QByteArray bad = HexFile::Image(0x1D008000, 256, 0, false), notes = "{\\rtf1 }";
    const QString fetched = "Copied \"vexil0112.hex\" from Corvane", failed = "\"vexil0112.hex\" verification failed";
    const QString good = "\"vexil0112.hex\" verification succeeded", deleted = "Deleted file \"vexil0112.hex\"";
    const struct {
        QMap<QString, QByteArray> served; // in /Vexil/firmware, no bytes: a folder; none: the folder is missing
        QStringList local, want;
    } rows[] = {
        {{{"vexil0111.hex", kGood}, {"vexil0112.hex", kGood}, {"vexilfwnotes.rtf", notes}}, {"vexil0111.hex"},
         {"RETR vexil0112.hex", "RETR vexilfwnotes.rtf", "Copying files to \"%F\"", fetched, good,
          "Copied \"vexilfwnotes.rtf\" from Corvane", "Copied 2 file from Corvane to \"%F\"",
          "vexil0111.hex vexil0112.hex vexilfwnotes.rtf", "01.12"}},
        {{{"vexil0112.hex", kGood}, {"vexilfwnotes.rtf", notes}}, {"vexil0112.hex"},
         {"Your folder has the most recent Vexil firmware files from Corvane.", "vexil0112.hex", "01.12"}},
        // Listed in name order: a tie (0112 before 112), a text order that is not the numeric one, names to ignore.
        {{{"vexil0110.hex", kGood}, {"vexil0112.hex", kGood}, {"vexil112.hex", kGood}, {"vexil99.hex", kGood}, {"VEXIL0111.HEX", kGood},
          {"xvexil0300.hex", kGood}, {"vexil0400.txt", kGood}, {"vexil0500.hex.bak", kGood}, {"vexil9999\\.hex", kGood}},
         {}, {"RETR vexil0112.hex", "Skipped listed name \"vexil9999\\.hex\": not a plain file name", "Copying files to \"%F\"",
              fetched, good, "Copied 1 file from Corvane to \"%F\"", "vexil0112.hex", "01.12"}},
        {{{"vexil0112.hex", bad}}, {"vexil0111.hex"},
         QStringList(3, "RETR vexil0112.hex") + QStringList{"Copying files to \"%F\"", fetched, failed, deleted, fetched, failed,
             deleted, fetched, failed, deleted, "Unable to copy file \"vexil0112.hex\"", "Copied 3 file from Corvane to \"%F\"",
             "vexil0111.hex", "01.11"}},
        {{}, {"vexil0111.hex"}, {"Error: 550", "MsgBox: Could not find /Vexil/firmware directory on Corvane server", "vexil0111.hex", "01.11"}},
        // The newest name is a folder: the failed fetch leaves nothing behind.
        {{{"vexil0113.hex", {}}}, {},
         {"RETR vexil0113.hex", "Copying files to \"%F\"", "Error: 550", "Copied 1 file from Corvane to \"%F\"", "", "missing"}},
    };
    RealFtpServer server(kind);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    const QDir firmware(server.RootPath() + "/Vexil/firmware");
    for (const auto& row : rows) {
        QDir(server.RootPath() + "/Vexil").removeRecursively();
        QDir().mkpath(row.served.isEmpty() ? server.RootPath() : firmware.path());
        for (auto file = row.served.begin(); file != row.served.end(); ++file)
            file.value().isEmpty() ? void(firmware.mkdir(file.key())) : void(HexFile::Write(firmware, file.key(), file.value()));
        const qsizetype before = server.CommandsSeen().size();
        Rig().Run(server.Port(), row.local, row.want, [&] { return server.CommandsSeen().mid(before); });
    }
}

} // namespace

TEST(DownloadRun, AgainstVsftpdAndPyftpdlib)
{
    RunAgainst(RealFtpServer::Kind::Vsftpd);
    RunAgainst(RealFtpServer::Kind::Pyftpdlib);
}

// No connection, refusal, a cut transfer's late reply and silence, which real servers will not give on demand.
TEST(DownloadRun, AgainstAPeerThatMisbehaves)
{
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const quint16 closedPort = closed.serverPort();
    closed.close();
    Rig unreachable;
    unreachable.Run(closedPort, {}, {"Error: 104", QString("No connection to the firmware server: 127.0.0.1 (port %1) refused it. "
                                                           "The server may be down; try again later. If you set FTPServer or "
                                                           "FTPPort in the preferences, check them too.").arg(closedPort),
                                     "MsgBox: Logon to Corvane FTP server failed", "", "missing"},
                    [] { return QStringList(); }, false);

    ScriptedFtpPeer refusing, silent, cutting;
    refusing.replies = {"220 ready\r\n", "331 password\r\n", "530 Login incorrect.\r\n", "221 bye\r\n"};
    Rig loading, waiting, cut;
    loading.window.mDeviceBusy = true; // a load owns the link
    loading.Run(refusing.Port(), {}, {"Error: 530", "MsgBox: Logon to Corvane FTP server failed", "", "missing"},
                [&] { return refusing.received; });
    EXPECT_EQ(loading.window.MCUinstalledText.Text(), "??.??") << "no revision exchange between two packets";
    EXPECT_EQ(loading.window.VexilRevisionsTimer.GetMode(), Timer::ModeSingle) << "the check waits for the load's end";

    // The firmware's data connection is reset after its 150; the server's 426
    // for it comes only with the answer to the next command, the notes' TYPE.
    QTcpServer data;
    ASSERT_TRUE(data.listen(QHostAddress::LocalHost));
    const QByteArray pasv = QString("227 Entering Passive Mode (127,0,0,1,%1,%2)\r\n").arg(data.serverPort() / 256).arg(data.serverPort() % 256).toLatin1();
    bool cutAnswered = false;
    cutting.replies = {"220 ready\r\n"};
    cutting.onLine = [&](const QString& line) {
        const QString verb = line.section(' ', 0, 0);
        const std::map<QString, QByteArray> answers{{"USER", "331 password\r\n"}, {"PASS", "230 in\r\n"}, {"CWD", "250 ok\r\n"},
            {"PASV", pasv}, {"PWD", "257 \"/Vexil/firmware\"\r\n"}, {"TYPE", "200 type\r\n"}, {"NOOP", "200 noop\r\n"},
            {"NLST", "150 list\r\n226 done\r\n"}, {"RETR", "150 file\r\n226 done\r\n"}, {"QUIT", "221 bye\r\n"}};
        QByteArray answer = answers.count(verb) ? answers.at(verb) : "500 what\r\n";
        if (line == "RETR vexil0113.hex")
            answer = "150 file\r\n";
        else if (!cutAnswered && cutting.received.contains("RETR vexil0113.hex"))
            cutAnswered = true, answer.prepend("426 Connection reset.\r\n");
        cutting.replies.resize(cutting.received.size());
        cutting.replies.append(answer);
        if (verb != "NLST" && verb != "RETR")
            return;
        QTcpSocket* socket = data.nextPendingConnection();
        if (!socket && data.waitForNewConnection(2000))
            socket = data.nextPendingConnection();
        ASSERT_TRUE(socket);
        if (line == "RETR vexil0113.hex") {
            // After the 150: a close with nothing left to linger on is a reset.
            QTimer::singleShot(50, socket, [socket] {
                const linger reset{1, 0};
                ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
                socket->abort();
            });
            return;
        }
        socket->write(verb == "NLST" ? "vexil0113.hex\r\nvexilfwnotes.rtf\r\n" : "{\\rtf1 }");
        socket->disconnectFromHost();
    };
    cut.Run(cutting.Port(), {}, {"RETR vexil0113.hex", "RETR vexilfwnotes.rtf", "Copying files to \"%F\"", "Copied \"vexilfwnotes.rtf\" from Corvane",
                                 "Copied 2 file from Corvane to \"%F\"", "vexilfwnotes.rtf", "missing"},
            [&] { return cutting.received; });
    EXPECT_EQ(cutting.received.mid(cutting.received.indexOf("RETR vexil0113.hex") + 1).join(" / "), "PASV / TYPE I / RETR vexilfwnotes.rtf / QUIT");

    // No answer to PASV, and the run's bound passes.
    silent.replies = {"220 ready\r\n", "331 password\r\n", "230 in\r\n", "250 ok\r\n", "", "221 bye\r\n"};
    silent.onLine = [&](const QString& line) {
        if (line == "PASV")
            waiting.clock.Advance(FirmwareDownload::DefaultRunBoundMs * 1000);
    };
    waiting.Run(silent.Port(), {}, {"Error: The connection timed out. Ending session.",
                "MsgBox: Error getting directory listing from ftp server.", "", "missing"}, [&] { return silent.received; });
}
