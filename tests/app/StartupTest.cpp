#include "App.h"
#include "HexFile.h"
#include "OnlyCopyLock.h"
#include "QtPrinters.h"
#include "REALEasyPrefs.h"
#include "SimRig.h"
#include "StatusLog.h"
#include "Version.h"
#include "Window1.h"
#include "XdgHomes.h"

#include <QLockFile>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <unistd.h>

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
    // A fresh main window opened on these stored preferences.
    void OpenWith(const QByteArray& stored)
    {
        homes.WritePrefs(stored);
        window.reset(); // its close would detach the status log from the new one
        window = std::make_unique<Window1>(globals, clock, platform, hid, prefs);
        window->Event_Open();
    }
};

TEST_F(Startup, FirstStartUsesTheDefaults)
{
    window->Event_Open();
    const QString folder = homes.DataPath() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(window->Bounds(), QRect(500, 215, 600, 570)) << "designed size, centred";
    EXPECT_EQ(window->Title(), "Corvane Vexil Utility Revision " VEXIL_SHORT_VERSION);
    EXPECT_EQ(std::pair(window->MCUinstalledText.Text(), window->MCUavailableText.Text()), std::pair(QStringLiteral("01.12"), QStringLiteral("missing")));
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
    EXPECT_EQ(platform.calls.first(), "InitWin: 1100 Initializing...");

    window->SetBounds(QRect(30, 60, 640, 610));
    window->Event_Close();
    EXPECT_EQ(homes.Prefs(), "Mystery\nkept as is\nwinTOP\n60\nFolderPath\n" + folder.toUtf8()
                                 + "\nTraceMode\ntrue\nwinLEFT\n30\nTab\n3\nwinWIDTH\n640\nwinHEIGHT\n610\nVerbose\ntrue\n");
    EXPECT_FALSE(hid.IsOpen());
}

TEST_F(Startup, StoredValuesAreReadDefensively)
{
    // Geometry that cannot show: the default placement instead.
    const QRect designed = window->Bounds();
    for (const char* stored : {"winLEFT\n99999999999\nwinTOP\n99999999999\n", "winWIDTH\n32000\nwinHEIGHT\n32000\n",
                               "winWIDTH\n100\n", "winTOP\n-40\n", "winLEFT\n1900\n"}) {
        OpenWith(stored);
        EXPECT_EQ(window->Bounds(), designed) << stored;
    }
    // A folder stored without its final "/".
    HexFile::Write(QDir(homes.DataPath()), QStringLiteral("vexil0113.hex"), "");
    OpenWith("FolderPath\n" + homes.DataPath().toUtf8() + "\n");
    EXPECT_TRUE(QFileInfo(globals.m_FolderPath + window->m_RevisionedFilename.m_mstrPath).isFile());
    // A data folder that is a file: the default folder is still named below it.
    qputenv("XDG_DATA_HOME", homes.PrefsPath().toUtf8());
    OpenWith("");
    EXPECT_EQ(globals.m_FolderPath, homes.PrefsPath() + QStringLiteral("/Corvane/Vexil Firmware/"));
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

TEST_F(Startup, OnlyOneCopyRunsAndNotesNoProgramTakesAreReported)
{
    auto first = App::ClaimOnlyCopy(platform);
    EXPECT_TRUE(first && !App::ClaimOnlyCopy(platform));
    first.reset();
    {
        // vexilctl at work is named as such; its fetch takes only the download's lock.
        OnlyCopyLock loading, fetching(OnlyCopyLock::DownloadLockName);
        ASSERT_TRUE(loading.TryClaim("vexilctl load") && fetching.TryClaim("vexilctl fetch"));
        EXPECT_FALSE(App::ClaimOnlyCopy(platform));
        EXPECT_TRUE(platform.calls.constLast().startsWith(QString("MsgBox: The Vexil is in use by vexilctl load (process %1).").arg(getpid())));
    }
    EXPECT_TRUE(App::ClaimOnlyCopy(platform)) << "free again once the first copy ends";
    globals.m_FolderPath = homes.DataPath() + QLatin1Char('/');
    QDir().mkpath(globals.m_FolderPath);
    HexFile::Write(QDir(globals.m_FolderPath), QStringLiteral("vexilfwnotes.rtf"), "{\\rtf1}");
    platform.documentOpens = false;
    window->ShowReleaseNotes();
    EXPECT_EQ(platform.calls.filter(QRegularExpression("^MsgBox: The (release notes cannot|Vexil Utility is already)")).size(), 2);
}

TEST_F(Startup, PreferencesKeepUnknownKeysInPlaceAndAppendNewOnes)
{
    homes.WritePrefs("FTPServer\nmirror.example\nColor\nred\ncolor\nblue\nVerbose\nfalse\n");
    prefs.InitPrefFile(QStringLiteral("VexilUtilPrefs"));
    EXPECT_EQ(prefs.GetPrefString("Absent", "d"), "d");
    EXPECT_EQ(prefs.GetPrefString("COLOR", "none"), "red") << "the first of two equal keys wins";
    prefs.SetPrefString("cOLOR", "green");
    prefs.SetPrefBoolean("Trace", true);
    prefs.SetPrefNumber("Count", -40);
    prefs.SetPrefBoolean("verbose", true);
    ASSERT_TRUE(prefs.WritePrefsFile());
    EXPECT_EQ(homes.Prefs(),
              "FTPServer\nmirror.example\nColor\ngreen\ncolor\nblue\nVerbose\ntrue\nTrace\ntrue\nCount\n-40\n");
}

TEST_F(Startup, FailedPreferencesSaveKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    homes.WritePrefs("FolderPath\n/old/\n");
    // A copy left by a write killed at its rename goes at the next start; the user's own copy stays.
    for (const char* name : {"VexilUtilPrefs.PgvK5y", "VexilUtilPrefs.backup"})
        QFile::copy(homes.PrefsPath(), QDir(homes.ConfigPath()).filePath(name));
    prefs.InitPrefFile(QStringLiteral("VexilUtilPrefs"));
    EXPECT_TRUE(QFile::remove(QDir(homes.ConfigPath()).filePath("VexilUtilPrefs.backup")));
    prefs.SetPrefString("FolderPath", "/new/");
    prefs.beforeCommit = [] { return false; };
    EXPECT_FALSE(prefs.WritePrefsFile());
    EXPECT_EQ(homes.Prefs(), "FolderPath\n/old/\n");
    EXPECT_EQ(QDir(homes.ConfigPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"VexilUtilPrefs"});

    // A folder where the file should be: nothing read, nothing written, no crash.
    QFile::remove(homes.PrefsPath());
    ASSERT_TRUE(QDir().mkpath(homes.PrefsPath()));
    REALEasyPrefs blocked;
    blocked.InitPrefFile(QStringLiteral("VexilUtilPrefs"));
    EXPECT_EQ(blocked.prefNames, QStringList{QString()});
    EXPECT_FALSE(blocked.WritePrefsFile());
    EXPECT_TRUE(QFileInfo(homes.PrefsPath()).isDir());
}

TEST(HelpFolder, TheBuildTreesFolderComesFirstThenTheInstalledOne)
{
    QTemporaryDir root;
    const QString bin = root.filePath("bin"), built = root.filePath("Resources/Help"), installed = root.filePath("share/vexil-utility/Help");
    // Neither yet: the help names the build tree's folder as the missing one.
    EXPECT_EQ(App::HelpFolderFor(bin), built);
    QDir().mkpath(installed);
    EXPECT_EQ(App::HelpFolderFor(bin), installed);
    QDir().mkpath(built);
    EXPECT_EQ(App::HelpFolderFor(bin), built);
}
