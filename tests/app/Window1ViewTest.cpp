#include "AboutWindow.h"
#include "App.h"
#include "ControlBinding.h"
#include "HelpFolder.h"
#include "HexFile.h"
#include "HtmlHelpView.h"
#include "MessageWindow.h"
#include "MyMsgBoxWin.h"
#include "MyYesWindow.h"
#include "ProgressWinView.h"
#include "QtPlatformServices.h"
#include "QtPrinters.h"
#include "REALEasyPrefs.h"
#include "SimRig.h"
#include "StatusLog.h"
#include "Version.h"
#include "Window1.h"
#include "Window1View.h"
#include "XdgHomes.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#include <functional>

namespace {

const QString Question = QStringLiteral(
    "MyYesWindow: Vexil firmware load has completed successfully\nRemove Vexil power and reconnect it to your "
    "transceiver | Do you want to quit the Vexil Utility? | No");

template <class W>
W* FindByText(const QWidget& root, const QString& text)
{
    for (W* widget : root.findChildren<W*>())
        if (widget->text() == text)
            return widget;
    return nullptr;
}

ProgressWinView* ProgressView()
{
    ProgressWinView* found = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
        found = qobject_cast<ProgressWinView*>(widget) ? static_cast<ProgressWinView*>(widget) : found;
    return found;
}

void Select(QPlainTextEdit* edit, int start, int end)
{
    QTextCursor cursor = edit->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    edit->setTextCursor(cursor);
}

// The main window on the simulated device, with folders of its own.
class Window1Test : public ::testing::Test, protected SimRig {
protected:
    // Declared before the window so it runs after it: views whose models died
    // with the window are deleted late, and must not leak into the next case.
    struct FlushDeferredDeletes {
        ~FlushDeferredDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    } flush;
    XdgHomes homes;
    QTemporaryDir folder;
    REALEasyPrefs prefs;
    Window1 window{globals, clock, platform, hid, prefs};

    // A whole image in the folder, one revision newer than the device's.
    void LoadReady()
    {
        HexFile::Write(QDir(folder.path()), QStringLiteral("vexil0113.hex"), HexFile::Image(0x1D008000, 0x38000));
        globals.m_FolderPath = folder.path() + QLatin1Char('/');
        sim.SetAppRevision(112);
        sim.SetRevisionAfterLoad(113);
        sim.SetPresent(true);
        sim.SetIdentity("vxil");
        sim.UnplugAfterReports(-1);
        sim.SetMissedSyncsAfterLoad(0);
        sim.SetCommandFault('U', SimulatedVexil::Fault::None, 0);
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
};

// The same with its widgets.
class Window1ViewTest : public Window1Test {
protected:
    Window1View view{window};
    QPlainTextEdit* log = view.findChild<QPlainTextEdit*>();
    QPushButton* send = FindByText<QPushButton>(view, QStringLiteral("Send Firmware to Vexil"));

    QAction* Item(const char* name) { return view.findChild<QAction*>(QLatin1String(name)); }
};

TEST_F(Window1ViewTest, CheckRevisionsNowRunsThroughTheWidgets)
{
    sim.SetAppRevision(57);
    HexFile::Write(QDir(folder.path()), QStringLiteral("vexil0112.hex"), "");
    globals.m_FolderPath = folder.path() + QLatin1Char('/');
    QLabel* available = FindByText<QLabel>(view, QStringLiteral("missing"));
    QLabel* installed = FindByText<QLabel>(view, QStringLiteral("??.??"));
    QPushButton* check = FindByText<QPushButton>(view, QStringLiteral("Check Revisions Now"));
    ASSERT_TRUE(available && installed && check && send && log);
    EXPECT_FALSE(send->isEnabled());

    QSignalSpy fired(&window.VexilRevisionsTimer, &Timer::Action);
    check->click();
    EXPECT_FALSE(check->isEnabled());
    EXPECT_EQ(available->text(), QStringLiteral("01.12")) << "the folder is looked at before the device";
    ASSERT_TRUE(fired.wait(2000));
    EXPECT_TRUE(check->isEnabled() && send->isEnabled());
    EXPECT_EQ(installed->text(), QStringLiteral("00.57"));
    EXPECT_TRUE(log->isReadOnly());
    EXPECT_TRUE(log->toPlainText().endsWith(QStringLiteral(" Vexil firmware revision 00.57\n")));

    // A disabled widget must not reach the model: no second check is armed.
    window.CheckRevisionsNowButton.SetEnabled(false);
    check->click();
    EXPECT_EQ(window.VexilRevisionsTimer.GetMode(), Timer::ModeOff);
}

TEST_F(Window1ViewTest, ResizeStretchesByLockedSidesAndTheLogShowsItsNewestLine)
{
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    const QRect logBefore = log->geometry();
    QList<QPair<QGroupBox*, QRect>> groups;
    for (QGroupBox* group : view.findChildren<QGroupBox*>())
        groups.append({group, group->geometry()});
    ASSERT_EQ(groups.size(), 4); // folder, check, revisions, log

    const QSize target = view.centralWidget()->size() + QSize(100, 50);
    view.resize(view.size() + QSize(100, 50));
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.centralWidget()->size() == target; }, 2000));
    EXPECT_EQ(log->geometry(), logBefore.adjusted(0, 0, 100, 50));
    EXPECT_EQ(send->geometry(), QRect(352, 248, 210, 20));
    for (const auto& [group, before] : groups) {
        const QRect after = group->geometry();
        // Only the log's box is locked at the bottom as well.
        EXPECT_EQ(after, before.adjusted(0, 0, 100, after.contains(log->geometry()) ? 50 : 0));
    }

    log->setFont(QFont(log->font().family(), 30));
    for (int i = 0; i < 30; ++i)
        globals.SetStatusText(QStringLiteral("Connecting to the Corvane firmware server, line %1 ").arg(i).repeated(2));
    EXPECT_EQ(log->verticalScrollBar()->value(), log->verticalScrollBar()->maximum()) << "newest line out of view";
}

TEST_F(Window1ViewTest, ProgressWinViewFollowsItsModelUntilClosed)
{
    ASSERT_EQ(ProgressView(), nullptr);
    ProgressWin& progress = window.GetProgressWin();
    QPointer<ProgressWinView> pv = ProgressView();
    ASSERT_TRUE(pv);
    EXPECT_EQ(pv->windowTitle(), QStringLiteral("Loading Vexil Firmware"));
    EXPECT_FALSE(pv->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    progress.Left = 120;
    progress.Top = 80;
    progress.Show();
    EXPECT_EQ(pv->pos(), QPoint(120, 80));
    progress.SetActivityLog(QStringLiteral("Erasing Vexil flash"));
    auto* activity = pv->findChild<QPlainTextEdit*>();
    ASSERT_TRUE(activity);
    EXPECT_EQ(activity->toPlainText(), QStringLiteral("Erasing Vexil flash\n"));

    // The controller's menu, never Qt's own; it acts on the widget's selection.
    Select(activity, 0, 4);
    platform.popupChoices.enqueue(1);
    QTest::mouseClick(activity->viewport(), Qt::RightButton, {}, QPoint(20, 8));
    EXPECT_EQ(platform.calls.constLast(), QStringLiteral("PopupMenu: Copy|Cut|Delete"));
    EXPECT_EQ(std::pair(platform.clipboard, activity->toPlainText()), std::pair(QStringLiteral("Eras"), QStringLiteral("ing Vexil flash\n")));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);

    QPushButton* close = FindByText<QPushButton>(*pv, QStringLiteral("Close"));
    ASSERT_TRUE(close);
    progress.CloseIt.SetEnabled(true);
    close->click();
    EXPECT_FALSE(pv->isVisible() || window.HasProgressWin());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(pv.isNull());
    EXPECT_EQ(window.GetProgressWin().ActivityLog.Text(), QString()) << "a closed window is never reused";
}

TEST_F(Window1ViewTest, StatusLogWidgetAndModelShareSelectionAndEditsAndTheRightClickMenu)
{
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    globals.SetStatusText(QStringLiteral("alpha"));
    globals.SetStatusText(QStringLiteral("beta"));
    const TextArea& model = window.StatusField;
    auto pointOf = [this](int position) {
        QTextCursor cursor(log->document());
        cursor.setPosition(position);
        return log->cursorRect(cursor).center();
    };
    QTest::mousePress(log->viewport(), Qt::LeftButton, {}, pointOf(24));
    QTest::mouseMove(log->viewport(), pointOf(28));
    QTest::mouseRelease(log->viewport(), Qt::LeftButton, {}, pointOf(28));
    EXPECT_EQ(std::pair(model.SelStart(), model.SelLength()), std::pair(24, 4));
    QTest::keyClick(log, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(platform.clipboard, QStringLiteral("beta"));

    // Qt follows a right press with a context-menu event; it must not open a second menu.
    Select(log, 0, 0);
    platform.clipboard.clear();
    const QPoint at(20, 8);
    QTest::mouseClick(log->viewport(), Qt::RightButton, {}, at);
    QContextMenuEvent afterPress(QContextMenuEvent::Mouse, at, log->viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(log->viewport(), &afterPress);
    EXPECT_EQ(platform.calls, QStringList{QStringLiteral("PopupMenu: (Cut)|(Copy)|(Paste)|(Delete)|-|Select All|-|(Undo)|(Redo)")});
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, at, log->mapToGlobal(at));
    QCoreApplication::sendEvent(log, &menuKey);
    EXPECT_EQ(platform.calls.size(), 2);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);

    // Redrawing the whole text moves the widget's cursor; that must not reach the model.
    QPlainTextEdit plain;
    TextArea area;
    BindTextArea(&plain, area);
    area.SetText(QStringLiteral("abcdef"));
    area.SetSelection(1, 2);
    area.SetText(QStringLiteral("abcdefgh"));
    EXPECT_EQ(std::pair(area.SelStart(), area.SelLength()), std::pair(1, 2));
}

// Counts the close events the progress windows receive: hiding one instead would keep the program from quitting.
struct ProgressCloses : QObject {
    int count = 0;
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        count += event->type() == QEvent::Close && qobject_cast<ProgressWinView*>(watched);
        return false;
    }
};

TEST_F(Window1ViewTest, CloseDuringALoadWaitsForItsEndAndEveryWindowThenCloses)
{
    LoadReady();
    view.show();
    ProgressCloses progressCloses;
    qApp->installEventFilter(&progressCloses);
    bool refused = false, outOfUse = false;
    QObject::connect(&window.MCUinstalledText, &Label::changed, &view, [&] {
        if (window.MCUinstalledText.Text() != QLatin1String("Loading"))
            return;
        // Above the main window for the whole load, whose controls that cannot run meanwhile are drawn disabled.
        outOfUse = ProgressView() && ProgressView()->windowHandle()->transientParent() == view.windowHandle()
            && !FindByText<QPushButton>(view, "Browse")->isEnabled() && !view.findChild<QLineEdit*>()->isEnabled()
            && !Item("FileSendFirmwareFile")->isEnabled();
        refused |= !view.close();
    });
    QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
    window.SendVexilButton.Push();
    ASSERT_TRUE(fired.wait(20000));
    EXPECT_TRUE(refused && outOfUse && window.StatusField.Text().contains("will close when the firmware load is over"));
    EXPECT_EQ(platform.calls, QStringList{"MsgBox: Vexil firmware load has completed successfully\nRemove Vexil power "
                                          "and reconnect it to your transceiver"}) << "the ending is told before the close";
    EXPECT_TRUE(window.BrowseButton.Enabled() && window.FolderPath.Enabled());
    EXPECT_EQ(sim.CountCommands('!'), 14336 + 1) << "every packet and the completion";
    EXPECT_FALSE(view.isVisible()) << "closed once the load is over";
    EXPECT_EQ(progressCloses.count, 1);

    // A timer due when the erase starts runs while the device erases, not after.
    sim.SetEraseMicroseconds(3'000'000);
    ASSERT_TRUE(window.CheckVexilRevisions() && window.VexilUnlock());
    bool served = false;
    QTimer::singleShot(0, [&served] { served = true; });
    EXPECT_TRUE(window.VexilWriteReadResponse(Window1::COMMAND_ERASE_FLASH) && served);
}

TEST_F(Window1Test, LoadAsksWhetherToQuitAndKeepsEveryOtherControlOut)
{
    LoadReady();
    platform.yesAnswers.enqueue(true);
    window.SendVexilButton.Push();
    EXPECT_FALSE(window.SendVexilButton.Push()) << "a second press before the load starts does nothing";
    QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
    ASSERT_TRUE(fired.wait(5000));
    EXPECT_EQ(window.SendAllTimer.GetMode(), Timer::ModeOff) << "one press, one load";
    EXPECT_EQ(std::tuple(StatusLinesOf(window.StatusField).last(), window.SendVexilButton.Enabled(), window.MCUinstalledText.Text()),
              std::tuple(QStringLiteral("Ready"), true, QStringLiteral("01.13")));
    EXPECT_FALSE(window.HasProgressWin()) << "without trace the window closes itself";
    EXPECT_EQ(platform.calls, (QStringList{Question, "Quit: 0"}));

    // Again with trace on; once the programming loop is under way, the user tries everything else.
    sim.SetAppRevision(112);
    window.CheckVexilRevisions();
    globals.m_TraceMode = globals.m_Verbose = true;
    platform.calls.clear();
    const QString folderBefore = globals.m_FolderPath;
    QTemporaryDir elsewhere;
    platform.chosenFolders.enqueue(elsewhere.path());
    bool pressed = false;
    QTimer meddler;
    QObject::connect(&meddler, &QTimer::timeout, [&] {
        if (pressed || sim.CountCommands('!') < 14437)
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
    const std::size_t before = sim.Log().size();
    Send();
    meddler.stop();
    ASSERT_TRUE(pressed);
    EXPECT_EQ(window.MCUinstalledText.Text(), "01.13");
    EXPECT_EQ(globals.m_FolderPath, folderBefore);
    EXPECT_EQ(platform.calls, QStringList{Question}) << "no chooser during the load, and No keeps the program running";
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();
    // Between the first data packet and the completion packet only packets went out.
    std::string during;
    for (std::size_t i = before, inLoop = 0; i < sim.Log().size(); ++i) {
        inLoop = inLoop || sim.Log()[i].cmd == '!';
        if (inLoop)
            during += sim.Log()[i].cmd;
        if (sim.Log()[i].cmd == '!' && sim.Log()[i].addr == 0x8FFFFFFF)
            break;
    }
    EXPECT_EQ(during, std::string(14337, '!'));

    // With trace the progress window stays for reading, full, until the user closes it.
    ASSERT_TRUE(window.HasProgressWin());
    ProgressWin& progress = window.GetProgressWin();
    EXPECT_TRUE(progress.Visible() && progress.CloseIt.Enabled());
    EXPECT_EQ(std::pair(progress.ProgressBar1.Value(), progress.ProgressBar1.Maximum()), std::pair(100, 100));
    EXPECT_TRUE(progress.ActivityLog.Text().startsWith("Corvane Vexil Utility for OSX revision "));
    EXPECT_TRUE(progress.ActivityLog.Text().endsWith("Click \"Close\" to close this window\n"));
    EXPECT_EQ(QPoint(progress.Left, progress.Top), window.Bounds().topLeft() + QPoint(50, 150));
    EXPECT_FALSE(globals.m_ProgressWinOpen) << "device code stops writing while the user reads";
    progress.CloseIt.Push();
    EXPECT_FALSE(window.HasProgressWin());

    // The check asked for during the load runs once the load is over.
    QSignalSpy check(&window.VexilRevisionsTimer, &Timer::Action);
    const int syncs = sim.CountCommands('U');
    ASSERT_TRUE(check.wait(2000));
    EXPECT_EQ(sim.CountCommands('U'), syncs + 1);
}

TEST_F(Window1Test, EverySendEndsToldAndOnlyANewerRevisionGoesWithoutAQuestion)
{
    using Fault = SimulatedVexil::Fault;
    const QString failed = "MsgBox: Vexil firmware load failed\n\n";
    const QString erased = "The Vexil was erased and now holds no firmware. Keep it connected (unplug it and plug it in "
                           "again if it does not answer), then send the firmware again: its bootloader stays in place "
                           "and takes a new load.";
    QTemporaryDir elsewhere;
    const QString chooser = "ChooseFile: Send Firmware File | " + folder.path() + "/ | Vexil firmware (vexil*.hex);;All files (*)";
    auto choose = [&](const QString& name) {
        HexFile::Write(QDir(elsewhere.path()), name, HexFile::Image(0x1D008000, 0x38000, 5));
        platform.chosenFiles.enqueue(elsewhere.filePath(name));
    };
    const struct {
        const char* name;
        std::function<void()> arrange;
        QList<bool> answers;
        QStringList calls;
        bool erased;
        bool fromMenu = false;
    } rows[] = {
        {"no firmware file", [this] { QFile::remove(folder.filePath("vexil0113.hex")); }, {},
         {"MsgBox: One or more required firmware files is missing.\n\nCopy new files from Corvane server"}, false},
        {"absent device", [this] { sim.SetPresent(false); }, {}, {}, false},
        {"opens but never answers", [this] { sim.SetCommandFault('U', Fault::Silent, -1); }, {},
         {"MsgBox: The Vexil does not answer, so nothing was sent to it. Unplug it, plug it in again, wait a few seconds "
          "and send again; if it still does not answer, see Troubleshooting in Vexil Utility Help."}, false},
        {"refused before the erase", [this] { sim.SetIdentity("vxiL"); }, {},
         {failed + "Nothing was erased or written: the Vexil still runs firmware revision 01.12."}, false},
        {"a packet refused", [this] { sim.SetCommandFault('!', Fault::WrongStatus); }, {}, {failed + erased}, true},
        {"unplugged during the packets", [this] { sim.UnplugAfterReports(int(sim.Log().size()) + 100); }, {}, {failed + erased}, true},
        {"one sync missed as the device restarts", [this] { sim.SetMissedSyncsAfterLoad(1); }, {}, {Question}, true},
        {"older, answered No", [this] { sim.SetAppRevision(140); window.CheckVexilRevisions(); }, {},
         {"MyYesWindow: The Vexil runs 01.40. Replace it with the older 01.13? | Older firmware may lack fixes of the one it runs. | No"}, false},
        {"older, answered Yes", [this] { sim.SetAppRevision(140); window.CheckVexilRevisions(); }, {true},
         {"MyYesWindow: The Vexil runs 01.40. Replace it with the older 01.13? | Older firmware may lack fixes of the one it runs. | No", Question}, true},
        {"the same, answered No", [this] { sim.SetAppRevision(113); window.CheckVexilRevisions(); }, {},
         {"MyYesWindow: The Vexil already runs 01.13. Send 01.13 to it again? | The Vexil is erased and written again with the same firmware. | No"}, false},
        {"a chosen file", [&] { choose("vexil0115.hex"); sim.SetRevisionAfterLoad(115); }, {}, {chooser, Question}, true, true},
        {"a chosen file without a revision", [&] { choose("firmware.hex"); }, {},
         {chooser, "MsgBox: \"firmware.hex\" cannot be sent: its name carries no revision (vexil<revision>.hex), so the load "
                   "could not be checked. Nothing was sent to the Vexil."}, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        LoadReady();
        row.arrange();
        platform.calls.clear();
        platform.yesAnswers = QQueue<bool>(row.answers);
        window.StatusField.SetText({});
        const int erases = sim.CountCommands('E');
        QSignalSpy fired(&window.SendAllTimer, &Timer::Action);
        if (row.fromMenu)
            emit window.FileSendFirmwareFile.Action();
        else
            window.SendVexilButton.Push();
        ASSERT_TRUE(fired.wait(5000));
        EXPECT_EQ(platform.calls, row.calls);
        EXPECT_EQ(sim.CountCommands('E') > erases, row.erased);
        // The log tells the same: after the failure line, what the Vexil now holds.
        const QStringList lines = StatusLinesOf(window.StatusField);
        if (!row.calls.isEmpty() && row.calls.constLast().startsWith(failed)) {
            EXPECT_EQ(lines.value(lines.indexOf("Vexil firmware load failed") + 1), row.calls.constLast().mid(failed.size()));
        }
        EXPECT_FALSE(window.HasProgressWin());
    }
    EXPECT_EQ(sim.Flash()[0], 5) << "the chosen file's bytes";
}

TEST_F(Window1ViewTest, ItemsReachTheDesktopAndQuitSavesThePreferences)
{
    homes.WritePrefs("TraceMode\ntrue\n");
    window.Event_Open();
    EXPECT_TRUE(Item("ViewTrace")->isChecked()) << "the stored trace mode";
    Item("ViewTrace")->trigger();
    EXPECT_EQ(std::tuple(Item("ViewTrace")->isChecked(), globals.m_TraceMode, globals.m_Verbose), std::tuple(false, false, false));
    globals.appHelpFolder = QStringLiteral("/opt/vexil/Resources/Help");
    view.show();
    view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    const QString page = QStringLiteral("/opt/vexil/Resources/Help/VexilUtility.htm");
    const std::tuple<const char*, QKeySequence, QString> rows[] = {
        {"HelpVexilUtilHelp", QKeySequence(Qt::Key_F1), {}}, // no help system attached: nothing happens
        {"HelpVexilUtilHelp", QKeySequence(Qt::Key_F1), QStringLiteral("Help: ") + page},
        {"HelpReleaseNotes", {}, QStringLiteral("MsgBox: ERROR: File not found! (vexilfwnotes.rtf)")},
        {"HelpAboutVexilUtil", {}, QStringLiteral("About: Revision " VEXIL_SHORT_VERSION)},
        {"BrowserHelp", {}, QStringLiteral("OpenURL: file://") + page},
        {"BrowserHelp", {}, QStringLiteral("OpenURL: file://%1 | MsgBox: No web browser could be started to show the help.\n\n"
                                           "The manual's start page is %1: open it in a browser, or choose Vexil Utility Help (F1).").arg(page)},
    };
    for (const auto& [item, key, call] : rows) {
        platform.calls.clear();
        platform.urlOpens = !call.contains("No web browser");
        key.isEmpty() ? Item(item)->trigger() : QTest::keySequence(&view, key);
        EXPECT_EQ(platform.calls.join(" | "), call) << item;
        window.SetHelpRunner([this](const QString& file) { platform.calls << QStringLiteral("Help: ") + file; });
    }

    // The edit shortcuts reach the status log from a control that does not take them.
    QTest::keyClick(view.findChild<QPushButton*>(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view.findChild<QPushButton*>(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(platform.clipboard, window.StatusField.Text());

    platform.screen = QRect(0, 30, 1280, 1000);
    window.SetBounds(QRect(7, 9, 600, 570));
    Item("WindowSettodefaultposition")->trigger();
    EXPECT_EQ(window.Bounds(), QRect(340, 220, 600, 570));

    QTest::keySequence(&view, QKeySequence(QStringLiteral("Ctrl+Q")));
    EXPECT_FALSE(view.isVisible());
    EXPECT_TRUE(homes.Prefs().contains("winTOP\n220\n")) << homes.Prefs().toStdString();
}

// Every control a keyboard user can reach, as a screen reader finds it, that has no name to announce.
void CollectUnnamed(QAccessibleInterface* node, QStringList& unnamed)
{
    const QAccessible::State state = node->state();
    if (state.focusable && !state.invisible && node->text(QAccessible::Name).trimmed().isEmpty())
        unnamed << QStringLiteral("%1 (role %2)").arg(node->object()->metaObject()->className()).arg(node->role());
    for (int i = 0; i < node->childCount(); ++i)
        CollectUnnamed(node->child(i), unnamed);
}

TEST_F(Window1ViewTest, EveryControlOfEveryWindowHasANameAndTheLogReadsAsText)
{
    window.GetProgressWin().Show();
    AboutWindow about(QStringLiteral("Revision 1.0"));
    MessageWindow notice({});
    MyMsgBoxWin message;
    MyYesWindow question;
    ScriptedHelpPlatform helpPlatform;
    UniHelpGlobals helpGlobals(helpPlatform);
    UniHelpEngine help(helpGlobals, QStringLiteral(MANUAL_DIR));
    help.Run(QFileInfo());
    const std::pair<const char*, QWidget*> windows[] = {{"main window", &view}, {"progress window", ProgressView()},
                                                        {"about box", &about},  {"new firmware notice", &notice},
                                                        {"message", &message},  {"question", &question},
                                                        {"help window on the manual", OpenViewer()}};
    for (const auto& [name, shown] : windows) {
        ASSERT_NE(shown, nullptr) << name;
        shown->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(shown)) << name;
        QStringList unnamed;
        CollectUnnamed(QAccessible::queryAccessibleInterface(shown), unnamed);
        EXPECT_EQ(unnamed, QStringList()) << name;
    }
    CloseViewersNow();

    // The revisions are read with their captions, not as bare numbers.
    window.MCUinstalledText.SetText(QStringLiteral("00.57"));
    QStringList labels;
    for (QLabel* label : view.findChildren<QLabel*>())
        labels << QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
    EXPECT_TRUE(labels.contains("Installed in Vexil: 00.57") && labels.contains("Available: missing")) << labels.join(QLatin1Char('|')).toStdString();
    globals.SetStatusText(QStringLiteral("Vexil firmware revision 00.57"));
    QAccessibleInterface* log = QAccessible::queryAccessibleInterface(view.findChild<QPlainTextEdit*>());
    EXPECT_EQ(log->text(QAccessible::Name), QStringLiteral("Activity Log"));
    EXPECT_EQ(log->textInterface()->text(0, log->textInterface()->characterCount()), window.StatusField.Text());

    // Alt and a letter open each menu, and a letter of its own chooses each item in it.
    const auto letter = [](const QString& text) { return text.contains('&') ? text[text.indexOf('&') + 1].toLower() : QChar('?'); };
    QStringList letters{QString()};
    for (QAction* menu : view.menuBar()->actions()) {
        letters[0] += letter(menu->text());
        letters << QString();
        for (const QAction* item : menu->menu()->actions())
            item->isSeparator() ? void() : void(letters.last() += letter(item->text()));
    }
    for (const QString& used : letters)
        EXPECT_TRUE(!used.contains('?') && QSet<QChar>(used.begin(), used.end()).size() == used.size()) << used.toStdString();
}

TEST_F(Window1ViewTest, TextFitsItsControlsAtALargerDesktopFont)
{
    const QFont desktop = QApplication::font();
    QApplication::setFont(QFont(desktop.family(), 12));
    Window1View big(window);
    MessageWindow notice({});
    QApplication::setFont(desktop);
    EXPECT_GT(big.minimumWidth(), view.minimumWidth()) << "the window grows with its texts";
    for (QWidget* control : big.findChildren<QWidget*>() + notice.findChildren<QWidget*>()) {
        auto* label = qobject_cast<QLabel*>(control);
        auto* button = qobject_cast<QAbstractButton*>(control);
        const QString text = label ? label->text() : button ? button->text() : QString();
        const QFontMetrics metrics = control->fontMetrics();
        EXPECT_TRUE(text.isEmpty() || (control->width() >= metrics.horizontalAdvance(text) && control->height() >= metrics.height()))
            << text.toStdString();
    }
}

} // namespace

namespace {

// The program as built: F1 reaches the help engine the App made, on the manual.
TEST(ProgramMenus, HelpItemOpensTheManualsStartPage)
{
    XdgHomes homes;
    SimRig rig;
    ScriptedHelpPlatform help;
    App app(rig.clock, rig.sim, rig.platform, help);
    app.Event_Open();
    app.helpGlobals().UniHelp->HelpFolder = QStringLiteral(MANUAL_DIR);
    app.view()->findChild<QAction*>(QStringLiteral("HelpVexilUtilHelp"))->trigger();
    UniHelpViewer* viewer = OpenViewer();
    ASSERT_NE(viewer, nullptr) << help.calls.join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), QStringLiteral(MANUAL_DIR "/VexilUtility.htm"));
    // Made larger, it reopens at that size within the run.
    viewer->resize(820, 530);
    CloseViewersNow();
    app.view()->findChild<QAction*>(QStringLiteral("HelpVexilUtilHelp"))->trigger();
    ASSERT_NE(viewer = OpenViewer(), nullptr);
    EXPECT_EQ(viewer->size(), QSize(820, 530));
    CloseViewersNow();

    // A second start brings the running copy's window forward.
    const auto running = App::ClaimOnlyCopy(rig.platform);
    app.view()->showMinimized();
    EXPECT_TRUE(running && !App::ClaimOnlyCopy(rig.platform));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !app.view()->isMinimized(); }, 2000));
}

} // namespace

TEST(Dialogs, YesWindowAnswersFromTheKeyboardWithTheFocusOnNoEachTime)
{
    QtPlatformServices platform;
    auto key = [](Qt::Key k) { QTest::keyClick(QApplication::focusWidget(), k); };
    const std::tuple<const char*, std::function<void(MyYesWindow*)>, bool> rows[] = {
        {"Return", [&](MyYesWindow*) { key(Qt::Key_Return); }, false},
        {"Return on Yes", [&](MyYesWindow* d) { d->YesButton->setFocus(); key(Qt::Key_Return); }, true},
        {"Escape", [&](MyYesWindow*) { key(Qt::Key_Escape); }, false},
        {"Yes button", [](MyYesWindow* d) { d->YesButton->click(); }, true},
    };
    for (const auto& [name, act, answer] : rows) {
        QString focused, text;
        // Runs on the modal dialog once it is up, from inside its own event loop.
        QTimer::singleShot(0, [&, act = act] {
            auto* dialog = qobject_cast<MyYesWindow*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog && QTest::qWaitForWindowActive(dialog));
            auto* button = qobject_cast<QPushButton*>(QApplication::focusWidget());
            focused = button ? button->text() : QString();
            text = dialog->LabelText->text();
            act(dialog);
        });
        EXPECT_EQ(platform.MyYesWindow(QStringLiteral("Firmware load is complete."), QStringLiteral("Quit now?"), QStringLiteral("No")), answer)
            << name;
        EXPECT_EQ(std::pair(focused, text), std::pair(QStringLiteral("No"), QStringLiteral("Firmware load is complete.")))
            << name << ": the focus starts on the cancelling button, captioned as asked";
    }
}

TEST(Dialogs, MessageBoxReturnsAtOnceNoticeStaysWhileTheNotesAreViewedAboutBoxClosesOnAClickAnywhere)
{
    QtPlatformServices platform;
    platform.MyMsgBox(QStringLiteral("Invalid Path!"));
    MyMsgBoxWin* shown = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        shown = w->isVisible() && qobject_cast<MyMsgBoxWin*>(w) ? static_cast<MyMsgBoxWin*>(w) : shown;
    ASSERT_TRUE(shown) << "MyMsgBox returned with its window still up";
    EXPECT_EQ(std::pair(shown->MyMsgBoxText->text(), shown->PushButton1->text()), std::pair(QStringLiteral("Invalid Path!"), QStringLiteral("OK")));
    shown->PushButton1->click();
    EXPECT_FALSE(shown->isVisible());

    int viewed = 0;
    MessageWindow notice([&viewed] { ++viewed; });
    notice.show();
    notice.PushButton1->click();
    EXPECT_TRUE(viewed == 1 && notice.isVisible());
    notice.PushButton2->click();
    EXPECT_FALSE(notice.isVisible());
    MessageWindow withoutNotes({});
    EXPECT_TRUE(!withoutNotes.PushButton1->isEnabled() && withoutNotes.PushButton2->isDefault()) << "no button that can only fail";

    for (const bool onLabel : {false, true}) {
        AboutWindow about(QStringLiteral("Revision 1.2.3"));
        about.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
        QTest::mouseClick(onLabel ? static_cast<QWidget*>(about.StaticText2) : &about, Qt::LeftButton, {}, onLabel ? QPoint() : QPoint(10, 190));
        EXPECT_FALSE(about.isVisible()) << (onLabel ? "label" : "background");
    }
}
