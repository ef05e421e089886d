#include "App.h"
#include "QtPrinters.h"
#include "REALEasyPrefs.h"
#include "SimRig.h"
#include "StatusLog.h"
#include "Version.h"
#include "Window1.h"
#include "XdgHomes.h"

#include <QDir>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

// Start-up and close of the main window against real preference and data
// folders in temporary places.
class Startup : public ::testing::Test, protected SimRig {
protected:
    XdgHomes homes;
    REALEasyPrefs prefs;
    std::unique_ptr<Window1> window;

    void SetUp() override
    {
        platform.screen = QRect(0, 0, 1600, 1000);
        window = std::make_unique<Window1>(globals, clock, platform, hid, prefs);
    }
};

TEST_F(Startup, FirstStartUsesTheDefaults)
{
    window->Event_Open();
    const QString folder = homes.DataPath() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(window->Bounds(), QRect(500, 215, 600, 570)) << "designed size, centred";
    EXPECT_FALSE(window->mStartup);
    EXPECT_EQ(window->Title(), "Corvane Vexil Utility Revision " VEXIL_SHORT_VERSION);
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
    EXPECT_EQ(window->MCUavailableText.Text(), "missing");
    // Folder before device: the device check has the last word on the send button.
    EXPECT_TRUE(window->SendVexilButton.Enabled());
    EXPECT_EQ(StatusLinesOf(window->StatusField),
              (QStringList{"Corvane Vexil Utility for OS X Revision " VEXIL_SHORT_VERSION, "OS X Version 6.1.0",
                           "Vexil firmware revision 01.12"}));
    EXPECT_EQ(platform.calls, (QStringList{"InitWin: 700 Initializing...", "InitWin closed"}));
}

TEST_F(Startup, StoredSettingsAreAppliedAndAllEightWrittenBackInOrder)
{
    const QString folder = homes.DataPath() + QStringLiteral("/my firmware /");
    QDir().mkpath(folder);
    homes.WritePrefs("Mystery\nkept as is\nwinTOP\n40\nFolderPath\n" + folder.toUtf8()
                     + "\nTraceMode\nTRUE\nwinLEFT\n900\nTab\n3\n");
    QTimer::singleShot(0, window.get(), [this] {
        // While the checks run, the window waits off screen.
        EXPECT_EQ(window->Bounds().top(), Window1::OffScreenTop);
    });
    window->Event_Open();
    EXPECT_EQ(window->Bounds(), QRect(900, 40, 600, 570));
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(globals.m_TraceMode && globals.m_Verbose && window->ViewTrace.Checked());
    EXPECT_EQ(window->TabPanel1Value(), 0) << "the panel has one tab";
    EXPECT_EQ(platform.calls.first(), "InitWin: 1100 Initializing...");

    window->SetBounds(QRect(30, 60, 640, 610));
    window->Event_Close();
    EXPECT_EQ(homes.Prefs(), "Mystery\nkept as is\nwinTOP\n60\nFolderPath\n" + folder.toUtf8()
                                 + "\nTraceMode\ntrue\nwinLEFT\n30\nTab\n3\nwinWIDTH\n640\nwinHEIGHT\n610\nVerbose\ntrue\n");
    EXPECT_FALSE(hid.IsOpen());
}

TEST_F(Startup, CloseDuringStartUpSavesNothing)
{
    homes.WritePrefs("winTOP\n120\n");
    QTimer::singleShot(0, window.get(), [this] { window->Event_Close(); });
    window->Event_Open();
    EXPECT_EQ(homes.Prefs(), "winTOP\n120\n") << "the off-screen top must never reach the file";
    EXPECT_EQ(window->Bounds().top(), 120);
}

TEST_F(Startup, ClosingWhileADownloadWaitsEndsItQuietlyAndKeepsTheServerKeys)
{
    QTcpServer silent; // takes the connection and never greets
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    const QByteArray keys = "FTPServer\n127.0.0.1\nFTPPort\n" + QByteArray::number(silent.serverPort()) + "\n";
    homes.WritePrefs(keys);
    window->Event_Open();
    QObject::connect(&silent, &QTcpServer::newConnection, [this] { window->Event_Close(); });
    window->CopyNewFilesButton.Push();
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->CopyNewFilesButton.Enabled(); }, 10000));
    EXPECT_TRUE(homes.Prefs().startsWith(keys + "winLEFT\n")) << "written, the server keys as they were";
    EXPECT_EQ(platform.calls.filter("MsgBox"), QStringList());
    EXPECT_EQ(QDir(globals.m_FolderPath).entryList(QDir::Files | QDir::Hidden), QStringList());
}

TEST(HelpFolder, TheBuildTreesFolderComesFirstThenTheInstalledOne)
{
    QTemporaryDir prefix;
    const QDir root(prefix.path());
    const QString bin = root.filePath(QStringLiteral("bin"));
    const QString built = root.filePath(QStringLiteral("Resources/Help"));
    const QString installed = root.filePath(QStringLiteral("share/vexil-utility/Help"));
    QDir().mkpath(bin);
    // Neither yet: the help names the build tree's folder as the missing one.
    EXPECT_EQ(App::HelpFolderFor(bin), built);
    QDir().mkpath(installed);
    EXPECT_EQ(App::HelpFolderFor(bin), installed);
    QDir().mkpath(built);
    EXPECT_EQ(App::HelpFolderFor(bin), built);
}
