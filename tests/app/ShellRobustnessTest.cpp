#include "App.h"
#include "HexFile.h"
#include "MyYesWindow.h"
#include "ProgressWinView.h"
#include "StatusLog.h"
#include "Window1ViewFixture.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>

namespace {

// The main window and its widgets, with preference and data folders of their own.
class Shell : public Window1ViewFixture {
protected:
    QTemporaryDir home;
    void SetUp() override
    {
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        globals.m_FolderPath = home.path() + QLatin1Char('/');
    }
    void TearDown() override { qunsetenv("XDG_CONFIG_HOME"); qunsetenv("XDG_DATA_HOME"); }
    // A fresh main window opened on these stored preferences.
    std::unique_ptr<Window1> OpenWith(const QByteArray& stored)
    {
        HexFile::Write(QDir(home.path()), QStringLiteral("VexilUtilPrefs"), stored);
        auto opened = std::make_unique<Window1>(globals, clock, platform, hid, prefs);
        opened->Event_Open();
        return opened;
    }
};

struct CloseCounter : QObject {
    int closes = 0;
    bool eventFilter(QObject*, QEvent* event) override { closes += event->type() == QEvent::Close; return false; }
};

TEST_F(Shell, CloseDuringALoadWaitsForItsEndAndThenEveryWindowCloses)
{
    HexFile::Write(QDir(home.path()), QStringLiteral("vexil0113.hex"), HexFile::Image(0x1D008000, 0x38000));
    sim.SetRevisionAfterLoad(113);
    window.mStartup = false;
    window.Checklocalfiles();
    window.CheckVexilRevisions();
    view.show();
    bool refused = false;
    QObject::connect(&window.MCUinstalledText, &Label::changed, &view, [&] {
        refused |= window.MCUinstalledText.Text() == QLatin1String("Loading") && !view.close() && view.isVisible();
    });
    QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
    window.SendVexilButton.Push();
    ASSERT_TRUE(fired.wait(20000));
    EXPECT_TRUE(refused);
    EXPECT_EQ(sim.CountCommands('!'), 14336 + 1) << "every packet and the completion";
    EXPECT_FALSE(view.isVisible()) << "closed once the load is over";
    EXPECT_TRUE(StatusLinesOf(window.StatusField).contains(QStringLiteral(
        "The Vexil Utility will close when the firmware load is over: stopping the load now would leave the Vexil "
        "without firmware")));

    // With trace on the progress window stays after a load; its Close must close
    // it, not hide it, or the program never quits.
    globals.m_TraceMode = true;
    sim.SetCommandFault('=', SimulatedVexil::Fault::Silent);
    window.SendVexilButton.Push();
    ASSERT_TRUE(fired.wait(20000));
    CloseCounter counter;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (qobject_cast<ProgressWinView*>(widget) && widget->isVisible())
            widget->installEventFilter(&counter);
    window.GetProgressWin().CloseIt.Push();
    EXPECT_EQ(counter.closes, 1);
}

TEST_F(Shell, StoredGeometryThatCannotShowFallsBackToTheDefaultPlacement)
{
    const QRect designed = window.Bounds();
    const std::pair<QByteArray, QRect> rows[] = {
        {"winLEFT\n-100\nwinTOP\n40\nwinWIDTH\n700\nwinHEIGHT\n600\n", QRect(-100, 40, 700, 600)},
        {"winLEFT\n99999999999\nwinTOP\n99999999999\n", designed}, {"winWIDTH\n32000\nwinHEIGHT\n32000\n", designed},
        {"winWIDTH\n100\n", designed}, {"winTOP\n-40\n", designed}, {"winLEFT\n1900\n", designed},
    };
    for (const auto& [stored, expected] : rows)
        EXPECT_EQ(OpenWith(stored)->Bounds(), expected) << stored.constData();
}

TEST_F(Shell, FolderPathAlwaysTakesAFileNameAndPreferenceBytesComeBackExactly)
{
    HexFile::Write(QDir(home.path()), QStringLiteral("vexil0113.hex"), "");
    const auto opened = OpenWith("FolderPath\n" + home.path().toUtf8() + "\n");
    EXPECT_TRUE(QFileInfo(globals.m_FolderPath + opened->m_RevisionedFilename.m_mstrPath).isFile());

    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("VexilUtilPrefs")).toUtf8()); // a file: no folder below it
    OpenWith("");
    EXPECT_EQ(globals.m_FolderPath, home.filePath(QStringLiteral("VexilUtilPrefs/Corvane/Vexil Firmware/")));

    for (const QByteArray file : {"K\n\xC3\x28 \xFF\xED\xA0\x80\n", "Value\nends in CR\r\n", "\xEF\xBB\xBFK\r\n\xF0\x9F\x98\x80\n"}) {
        prefs.ReadFrom(file);
        EXPECT_EQ(prefs.Serialise(), file);
    }
}

TEST_F(Shell, WindowStaysServedAndShowsItsNewestLineAtItsDesignedSizes)
{
    auto* log = view.findChild<QPlainTextEdit*>();
    for (QLabel* label : view.findChildren<QLabel*>())
        EXPECT_EQ(label->font().pointSize(), label->text() == QLatin1String("Ready") ? 11 : 12);
    EXPECT_EQ(log->font().pointSize(), 12);

    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    log->setFont(QFont(log->font().family(), 30));
    for (int i = 0; i < 30; ++i)
        globals.SetStatusText(QStringLiteral("Connecting to the Corvane firmware server, line %1 ").arg(i).repeated(2));
    QTextCursor newest(log->document()->lastBlock().previous());
    newest.movePosition(QTextCursor::EndOfBlock);
    EXPECT_TRUE(log->viewport()->rect().contains(log->cursorRect(newest)));

    // A timer due when the erase starts runs while the device erases, not after.
    sim.SetEraseMicroseconds(3'000'000);
    ASSERT_TRUE(window.CheckVexilRevisions() && window.VexilUnlock());
    qint64 servedAt = -1;
    QTimer::singleShot(0, [&] { servedAt = clock.Elapsed(); });
    const qint64 start = clock.Elapsed();
    EXPECT_TRUE(window.VexilWriteReadResponse(Window1::COMMAND_ERASE_FLASH));
    EXPECT_TRUE(servedAt >= start && servedAt < clock.Elapsed()) << servedAt;
}

TEST_F(Shell, YesWindowReturnAnswersTheFocusedButtonAndEscapeAnswersNo)
{
    for (const auto& [key, focusYes, answer] : {std::tuple{Qt::Key_Return, true, QDialog::Accepted},
                                                std::tuple{Qt::Key_Return, false, QDialog::Rejected},
                                                std::tuple{Qt::Key_Escape, true, QDialog::Rejected}}) {
        MyYesWindow question;
        question.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&question));
        (focusYes ? question.YesButton : question.CancelButton)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), key);
        EXPECT_EQ(question.result(), answer) << key << focusYes;
    }
}

TEST_F(Shell, DesktopFailuresAndSecondCopiesAreToldAndTitlesGetNoSuffix)
{
    App::ConfigureApplication();
    EXPECT_EQ(QGuiApplication::applicationDisplayName(), QCoreApplication::applicationName()) << "nothing appended";

    HexFile::Write(QDir(home.path()), QStringLiteral("vexilfwnotes.rtf"), "{\\rtf1}");
    platform.documentOpens = false;
    window.ShowReleaseNotes();
    auto first = App::ClaimOnlyCopy(platform);
    EXPECT_TRUE(first && !App::ClaimOnlyCopy(platform));
    first.reset();
    EXPECT_TRUE(App::ClaimOnlyCopy(platform));
    ASSERT_EQ(platform.calls.size(), 3) << platform.calls.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(platform.calls[1].startsWith("MsgBox: The release notes cannot be shown"));
    EXPECT_TRUE(platform.calls[2].startsWith("MsgBox: The Vexil Utility is already running"));
}

} // namespace
