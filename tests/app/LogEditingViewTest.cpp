#include "ControlBinding.h"
#include "ProgressWinView.h"
#include "QtPrinters.h"
#include "Window1ViewFixture.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class LogEditingViewTest : public Window1ViewFixture {
protected:
    QPlainTextEdit* log = view.findChild<QPlainTextEdit*>();

    static void Select(QPlainTextEdit* edit, int start, int end)
    {
        QTextCursor cursor = edit->textCursor();
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        edit->setTextCursor(cursor);
    }
    QPoint PointOf(int position) const
    {
        QTextCursor cursor(log->document());
        cursor.setPosition(position);
        return log->cursorRect(cursor).center();
    }
};

TEST_F(LogEditingViewTest, StatusLogWidgetAndModelShareSelectionAndEdits)
{
    ASSERT_TRUE(log);
    EXPECT_EQ(log->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    globals.SetStatusText(QStringLiteral("alpha"));
    globals.SetStatusText(QStringLiteral("beta"));
    const TextArea& model = window.StatusField;

    Select(log, 9, 14);
    EXPECT_EQ(std::pair(model.SelStart(), model.SelLength()), std::pair(9, 5));
    QTest::mousePress(log->viewport(), Qt::LeftButton, {}, PointOf(24));
    QTest::mouseMove(log->viewport(), PointOf(28));
    QTest::mouseRelease(log->viewport(), Qt::LeftButton, {}, PointOf(28));
    EXPECT_EQ(std::pair(model.SelStart(), model.SelLength()), std::pair(24, 4));

    QTest::keyClick(log, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(platform.clipboard, QStringLiteral("beta"));
    platform.clipboard = QStringLiteral("gamma");
    QTest::keyClick(log, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(model.Text(), QStringLiteral("09:30:00 alpha\n09:30:00 gamma\n"));
    EXPECT_EQ(log->toPlainText(), model.Text());

    Select(log, 0, 5);
    globals.SetStatusText(QStringLiteral("delta"));
    EXPECT_EQ(log->toPlainText(), model.Text());
    EXPECT_FALSE(log->textCursor().hasSelection());
    EXPECT_EQ(log->textCursor().position(), model.Text().size());
    EXPECT_TRUE(platform.calls.isEmpty());

    // Redrawing the whole text moves the widget's cursor; that must not reach the model.
    QPlainTextEdit plain;
    TextArea area;
    BindTextArea(&plain, area);
    area.SetText(QStringLiteral("abcdef"));
    area.SetSelection(1, 2);
    area.SetText(QStringLiteral("abcdefgh"));
    EXPECT_EQ(std::pair(area.SelStart(), area.SelLength()), std::pair(1, 2));
    EXPECT_EQ(plain.textCursor().selectedText(), QStringLiteral("bc"));
}

TEST_F(LogEditingViewTest, RightClickShowsTheControllersMenuAndNeverQtsOwn)
{
    ASSERT_TRUE(log);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    globals.SetStatusText(QStringLiteral("alpha"));

    const QPoint at(20, 8);
    QTest::mouseClick(log->viewport(), Qt::RightButton, {}, at);
    // Qt follows a right press with a context-menu event; it must not open a second menu.
    QContextMenuEvent afterPress(QContextMenuEvent::Mouse, at, log->viewport()->mapToGlobal(at));
    QCoreApplication::sendEvent(log->viewport(), &afterPress);
    EXPECT_EQ(platform.calls, QStringList{QStringLiteral("PopupMenu: (Cut)|(Copy)|(Paste)|(Delete)|-|Select All")});
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, at, log->mapToGlobal(at));
    QCoreApplication::sendEvent(log, &menuKey);
    EXPECT_EQ(platform.calls.size(), 2);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);

    ProgressWin& progress = window.GetProgressWin();
    progress.Show();
    progress.SetActivityLog(QStringLiteral("Erasing"));
    QPlainTextEdit* activity = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* progressView = qobject_cast<ProgressWinView*>(widget))
            activity = progressView->findChild<QPlainTextEdit*>();
    ASSERT_TRUE(activity);
    EXPECT_EQ(activity->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    Select(activity, 0, 4);
    platform.popupChoices.enqueue(1);
    QTest::mouseClick(activity->viewport(), Qt::RightButton, {}, at);
    EXPECT_EQ(platform.calls.constLast(), QStringLiteral("PopupMenu: Copy|Cut|Delete"));
    EXPECT_EQ(platform.clipboard, QStringLiteral("Eras"));
    EXPECT_EQ(activity->toPlainText(), QStringLiteral("ing\n"));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

} // namespace
