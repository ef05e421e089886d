#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"
#include "Window1Firmware.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const QString Return = QString(QChar(13));
const QString Enter = QString(QChar(3));
const QString Tab = QString(QChar(9));

QString Question(const QString& typed)
{
    return QStringLiteral("MyYesWindow: The folder path entered does not exist\nDo you want to create this folder? | ")
        + typed + QStringLiteral(" | Cancel");
}

} // namespace

// Typing, browsing to and resetting the firmware folder, on real folders.
class FolderPathEntry : public ::testing::Test {
protected:
    QTemporaryDir home;
    QTemporaryDir root;
    ManualClock clock;
    SimulatedVexil sim{clock};
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid{sim};
    Window1Firmware window{globals, clock, platform, hid};
    QString stored;

    void SetUp() override
    {
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        stored = root.path() + QStringLiteral("/current/");
        QDir().mkpath(stored);
        QFile(stored + QStringLiteral("vexil0112.hex")).open(QIODevice::WriteOnly);
        globals.m_FolderPath = stored;
        window.FolderPath.SetText(stored);
        window.mStartup = false;
    }
    void TearDown() override { qunsetenv("XDG_DATA_HOME"); }

    void Type(const QString& text) { window.FolderPath.SetText(text); }
};

TEST_F(FolderPathEntry, ExistingFolderIsTakenWithoutAQuestion)
{
    const QString other = root.path() + QStringLiteral("/other");
    QDir().mkpath(other);
    Type(other);
    EXPECT_TRUE(window.FolderPath_KeyDown(Return));
    EXPECT_EQ(globals.m_FolderPath, other + "/") << "stored so that a file name appends directly";
    EXPECT_EQ(window.MCUavailableText.Text(), "missing");
    EXPECT_TRUE(platform.calls.isEmpty());
}

TEST_F(FolderPathEntry, KeysTakeThePathOverAndTabStillMovesTheFocus)
{
    struct Row {
        QString key;
        bool handled;
        bool focusMoves; // to the tab panel, by the controller
    };
    const Row rows[] = {{Return, true, true}, {Enter, true, true}, {Tab, false, false}, {QStringLiteral("a"), false, false}};
    for (const Row& row : rows) {
        const QString other = root.path() + QStringLiteral("/k%1").arg(row.key.at(0).unicode());
        QDir().mkpath(other);
        Type(other);
        QSignalSpy focus(&window, &Window1Firmware::focusTabPanel);
        EXPECT_EQ(window.FolderPath_KeyDown(row.key), row.handled);
        EXPECT_EQ(focus.size(), row.focusMoves ? 1 : 0);
        EXPECT_EQ(globals.m_FolderPath, row.key == QStringLiteral("a") ? stored : other + "/");
        globals.m_FolderPath = stored;
    }
    // An unchanged path only reruns the local check.
    Type(stored);
    QFile(stored + QStringLiteral("vexil0120.hex")).open(QIODevice::WriteOnly);
    EXPECT_TRUE(window.FolderPath_KeyDown(Return));
    EXPECT_EQ(window.MCUavailableText.Text(), "01.20");
    EXPECT_TRUE(platform.calls.isEmpty());
}

TEST_F(FolderPathEntry, MissingLevelsAreCreatedOneByOneKeepingExistingOnes)
{
    QDir().mkpath(root.path() + QStringLiteral("/a"));
    QFile(root.path() + QStringLiteral("/a/keep.txt")).open(QIODevice::WriteOnly);
    // Mixed separators are split at both.
    const QString typed = root.path() + QStringLiteral("/a\\b/c\\d");
    Type(typed);
    platform.yesAnswers.enqueue(true);
    window.CheckFolderPath();
    EXPECT_EQ(platform.calls, QStringList{Question(typed)});
    const QString made = root.path() + QStringLiteral("/a/b/c/d/");
    EXPECT_TRUE(QFileInfo(made).isDir());
    EXPECT_TRUE(QFileInfo::exists(root.path() + QStringLiteral("/a/keep.txt")));
    EXPECT_EQ(globals.m_FolderPath, made);
    EXPECT_EQ(window.FolderPath.Text(), made);
}

TEST_F(FolderPathEntry, RefusalsLeaveThePathAsItWas)
{
    QFile(root.path() + QStringLiteral("/plain-file")).open(QIODevice::WriteOnly);
    struct Row {
        const char* name;
        QString typed;
        bool answer;
        QStringList after; // calls after the question
    };
    const Row rows[] = {
        {"declined", root.path() + QStringLiteral("/new/one"), false, {}},
        {"empty", QString(), true, {}},
        {"unknown volume", QStringLiteral("x/y/z"), true, {"MyMsgBox: Volume \"x\" does not exist. Cannot create folder.."}},
        {"through a file", root.path() + QStringLiteral("/plain-file/sub"), true, {"MyMsgBox: Cannot create folder!\nInvalid Path!"}},
        {"climbing out", root.path() + QStringLiteral("/a/../../escape"), true, {"MyMsgBox: Cannot create folder!\nInvalid Path!"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        platform.calls.clear();
        Type(row.typed);
        platform.yesAnswers.enqueue(row.answer);
        window.CheckFolderPath();
        EXPECT_EQ(platform.calls, QStringList{Question(row.typed)} + row.after);
        EXPECT_EQ(globals.m_FolderPath, stored);
        EXPECT_EQ(window.FolderPath.Text(), stored);
    }
    EXPECT_FALSE(QFileInfo::exists(root.path() + QStringLiteral("/new")));
    EXPECT_FALSE(QFileInfo::exists(QStringLiteral("x")));
}

TEST_F(FolderPathEntry, VolumeNameStartsAPathOnThatVolume)
{
    platform.volumes = {QStringLiteral("/"), root.path() + QStringLiteral("/Stick")};
    QDir().mkpath(root.path() + QStringLiteral("/Stick"));
    Type(QStringLiteral("stick/fw"));
    platform.yesAnswers.enqueue(true);
    window.CheckFolderPath();
    EXPECT_EQ(globals.m_FolderPath, root.path() + QStringLiteral("/Stick/fw/"));
}

TEST_F(FolderPathEntry, BrowseAndDefaultRerunTheChecks)
{
    const QString chosen = root.path() + QStringLiteral("/chosen");
    QDir().mkpath(chosen);
    platform.chosenFolders.enqueue(chosen);
    window.BrowseButton.Push();
    EXPECT_EQ(platform.calls, QStringList{"ChooseFolder: Select Firmware Folder | Select | " + stored});
    EXPECT_EQ(globals.m_FolderPath, chosen + "/");
    EXPECT_EQ(window.NewRevisionsTimer.GetMode(), Timer::ModeSingle);

    platform.calls.clear();
    window.BrowseButton.Push(); // cancelled
    EXPECT_EQ(globals.m_FolderPath, chosen + "/");
    EXPECT_EQ(window.MCUavailableText.Text(), "missing") << "the local check runs all the same";

    // The default folder was never made: the check says so and makes it.
    platform.calls.clear();
    window.DefaultButton.Push();
    const QString folder = home.path() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(globals.m_FolderPath, folder);
    EXPECT_TRUE(QFileInfo(folder).isDir());
    EXPECT_EQ(platform.calls, (QStringList{"Beep", "MsgBox: The firmware folder path is invalid.  It will be set to the default."}));
    EXPECT_EQ(window.VexilRevisionsTimer.GetMode(), Timer::ModeSingle);
    EXPECT_EQ(window.NewRevisionsTimer.GetMode(), Timer::ModeSingle);
}
