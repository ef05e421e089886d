#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "StatusLog.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"
#include "Window1Firmware.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const char* const InvalidFolder = "MsgBox: The firmware folder path is invalid.  It will be set to the default.";
const char* const DiskTrouble = "MsgBox: Unable to create default folder.. Something appears to wrong with your hard "
                                "drive!! You may be out of disk space.";

} // namespace

class LocalCheck : public ::testing::Test {
protected:
    QTemporaryDir home;       // stands for the user's application data folder
    QTemporaryDir firmware;   // a firmware folder chosen by the user
    ManualClock clock;
    SimulatedVexil sim{clock};
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid{sim};
    Window1Firmware window{globals, clock, platform, hid};

    void SetUp() override
    {
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        globals.m_FolderPath = firmware.path() + QLatin1Char('/');
        window.mStartup = false;
    }
    void TearDown() override { qunsetenv("XDG_DATA_HOME"); }

    void Touch(const QString& name) { QFile(firmware.filePath(name)).open(QIODevice::WriteOnly); }

    QStringList StatusLines() const { return StatusLinesOf(window.StatusField); }
};

TEST_F(LocalCheck, NewestFileOfTheFolderIsShownAndChosen)
{
    for (const char* name : {"vexil0110.hex", "vexil0112.hex", "vexilfwnotes.rtf", "VEXIL0111.HEX"})
        Touch(QString::fromLatin1(name));
    QDir(firmware.path()).mkdir(QStringLiteral("vexil9999.hex")); // a folder is not a firmware file
    window.SendVexilButton.SetEnabled(true);
    window.Checklocalfiles();
    EXPECT_EQ(window.MCUavailableText.Text(), "01.12");
    EXPECT_EQ(window.hmcuRevision, "0112");
    EXPECT_EQ(window.m_RevisionedFilename.m_mstrPath, "vexil0112.hex");
    EXPECT_EQ(window.FolderPath.Text(), globals.m_FolderPath);
    EXPECT_TRUE(window.SendVexilButton.Enabled()) << "left as the device check set it";
    EXPECT_TRUE(window.HasRequiredFiles());
    EXPECT_EQ(window.m_RevisionedFilename.m_strpath, "vexil0112.hex");
    EXPECT_TRUE(platform.calls.isEmpty());
    EXPECT_TRUE(StatusLines().isEmpty());
}

TEST_F(LocalCheck, EmptyFolderSaysMissingExceptAtStartUp)
{
    for (const bool startup : {false, true}) {
        SCOPED_TRACE(startup ? "start-up" : "running");
        window.StatusField.SetText({});
        window.mStartup = startup;
        window.SendVexilButton.SetEnabled(true);
        window.Checklocalfiles();
        EXPECT_EQ(window.MCUavailableText.Text(), "missing");
        EXPECT_EQ(window.m_RevisionedFilename.m_mstrPath, "-");
        EXPECT_FALSE(window.SendVexilButton.Enabled());
        EXPECT_FALSE(window.HasRequiredFiles());
        const QStringList expected = startup ? QStringList{}
                                             : QStringList{"Firmware folder does not contain required Vexil firmware file",
                                                           "Click \"\"Copy new files from Corvane\"",
                                                           " or navigate to a folder containing Vexil firmware files"};
        EXPECT_EQ(StatusLines(), expected);
    }
}

TEST_F(LocalCheck, DeletedFolderIsReplacedByTheDefaultAfterTheMessage)
{
    globals.m_FolderPath = firmware.path() + QStringLiteral("/gone/");
    window.Checklocalfiles();
    const QString expected = home.path() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder}));
    EXPECT_EQ(globals.m_FolderPath, expected);
    EXPECT_TRUE(QFileInfo(expected).isDir());
    EXPECT_EQ(window.FolderPath.Text(), expected);
    EXPECT_EQ(window.MCUavailableText.Text(), "missing");

    // The next check finds the recreated folder and says nothing more.
    platform.calls.clear();
    QDir(expected).removeRecursively();
    window.Checklocalfiles();
    EXPECT_TRUE(QFileInfo(expected).isDir());
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder}));
}

TEST_F(LocalCheck, UnusableDataFolderGivesTheDiskMessageAndLeavesTheLabels)
{
    // The application data folder is a file: nothing can be created below it.
    QFile blocker(home.filePath(QStringLiteral("data")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    qputenv("XDG_DATA_HOME", blocker.fileName().toUtf8());
    globals.m_FolderPath.clear();
    window.MCUavailableText.SetText(QStringLiteral("01.05"));
    window.FolderPath.SetText(QStringLiteral("/old/path/"));
    window.Checklocalfiles();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder, "Beep", DiskTrouble}));
    EXPECT_EQ(window.MCUavailableText.Text(), "01.05");
    EXPECT_EQ(window.FolderPath.Text(), "/old/path/");
    EXPECT_TRUE(globals.m_FolderPath.isEmpty());
}

TEST_F(LocalCheck, NewerFolderRevisionIsAnnouncedOnlyWhenItCounts)
{
    struct Row {
        const char* installed;
        const char* available;
        const char* status;
        bool startup;
        bool newer;
        bool announced; // status line and button
        bool window;    // beep and the notice
    };
    const Row rows[] = {
        {"01.12", "01.13", "Main", false, true, true, true},
        {"01.12", "01.13", "Main", true, true, true, false},
        {"01.12", "01.12", "Main", false, false, false, false},
        {"01.13", "01.12", "Main", false, false, false, false},
        {"N/A", "01.13", "Main", false, false, false, false},
        {"--", "00.01", "Main", false, true, true, true},
        {"--", "missing", "Main", false, false, false, false},
        {"01.12", "01.13", "Unknown", false, true, false, false},
        {"01.99", "10.05", "Main", false, true, true, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.installed << " vs " << row.available << " " << row.status
                                        << (row.startup ? " start-up" : ""));
        window.StatusField.SetText({});
        platform.calls.clear();
        window.MCUinstalledText.SetText(QString::fromLatin1(row.installed));
        window.MCUavailableText.SetText(QString::fromLatin1(row.available));
        globals.m_FirmwareStatus = QString::fromLatin1(row.status);
        window.mStartup = row.startup;
        window.SendVexilButton.SetEnabled(false);
        window.CheckRevisionsNowButton.SetEnabled(false);

        window.CheckNewRevisions();
        EXPECT_EQ(window.newMCUavailable, row.newer);
        EXPECT_EQ(StatusLines(), row.announced ? QStringList{"New firmware is available for your Vexil"} : QStringList{});
        EXPECT_EQ(window.SendVexilButton.Enabled(), row.announced);
        EXPECT_EQ(platform.calls, (row.window ? QStringList{"Beep", "MessageWindow"} : QStringList{}));
        EXPECT_TRUE(window.CheckRevisionsNowButton.Enabled());
    }
}

TEST_F(LocalCheck, ReleaseNotesGoToTheDesktopOrSayTheyAreMissing)
{
    window.ShowReleaseNotes();
    EXPECT_EQ(platform.calls, QStringList{"MsgBox: ERROR: File not found! (vexilfwnotes.rtf)"});

    Touch(QStringLiteral("vexilfwnotes.rtf"));
    platform.calls.clear();
    platform.viewNotesInMessageWindow = true;
    window.MCUinstalledText.SetText(QStringLiteral("01.12"));
    window.MCUavailableText.SetText(QStringLiteral("01.13"));
    globals.m_FirmwareStatus = QStringLiteral("Main");
    window.CheckNewRevisions();
    EXPECT_EQ(platform.calls,
              (QStringList{"Beep", "MessageWindow", "OpenDocument: " + firmware.filePath("vexilfwnotes.rtf")}));
}

TEST_F(LocalCheck, CheckNowLooksAtTheFolderAtOnceAndTheDeviceLater)
{
    Touch(QStringLiteral("vexil0113.hex"));
    window.CheckRevisionsNowButton.Push();
    EXPECT_FALSE(window.CheckRevisionsNowButton.Enabled());
    EXPECT_EQ(window.MCUavailableText.Text(), "01.13");
    EXPECT_EQ(sim.Log().size(), 0u) << "the device is asked only when the timer fires";
    QSignalSpy fired(&window.VexilRevisionsTimer, &Timer::Action);
    ASSERT_TRUE(fired.wait(2000));
    EXPECT_TRUE(window.CheckRevisionsNowButton.Enabled());
    EXPECT_EQ(window.MCUinstalledText.Text(), "01.12");
    EXPECT_TRUE(window.SendVexilButton.Enabled());
}
