#include "AboutWindow.h"
#include "App.h"
#include "HtmlHelpView.h"
#include "SimRig.h"
#include "HelpFolder.h"
#include "MessageWindow.h"
#include "MyMsgBoxWin.h"
#include "MyYesWindow.h"
#include "ProgressWinView.h"
#include "QtPrinters.h"
#include "Version.h"
#include "Window1ViewFixture.h"
#include "XdgHomes.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

namespace {

class MenusTest : public Window1ViewFixture {
protected:
    XdgHomes homes;
    QAction* Item(const char* name) { return view.findChild<QAction*>(QLatin1String(name)); }
};

TEST_F(MenusTest, TraceFollowsTheStoredModeAndTogglesWithItsMark)
{
    homes.WritePrefs("TraceMode\ntrue\n");
    window.Event_Open();
    EXPECT_TRUE(Item("ViewTrace")->isChecked());
    for (const bool on : {false, true}) {
        Item("ViewTrace")->trigger();
        EXPECT_EQ(std::tuple(Item("ViewTrace")->isChecked(), globals.m_TraceMode, globals.m_Verbose), std::tuple(on, on, on));
        globals.SetStatusText(QStringLiteral("trace-only %1").arg(on), true);
        EXPECT_EQ(window.StatusField.Text().contains(QStringLiteral("trace-only %1").arg(on)), on);
    }
}

TEST_F(MenusTest, ItemsReachTheDesktopAndQuitSavesThePreferences)
{
    window.Event_Open();
    globals.appHelpFolder = QStringLiteral("/opt/vexil/Resources/Help");
    globals.m_FolderPath = homes.DataPath() + QLatin1Char('/');
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
    };
    for (const auto& [item, key, call] : rows) {
        platform.calls.clear();
        key.isEmpty() ? Item(item)->trigger() : QTest::keySequence(&view, key);
        EXPECT_EQ(platform.calls, call.isEmpty() ? QStringList() : QStringList{call}) << item;
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

TEST_F(MenusTest, EveryControlOfEveryWindowHasANameAndTheLogReadsAsText)
{
    window.GetProgressWin().Show();
    QWidget* progress = nullptr;
    for (QWidget* top : QApplication::topLevelWidgets())
        progress = qobject_cast<ProgressWinView*>(top) ? top : progress;
    AboutWindow about(QStringLiteral("Revision 1.0"));
    MessageWindow notice({});
    MyMsgBoxWin message;
    MyYesWindow question;
    ScriptedHelpPlatform helpPlatform;
    UniHelpGlobals helpGlobals(helpPlatform);
    UniHelpEngine help(helpGlobals, QStringLiteral(MANUAL_DIR));
    help.Run(QFileInfo());
    const std::pair<const char*, QWidget*> windows[] = {{"main window", &view}, {"progress window", progress},
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
}

TEST_F(MenusTest, TextFitsItsControlsAtALargerDesktopFont)
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
    EXPECT_EQ(viewer->windowTitle(), QStringLiteral("Vexil Utility Help"));
    CloseViewersNow();
}

} // namespace
