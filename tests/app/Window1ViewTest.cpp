#include "ProgressWinView.h"
#include "QtPrinters.h"
#include "Window1ViewFixture.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

template <class W>
W* FindByText(const QWidget& root, const QString& text)
{
    for (W* widget : root.findChildren<W*>())
        if (widget->text() == text)
            return widget;
    return nullptr;
}

QList<ProgressWinView*> ProgressViews()
{
    QList<ProgressWinView*> views;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* view = qobject_cast<ProgressWinView*>(widget))
            views << view;
    return views;
}

class Window1ViewTest : public Window1ViewFixture {};

TEST_F(Window1ViewTest, CheckRevisionsNowRunsThroughTheWidgets)
{
    sim.SetAppRevision(57);
    QTemporaryDir folder;
    QFile(folder.filePath(QStringLiteral("vexil0112.hex"))).open(QIODevice::WriteOnly);
    globals.m_FolderPath = folder.path() + QLatin1Char('/');
    QLabel* available = FindByText<QLabel>(view, QStringLiteral("missing"));
    QLabel* installed = FindByText<QLabel>(view, QStringLiteral("??.??"));
    QPushButton* check = FindByText<QPushButton>(view, QStringLiteral("Check Revisions Now"));
    QPushButton* send = FindByText<QPushButton>(view, QStringLiteral("Send Firmware to Vexil"));
    ASSERT_TRUE(available && installed && check && send);
    EXPECT_FALSE(send->isEnabled());

    window.MCUinstalledText.SetText(QStringLiteral("--"));
    EXPECT_EQ(installed->text(), QStringLiteral("--"));

    QSignalSpy fired(&window.VexilRevisionsTimer, &Timer::Action);
    check->click();
    EXPECT_FALSE(window.CheckRevisionsNowButton.Enabled());
    EXPECT_FALSE(check->isEnabled());
    EXPECT_EQ(available->text(), QStringLiteral("01.12")) << "the folder is looked at before the device";
    ASSERT_TRUE(fired.wait(2000));
    EXPECT_TRUE(check->isEnabled());
    EXPECT_TRUE(send->isEnabled());
    EXPECT_EQ(installed->text(), QStringLiteral("00.57"));
    EXPECT_EQ(sim.CountCommands('G'), 1);
    EXPECT_TRUE(platform.calls.isEmpty());
    auto* log = view.findChild<QPlainTextEdit*>();
    ASSERT_TRUE(log);
    EXPECT_TRUE(log->isReadOnly());
    EXPECT_TRUE(log->toPlainText().endsWith(QStringLiteral(" Vexil firmware revision 00.57\n")));

    // A disabled widget must not reach the model: no second check is armed.
    window.CheckRevisionsNowButton.SetEnabled(false);
    EXPECT_FALSE(check->isEnabled());
    check->click();
    EXPECT_EQ(window.VexilRevisionsTimer.GetMode(), Timer::ModeOff);
}

TEST_F(Window1ViewTest, ResizeStretchesByLockedSides)
{
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    auto* log = view.findChild<QPlainTextEdit*>();
    QPushButton* send = FindByText<QPushButton>(view, QStringLiteral("Send Firmware to Vexil"));
    ASSERT_TRUE(log && send);
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
        EXPECT_EQ(after.topLeft(), before.topLeft());
        EXPECT_EQ(after.width(), before.width() + 100);
        // Only the log's box is locked at the bottom as well.
        EXPECT_EQ(after.height(), before.height() + (after.contains(log->geometry()) ? 50 : 0));
    }
}

TEST_F(Window1ViewTest, ProgressWinViewFollowsItsModelUntilClosed)
{
    ASSERT_TRUE(ProgressViews().isEmpty());
    ProgressWin& progress = window.GetProgressWin();
    ASSERT_EQ(ProgressViews().size(), 1);
    QPointer<ProgressWinView> pv = ProgressViews().constFirst();
    EXPECT_EQ(pv->windowTitle(), QStringLiteral("Loading Vexil Firmware"));
    EXPECT_FALSE(pv->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    EXPECT_FALSE(pv->isVisible());

    progress.Left = 120;
    progress.Top = 80;
    progress.Show();
    EXPECT_TRUE(pv->isVisible());
    EXPECT_EQ(pv->pos(), QPoint(120, 80));

    progress.SetActivityLog(QStringLiteral("Erasing Vexil flash"));
    auto* log = pv->findChild<QPlainTextEdit*>();
    ASSERT_TRUE(log);
    EXPECT_EQ(log->toPlainText(), QStringLiteral("Erasing Vexil flash\n"));

    QPushButton* close = FindByText<QPushButton>(*pv, QStringLiteral("Close"));
    ASSERT_TRUE(close);
    EXPECT_FALSE(close->isEnabled());
    close->click();
    EXPECT_TRUE(pv->isVisible());

    progress.CloseIt.SetEnabled(true);
    EXPECT_TRUE(close->isEnabled());
    close->click();
    EXPECT_FALSE(pv->isVisible());
    EXPECT_FALSE(window.HasProgressWin());

    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(pv.isNull());
    EXPECT_TRUE(ProgressViews().isEmpty());
    EXPECT_EQ(window.GetProgressWin().ActivityLog.Text(), QString()) << "a closed window is never reused";
}

} // namespace
