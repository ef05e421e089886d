#include "HexFile.h"
#include "QtPrinters.h"
#include "REALEasyPrefs.h"
#include "SimRig.h"
#include "StatusLog.h"
#include "Window1.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>

namespace {

const QString Question = QStringLiteral(
    "MyYesWindow: Vexil firmware load has completed successfully\nRemove Vexil power and reconnect it to your "
    "transceiver | Do you want to quit the Vexil Utility? | No");

} // namespace

// The send button's road to the load and back, on the simulated device.
class LoadDriver : public ::testing::Test, protected SimRig {
protected:
    QTemporaryDir folder;
    REALEasyPrefs prefs;
    Window1 window{globals, clock, platform, hid, prefs};

    void SetUp() override
    {
        HexFile::Write(QDir(folder.path()), QStringLiteral("vexil0113.hex"), HexFile::Image(0x1D008000, 0x38000));
        globals.m_FolderPath = folder.path() + QLatin1Char('/');
        sim.SetAppRevision(112);
        sim.SetRevisionAfterLoad(113);
        window.mStartup = false;
        window.Checklocalfiles();
        window.CheckVexilRevisions();
    }

    // Presses the send button and waits for the driver to finish.
    void Send()
    {
        QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
        ASSERT_TRUE(window.SendVexilButton.Push());
        ASSERT_TRUE(fired.wait(5000));
    }

    QStringList StatusLines() const { return StatusLinesOf(window.StatusField); }
};

TEST_F(LoadDriver, SuccessAsksWhetherToQuitAndNoKeepsRunning)
{
    for (const bool quit : {false, true}) {
        SCOPED_TRACE(quit ? "yes" : "no");
        platform.calls.clear();
        platform.yesAnswers.enqueue(quit);
        sim.SetAppRevision(112);
        window.CheckVexilRevisions();

        window.SendVexilButton.Push();
        EXPECT_FALSE(window.SendVexilButton.Push()) << "a second press before the load starts does nothing";
        QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
        ASSERT_TRUE(fired.wait(5000));
        EXPECT_EQ(window.SendAllTimer.GetMode(), Timer::ModeOff) << "one press, one load";

        EXPECT_EQ(StatusLines().last(), "Ready");
        EXPECT_TRUE(window.SendVexilButton.Enabled());
        EXPECT_EQ(window.MCUinstalledText.Text(), "01.13");
        EXPECT_FALSE(window.HasProgressWin()) << "without trace the window closes itself";
        EXPECT_FALSE(globals.m_ProgressWinOpen);
        EXPECT_EQ(window.m_RevisionedFilename.m_strpath, "vexil0113.hex");
        EXPECT_EQ(window.m_MyYesWindowResponse, quit);
        QStringList expected{Question};
        if (quit)
            expected << QStringLiteral("Quit: 0");
        EXPECT_EQ(platform.calls, expected);
    }
}

TEST_F(LoadDriver, LoadsThatCannotRunEndWithoutErasing)
{
    const struct {
        const char* name;
        std::function<void()> arrange;
        const char* line; // expected somewhere in the log; nullptr: the driver stops before "Ready"
        QStringList calls;
    } rows[] = {
        {"wrong identity", [this] { sim.SetIdentity("nope"); }, "Vexil firmware load failed", {}},
        {"no firmware file", [this] { QFile::remove(folder.filePath("vexil0113.hex")); },
         "One or more required firmware files is missing.",
         {"MsgBox: One or more required firmware files is missing.\n\nCopy new files from Corvane server"}},
        {"absent device", [this] { sim.SetPresent(false); }, nullptr, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        platform.calls.clear();
        row.arrange();
        const qsizetype before = StatusLines().size();
        Send();
        const QStringList lines = StatusLines().mid(before);
        if (row.line) {
            EXPECT_TRUE(lines.contains(row.line));
            EXPECT_EQ(lines.last(), "Ready");
            EXPECT_TRUE(window.SendVexilButton.Enabled());
        } else {
            EXPECT_FALSE(lines.contains("Ready"));
            EXPECT_FALSE(window.SendVexilButton.Enabled());
        }
        EXPECT_EQ(platform.calls, row.calls);
        EXPECT_FALSE(window.HasProgressWin());
        EXPECT_EQ(sim.CountCommands('E') + sim.CountCommands('!'), 0);
    }
}

TEST_F(LoadDriver, TraceKeepsTheProgressWindowOpenAndFull)
{
    globals.m_TraceMode = globals.m_Verbose = true;
    Send();
    ASSERT_TRUE(window.HasProgressWin());
    ProgressWin& progress = window.GetProgressWin();
    EXPECT_TRUE(progress.Visible());
    EXPECT_TRUE(progress.CloseIt.Enabled());
    EXPECT_EQ(progress.ProgressBar1.Maximum(), 100);
    EXPECT_EQ(progress.ProgressBar1.Value(), 100);
    EXPECT_TRUE(progress.ActivityLog.Text().endsWith("Click \"Close\" to close this window\n"));
    EXPECT_TRUE(progress.ActivityLog.Text().startsWith("Corvane Vexil Utility for OSX revision "));
    EXPECT_EQ(progress.Left, window.Bounds().left() + 50);
    EXPECT_EQ(progress.Top, window.Bounds().top() + 150);
    EXPECT_FALSE(globals.m_ProgressWinOpen) << "device code stops writing while the user reads";
    progress.CloseIt.Push();
    EXPECT_FALSE(window.HasProgressWin());
}

TEST_F(LoadDriver, OtherControlsCannotInterleaveWithALoad)
{
    const QString folderBefore = globals.m_FolderPath;
    QTemporaryDir elsewhere;
    platform.chosenFolders.enqueue(elsewhere.path());
    // Once the programming loop is under way, the user tries everything else.
    bool pressed = false;
    QTimer meddler;
    QObject::connect(&meddler, &QTimer::timeout, [&] {
        if (pressed || sim.CountCommands('!') < 100)
            return;
        pressed = true;
        window.CheckRevisionsNowButton.SetEnabled(true);
        window.CheckRevisionsNowButton.Push();
        window.DefaultButton.Push();
        window.BrowseButton.Push();
        window.FolderPath.SetText(elsewhere.path());
        window.FolderPath_KeyDown(QString(QChar(13)));
        // As if checks armed before the load fired now.
        window.VexilRevisionsTimer_Action();
        window.NewRevisionsTimer_Action();
    });
    meddler.start(0);
    platform.yesAnswers.enqueue(false);
    Send();
    meddler.stop();
    ASSERT_TRUE(pressed);

    EXPECT_EQ(window.MCUinstalledText.Text(), "01.13");
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();
    // Between the first data packet and the completion packet only packets went out.
    std::string during;
    bool inLoop = false;
    for (const auto& r : sim.Log()) {
        inLoop = inLoop || r.cmd == '!';
        if (inLoop)
            during += r.cmd;
        if (r.cmd == '!' && r.addr == 0x8FFFFFFF)
            break;
    }
    EXPECT_EQ(during, std::string(14337, '!'));
    EXPECT_EQ(globals.m_FolderPath, folderBefore);
    EXPECT_FALSE(platform.calls.join('\n').contains("ChooseFolder")) << "no chooser during a load";

    // The check asked for during the load runs once the load is over.
    QSignalSpy check(&window.VexilRevisionsTimer, &Timer::Action);
    const int syncs = sim.CountCommands('U');
    ASSERT_TRUE(check.wait(2000));
    EXPECT_EQ(sim.CountCommands('U'), syncs + 1);
}
