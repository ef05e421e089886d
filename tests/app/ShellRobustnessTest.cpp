#include "App.h"
#include "HexFile.h"
#include "MyYesWindow.h"
#include "ProgressWinView.h"
#include "Window1ViewFixture.h"

#include <QtTest>
#include <QtWidgets>

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

// Counts the close events the progress windows receive: hiding one instead would keep the program from quitting.
struct ProgressCloses : QObject {
    int count = 0;
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        count += event->type() == QEvent::Close && qobject_cast<ProgressWinView*>(watched);
        return false;
    }
};

TEST_F(Shell, CloseDuringALoadWaitsForItsEndAndEveryWindowThenCloses)
{
    HexFile::Write(QDir(home.path()), QStringLiteral("vexil0113.hex"), HexFile::Image(0x1D008000, 0x38000));
    window.mStartup = false;
    window.CheckVexilRevisions();
    view.show();
    ProgressCloses progressCloses;
    qApp->installEventFilter(&progressCloses);
    bool refused = false;
    QObject::connect(&window.MCUinstalledText, &Label::changed, &view, [&] {
        refused |= window.MCUinstalledText.Text() == QLatin1String("Loading") && !view.close();
    });
    QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
    window.SendVexilButton.Push();
    ASSERT_TRUE(fired.wait(20000));
    EXPECT_TRUE(refused && window.StatusField.Text().contains("will close when the firmware load is over"));
    EXPECT_EQ(sim.CountCommands('!'), 14336 + 1) << "every packet and the completion";
    EXPECT_FALSE(view.isVisible()) << "closed once the load is over";
    EXPECT_EQ(progressCloses.count, 1);
}

TEST_F(Shell, StoredPreferencesAreReadDefensivelyAndWrittenBackExactly)
{
    // Geometry that cannot show: the default placement instead.
    for (const char* stored : {"winLEFT\n99999999999\nwinTOP\n99999999999\n", "winWIDTH\n32000\nwinHEIGHT\n32000\n",
                               "winWIDTH\n100\n", "winTOP\n-40\n", "winLEFT\n1900\n"})
        EXPECT_EQ(OpenWith(stored)->Bounds(), window.Bounds()) << stored;

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
        EXPECT_DOUBLE_EQ(label->font().pointSizeF() * 12 / QApplication::font().pointSizeF(),
                         label->text() == QLatin1String("Ready") ? 11 : 12);
    EXPECT_DOUBLE_EQ(log->font().pointSizeF(), QApplication::font().pointSizeF());

    view.show();
    log->setFont(QFont(log->font().family(), 30));
    for (int i = 0; i < 30; ++i)
        globals.SetStatusText(QStringLiteral("Connecting to the Corvane firmware server, line %1 ").arg(i).repeated(2));
    EXPECT_EQ(log->verticalScrollBar()->value(), log->verticalScrollBar()->maximum()) << "newest line out of view";

    // A timer due when the erase starts runs while the device erases, not after.
    sim.SetEraseMicroseconds(3'000'000);
    ASSERT_TRUE(window.CheckVexilRevisions() && window.VexilUnlock());
    bool served = false;
    QTimer::singleShot(0, [&served] { served = true; });
    EXPECT_TRUE(window.VexilWriteReadResponse(Window1::COMMAND_ERASE_FLASH) && served);
}

TEST_F(Shell, DialogsAndDesktopAnswerAsTheUserExpects)
{
    MyYesWindow question;
    QTest::keyClick(question.YesButton, Qt::Key_Return);
    EXPECT_EQ(question.result(), QDialog::Accepted) << "Return on Yes";

    App::ConfigureApplication();
    EXPECT_EQ(QGuiApplication::applicationDisplayName(), QCoreApplication::applicationName()) << "no title suffix";

    HexFile::Write(QDir(home.path()), QStringLiteral("vexilfwnotes.rtf"), "{\\rtf1}");
    platform.documentOpens = false;
    window.ShowReleaseNotes();
    auto first = App::ClaimOnlyCopy(platform);
    EXPECT_TRUE(first && !App::ClaimOnlyCopy(platform));
    first.reset();
    EXPECT_TRUE(App::ClaimOnlyCopy(platform)) << "free again once the first copy ends";
    EXPECT_EQ(platform.calls.filter(QRegularExpression("^MsgBox: The (release notes cannot|Vexil Utility is already)")).size(), 2);
}
