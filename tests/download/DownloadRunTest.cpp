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
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

const QByteArray kGood = HexFile::Image(0x1D008000, 256);

// A peer for what real servers will not do on demand: refusals, hostile names,
// a cut transfer, a listing kept alive. It answers each command as it comes;
// `replies` holds the answers to the words it does not serve itself.
struct FakeFtp : QObject {
    QTcpServer control, data;
    QMap<QString, QByteArray> replies{{"USER", "331 password\r\n"}, {"PASS", "230 in\r\n"}, {"CWD", "250 ok\r\n"},
                                      {"PWD", "257 \"/Vexil/firmware\"\r\n"}, {"QUIT", "221 bye\r\n"}};
    QByteArray listing;
    qsizetype cut = -1; // bytes of a fetched file sent before its connection is cut
    std::function<void()> onList;
    QStringList seen;

    FakeFtp()
    {
        control.listen(QHostAddress::LocalHost);
        data.listen(QHostAddress::LocalHost);
        connect(&control, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* client = control.nextPendingConnection();
            client->write("220 ready\r\n");
            connect(client, &QTcpSocket::readyRead, this, [this, client] {
                while (client->canReadLine())
                    client->write(Answer(QString::fromLatin1(client->readLine()).trimmed()));
            });
        });
    }
    QByteArray Answer(const QString& line)
    {
        const QString verb = line.section(' ', 0, 0);
        seen << line;
        if (verb == "NLST" && onList)
            onList();
        if (verb == "PASV")
            return QString("227 (127,0,0,1,%1,%2)\r\n").arg(data.serverPort() / 256).arg(data.serverPort() % 256).toLatin1();
        if (replies.contains(verb) || (verb != "NLST" && verb != "RETR"))
            return replies.value(verb, "200 ok\r\n");
        const bool whole = verb == "NLST" || cut < 0;
        if (data.hasPendingConnections() || data.waitForNewConnection(5000)) {
            QTcpSocket* to = data.nextPendingConnection();
            to->write(verb == "NLST" ? listing : kGood.left(whole ? kGood.size() : cut));
            to->disconnectFromHost();
        }
        return whole ? "150 here\r\n226 done\r\n" : "150 here\r\n426 cut\r\n";
    }
};

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
    void Run(quint16 port, const QStringList& local, QStringList want, const std::function<QStringList()>& commands)
    {
        static const QRegularExpression told("^(Cop|Your|Skipped|Unable|Deleted|MsgBox|Error: |\"vexil)");
        const QString folder = globals.m_FolderPath = dir.path() + '/';
        globals.m_Verbose = true;
        window.mStartup = false;
        for (const QString& name : local)
            HexFile::Write(QDir(folder), name, kGood);
        download.SetServer("127.0.0.1", port);
        download.CopyNewFilesButton_Action();
        download.DoMacDownload();
        EXPECT_TRUE(QTest::qWaitFor([&] { return StatusLinesOf(window.StatusField).contains("Ready"); }, 5000));
        EXPECT_TRUE(button.Enabled());
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
        QMap<QString, QByteArray> served; // in /Vexil/firmware; none: the folder is missing
        QStringList local, want;
    } rows[] = {
        {{{"vexil0111.hex", kGood}, {"vexil0112.hex", kGood}, {"vexilfwnotes.rtf", notes}}, {"vexil0111.hex"},
         {"RETR vexil0112.hex", "RETR vexilfwnotes.rtf", "Copying files to \"%F\"", fetched, good,
          "Copied \"vexilfwnotes.rtf\" from Corvane", "Copied 2 file from Corvane to \"%F\"",
          "vexil0111.hex vexil0112.hex vexilfwnotes.rtf", "01.12"}},
        {{{"vexil0112.hex", kGood}, {"vexilfwnotes.rtf", notes}}, {"vexil0112.hex"},
         {"Your folder has the most recent Vexil firmware files from Corvane.", "vexil0112.hex", "01.12"}},
        // Listed in name order: a tie (0112 before 112), a text order that is not the numeric one, names to ignore.
        {{{"vexil0110.hex", kGood}, {"vexil0112.hex", kGood}, {"vexil112.hex", kGood}, {"vexil99.hex", kGood},
          {"VEXIL0111.HEX", kGood}, {"xvexil0300.hex", kGood}, {"vexil0400.txt", kGood}, {"vexil0500.hex.bak", kGood}},
         {}, {"RETR vexil0112.hex", "Copying files to \"%F\"", fetched, good, "Copied 1 file from Corvane to \"%F\"",
              "vexil0112.hex", "01.12"}},
        {{{"vexil0112.hex", bad}}, {"vexil0111.hex"},
         QStringList(3, "RETR vexil0112.hex") + QStringList{"Copying files to \"%F\"", fetched, failed, deleted, fetched, failed,
             deleted, fetched, failed, deleted, "Unable to copy file \"vexil0112.hex\"", "Copied 3 file from Corvane to \"%F\"",
             "vexil0111.hex", "01.11"}},
        {{}, {"vexil0111.hex"}, {"Error: 550", "MsgBox: Could not find /Vexil/firmware directory on Corvane server", "vexil0111.hex", "01.11"}},
    };
    RealFtpServer server(kind);
    QString error;
    ASSERT_TRUE(server.Start(&error)) << error.toStdString();
    const QDir firmware(server.RootPath() + "/Vexil/firmware");
    for (const auto& row : rows) {
        QDir(server.RootPath() + "/Vexil").removeRecursively();
        QDir().mkpath(row.served.isEmpty() ? server.RootPath() : firmware.path());
        for (auto file = row.served.begin(); file != row.served.end(); ++file)
            HexFile::Write(firmware, file.key(), file.value());
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

TEST(DownloadRun, AgainstAPeerThatMisbehaves)
{
    const QString listingFailed = "MsgBox: Error getting directory listing from ftp server.";
    const QStringList fetched{"RETR vexil0113.hex", "Copying files to \"%F\"", "Copied \"vexil0113.hex\" from Corvane"};
    const struct {
        std::function<void(FakeFtp&, Rig&)> setup;
        QStringList want;
    } rows[] = {
        {[](FakeFtp& f, Rig&) { f.replies["PASS"] = "530 Login incorrect.\r\n"; },
         {"Error: 530", "MsgBox: Logon to Corvane FTP server failed", "", "missing"}},
        {[](FakeFtp& f, Rig&) { f.replies["NLST"] = "550 No files found.\r\n"; }, {"Error: 550", listingFailed, "", "missing"}},
        {[](FakeFtp& f, Rig&) { f.listing = "  vexil0113.hex \r\nvexil9999/../../x.hex\r\nvexil9998\x01.hex\r\n"; },
         QStringList{"RETR vexil0113.hex", "Skipped listed name \"vexil9999/../../x.hex\": not a plain file name",
                     "Skipped listed name \"vexil9998?.hex\": not a plain file name"} + fetched.mid(1)
             + QStringList{"\"vexil0113.hex\" verification succeeded", "Copied 1 file from Corvane to \"%F\"", "vexil0113.hex", "01.13"}},
        {[](FakeFtp& f, Rig&) { f.listing = "vexil0113.hex\r\n", f.cut = 100; },
         {"RETR vexil0113.hex", "Copying files to \"%F\"", "Error: 426", "Copied 1 file from Corvane to \"%F\"", "", "missing"}},
        {[](FakeFtp& f, Rig& r) {
             f.replies["NLST"] = "150-still working\r\n";
             f.onList = [&r] { r.clock.Advance(FirmwareDownload::DefaultRunBoundMs * 1000); };
         },
         {"Error: The connection timed out. Ending session.", listingFailed, "", "missing"}},
    };
    for (const auto& row : rows) {
        FakeFtp peer;
        Rig rig;
        row.setup(peer, rig);
        rig.Run(peer.control.serverPort(), {}, row.want, [&] { return peer.seen; });
    }
}

TEST(DownloadRun, EndingDuringALoadLeavesTheDeviceToTheLoad)
{
    FakeFtp peer;
    peer.replies["PASS"] = "530 Login incorrect.\r\n";
    Rig rig;
    rig.window.mDeviceBusy = true; // a load owns the link
    rig.Run(peer.control.serverPort(), {}, {"Error: 530", "MsgBox: Logon to Corvane FTP server failed", "", "missing"},
            [&] { return peer.seen; });
    EXPECT_EQ(rig.window.MCUinstalledText.Text(), "??.??") << "no revision exchange between two packets";
    EXPECT_EQ(rig.window.VexilRevisionsTimer.GetMode(), Timer::ModeSingle) << "the check waits for the load's end";
}
