#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "StatusLog.h"
#include "REALEasyPrefs.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "Version.h"
#include "VexilHid.h"
#include "Window1.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

// Start-up and close of the main window against real preference and data
// folders in temporary places.
class Startup : public ::testing::Test {
protected:
    QTemporaryDir config;
    QTemporaryDir data;
    ManualClock clock;
    SimulatedVexil sim{clock};
    ScriptedPlatformServices platform;
    Globals globals;
    REALEasyPrefs prefs;
    VexilHid hid{sim};
    std::unique_ptr<Window1> window;

    void SetUp() override
    {
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        qputenv("XDG_DATA_HOME", data.path().toUtf8());
        platform.screen = QRect(0, 0, 1600, 1000);
        window = std::make_unique<Window1>(globals, clock, platform, hid, prefs);
    }
    void TearDown() override
    {
        window.reset();
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_DATA_HOME");
    }

    QString PrefsPath() const { return config.filePath(QStringLiteral("VexilUtilPrefs")); }
    QByteArray PrefsBytes() const
    {
        QFile file(PrefsPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    void WritePrefs(const QByteArray& bytes) const
    {
        QFile file(PrefsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QStringList StatusLines() const { return StatusLinesOf(window->StatusField); }
};

TEST_F(Startup, FirstStartCreatesEmptyPreferencesAndUsesTheDefaults)
{
    window->Event_Open();
    EXPECT_EQ(PrefsBytes(), QByteArray());
    const QString folder = data.path() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(window->FolderPath.Text(), folder);
    EXPECT_EQ(window->Bounds(), QRect(500, 215, 600, 570)) << "designed size, centred";
    EXPECT_FALSE(globals.m_TraceMode);
    EXPECT_FALSE(window->ViewTrace.Checked());
    EXPECT_FALSE(window->mStartup);
    EXPECT_EQ(window->Title(), "Corvane Vexil Utility Revision " VEXIL_SHORT_VERSION);
    EXPECT_EQ(globals.m_FirmwareStatus, "Main");
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
    EXPECT_EQ(window->MCUavailableText.Text(), "missing");
    // Folder before device: the device check has the last word on the send button.
    EXPECT_TRUE(window->SendVexilButton.Enabled());
    EXPECT_EQ(StatusLines(), (QStringList{"Corvane Vexil Utility for OS X Revision " VEXIL_SHORT_VERSION,
                                          "OS X Version 6.1.0", "Vexil firmware revision 01.12"}));
    EXPECT_EQ(platform.calls, (QStringList{"InitWin: 700 Initializing...", "InitWin closed"}));
}

TEST_F(Startup, StoredSettingsAreAppliedAndAllEightWrittenBackInOrder)
{
    QTemporaryDir firmware;
    const QString folder = firmware.path() + QStringLiteral("/my firmware /");
    QDir().mkpath(folder);
    WritePrefs("Mystery\nkept as is\nwinTOP\n-40\nFolderPath\n" + folder.toUtf8() + "\nTraceMode\nTRUE\nwinLEFT\n1700\n");
    QTimer::singleShot(0, window.get(), [this] {
        // While the checks run, the window waits off screen.
        EXPECT_EQ(window->Bounds().top(), Window1::OffScreenTop);
    });
    window->Event_Open();
    EXPECT_EQ(window->Bounds(), QRect(1700, -40, 600, 570));
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(globals.m_TraceMode && globals.m_Verbose && window->ViewTrace.Checked());
    EXPECT_EQ(platform.calls.first(), "InitWin: 1900 Initializing...");

    window->SetBounds(QRect(30, 60, 640, 610));
    globals.m_TabPanel = 0;
    window->Event_Close();
    EXPECT_EQ(PrefsBytes(), "Mystery\nkept as is\nwinTOP\n60\nFolderPath\n" + folder.toUtf8()
                                + "\nTraceMode\ntrue\nwinLEFT\n30\nwinWIDTH\n640\nwinHEIGHT\n610\nVerbose\ntrue\nTab\n0\n");
    EXPECT_FALSE(hid.IsOpen());
}

TEST_F(Startup, CloseDuringStartUpSavesNothing)
{
    WritePrefs("winTOP\n120\n");
    QTimer::singleShot(0, window.get(), [this] { window->Event_Close(); });
    window->Event_Open();
    EXPECT_EQ(PrefsBytes(), "winTOP\n120\n") << "the off-screen top must never reach the file";
    EXPECT_EQ(window->Bounds().top(), 120);
}

TEST_F(Startup, NormalCloseWritesEveryKeyEvenUnchanged)
{
    window->Event_Open();
    window->Event_Close();
    const QStringList lines = QString::fromUtf8(PrefsBytes()).split(QLatin1Char('\n'));
    QStringList keys;
    for (qsizetype i = 0; i + 1 < lines.size(); i += 2)
        keys << lines[i];
    EXPECT_EQ(keys, (QStringList{"winLEFT", "winWIDTH", "winTOP", "winHEIGHT", "Verbose", "Tab", "FolderPath", "TraceMode"}));
    EXPECT_FALSE(PrefsBytes().contains("10000"));
}

TEST_F(Startup, FailedWriteKeepsThePreviousFile)
{
    WritePrefs("winLEFT\n5\n");
    window->Event_Open();
    prefs.beforeCommit = [] { return false; }; // the write dies before it replaces the file
    window->Event_Close();
    EXPECT_EQ(PrefsBytes(), "winLEFT\n5\n");
    EXPECT_EQ(QDir(config.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"VexilUtilPrefs"});
}

TEST_F(Startup, StoredTabIsKeptButNeverSelectsAnything)
{
    WritePrefs("Tab\n3\n");
    window->Event_Open();
    EXPECT_EQ(globals.m_TabPanel, 3);
    EXPECT_EQ(window->TabPanel1Value(), 0) << "the panel has one tab";
    window->Event_Close();
    EXPECT_TRUE(PrefsBytes().startsWith("Tab\n3\n"));
}

TEST_F(Startup, ClosingWhileADownloadWaitsEndsItQuietlyAndKeepsTheServerKeys)
{
    QTcpServer silent; // takes the connection and never greets
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    const QByteArray keys = "FTPServer\n127.0.0.1\nFTPPort\n" + QByteArray::number(silent.serverPort()) + "\n";
    WritePrefs(keys);
    window->Event_Open();
    QObject::connect(&silent, &QTcpServer::newConnection, [this] { window->Event_Close(); });
    window->CopyNewFilesButton.Push();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->CopyNewFilesButton.Enabled(); }, 10000));
    EXPECT_TRUE(PrefsBytes().startsWith(keys + "winLEFT\n")) << "written, the server keys as they were";
    EXPECT_EQ(platform.calls.filter("MsgBox"), QStringList());
    EXPECT_EQ(QDir(globals.m_FolderPath).entryList(QDir::Files | QDir::Hidden), QStringList());
}
