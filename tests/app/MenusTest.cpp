#include "QtPrinters.h"
#include "Version.h"
#include "Window1ViewFixture.h"
#include "XdgHomes.h"

#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class MenusTest : public Window1ViewFixture {
protected:
    XdgHomes homes;
    QAction* Item(const char* name) { return view.findChild<QAction*>(QLatin1String(name)); }
    void Show()
    {
        view.show();
        view.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    }
};

TEST_F(MenusTest, TraceFollowsTheStoredModeAndTogglesWithItsMark)
{
    homes.WritePrefs("TraceMode\ntrue\n");
    window.Event_Open();
    QAction* trace = Item("ViewTrace");
    ASSERT_TRUE(trace && trace->isCheckable());
    EXPECT_TRUE(trace->isChecked());
    for (const bool on : {false, true}) {
        trace->trigger();
        EXPECT_EQ(trace->isChecked(), on);
        EXPECT_EQ(window.ViewTrace.Checked(), on);
        EXPECT_EQ(globals.m_TraceMode, on);
        globals.SetStatusText(QStringLiteral("trace-only %1").arg(on), true);
        EXPECT_EQ(window.StatusField.Text().contains(QStringLiteral("trace-only %1").arg(on)), on);
    }
}

TEST_F(MenusTest, ItemsReachTheDesktopAndQuitSavesThePreferences)
{
    window.Event_Open();
    globals.appHelpFolder = QStringLiteral("/opt/vexil/Resources/Help");
    globals.m_FolderPath = homes.DataPath() + QLatin1Char('/');
    Show();
    const QString page = QStringLiteral("/opt/vexil/Resources/Help/VexilUtility.htm");
    struct Row {
        const char* item;
        QKeySequence key;
        QString call; // empty: no call at all
    };
    const Row rows[] = {
        {"HelpVexilUtilHelp", QKeySequence(Qt::Key_F1), {}}, // no help system attached yet
        {"HelpVexilUtilHelp", QKeySequence(Qt::Key_F1), QStringLiteral("Help: ") + page},
        {"HelpReleaseNotes", {}, QStringLiteral("MsgBox: ERROR: File not found! (vexilfwnotes.rtf)")},
        {"HelpAboutVexilUtil", {}, QStringLiteral("About: Revision " VEXIL_SHORT_VERSION)},
        {"BrowserHelp", {}, QStringLiteral("OpenURL: file://") + page},
    };
    for (const Row& row : rows) {
        platform.calls.clear();
        if (row.key.isEmpty())
            Item(row.item)->trigger();
        else
            QTest::keySequence(&view, row.key);
        EXPECT_EQ(platform.calls, row.call.isEmpty() ? QStringList() : QStringList{row.call}) << row.item;
        window.SetHelpRunner([this](const QString& file) { platform.calls << QStringLiteral("Help: ") + file; });
    }

    // The edit shortcuts reach the status log from a control that does not take them.
    QTest::keyClick(view.findChild<QPushButton*>(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view.findChild<QPushButton*>(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(platform.clipboard, window.StatusField.Text());

    // A third of the window's own height below the screen's top; the size stays.
    platform.screen = QRect(0, 30, 1280, 1000);
    window.SetBounds(QRect(7, 9, 600, 570));
    Item("WindowSettodefaultposition")->trigger();
    EXPECT_EQ(window.Bounds(), QRect(340, 220, 600, 570));
    EXPECT_EQ(view.geometry().topLeft(), QPoint(340, 220));

    QTest::keySequence(&view, QKeySequence(QStringLiteral("Ctrl+Q")));
    EXPECT_FALSE(view.isVisible());
    EXPECT_TRUE(homes.Prefs().contains("winTOP\n220\n")) << homes.Prefs().toStdString();
}

} // namespace
