#include "AboutWindow.h"
#include "MessageWindow.h"
#include "MyMsgBoxWin.h"
#include "MyYesWindow.h"
#include "ProgressWinView.h"
#include "QtPrinters.h"
#include "Window1ViewFixture.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

class AccessibilityTest : public Window1ViewFixture {};

// Every control a keyboard user can reach, as a screen reader finds it, that has no name to announce.
void CollectUnnamed(QAccessibleInterface* node, QStringList& unnamed)
{
    if (!node)
        return;
    const QAccessible::State state = node->state();
    if (state.focusable && !state.invisible && node->text(QAccessible::Name).trimmed().isEmpty())
        unnamed << QStringLiteral("%1 (role %2)").arg(node->object()->metaObject()->className()).arg(node->role());
    for (int i = 0; i < node->childCount(); ++i)
        CollectUnnamed(node->child(i), unnamed);
}

TEST_F(AccessibilityTest, EveryControlOfEveryWindowHasANameAndTheLogsReadAsText)
{
    std::vector<std::unique_ptr<QWidget>> owned;
    auto own = [&owned](QWidget* widget) {
        owned.emplace_back(widget);
        return widget;
    };
    // One row per window; a new window is one more row.
    const std::pair<const char*, std::function<QWidget*()>> windows[] = {
        {"main window", [this] { return &view; }},
        {"progress window",
         [this] {
             window.GetProgressWin().Show();
             QWidget* progress = nullptr;
             for (QWidget* top : QApplication::topLevelWidgets())
                 progress = qobject_cast<ProgressWinView*>(top) ? top : progress;
             return progress;
         }},
        {"about box", [&] { return own(new AboutWindow(QStringLiteral("Revision 1.0"))); }},
        {"new firmware notice", [&] { return own(new MessageWindow({})); }},
        {"message", [&] { return own(new MyMsgBoxWin); }},
        {"question", [&] { return own(new MyYesWindow); }},
    };
    for (const auto& [name, open] : windows) {
        QWidget* shown = open();
        shown->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(shown)) << name;
        QStringList unnamed;
        CollectUnnamed(QAccessible::queryAccessibleInterface(shown), unnamed);
        EXPECT_EQ(unnamed, QStringList()) << name;
    }

    // The revisions are read with their captions, and the log as the text it holds.
    window.MCUinstalledText.SetText(QStringLiteral("00.57"));
    QStringList labelNames;
    for (QLabel* label : view.findChildren<QLabel*>())
        labelNames << QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
    EXPECT_TRUE(labelNames.contains(QStringLiteral("Installed in Vexil: 00.57"))) << labelNames.join('|').toStdString();
    EXPECT_TRUE(labelNames.contains(QStringLiteral("Available: missing"))) << labelNames.join('|').toStdString();
    globals.SetStatusText(QStringLiteral("Vexil firmware revision 00.57"));
    QAccessibleInterface* log = QAccessible::queryAccessibleInterface(view.findChild<QPlainTextEdit*>());
    ASSERT_TRUE(log && log->textInterface());
    EXPECT_EQ(log->text(QAccessible::Name), QStringLiteral("Activity Log"));
    EXPECT_EQ(log->textInterface()->text(0, log->textInterface()->characterCount()), window.StatusField.Text());
}

TEST_F(AccessibilityTest, TextFitsItsControlsAtALargerDesktopFont)
{
    const QFont desktop = QApplication::font();
    QFont larger = desktop;
    larger.setPointSize(12);
    QApplication::setFont(larger);
    Window1View big(window);
    MessageWindow notice({});
    QApplication::setFont(desktop);
    EXPECT_GT(big.minimumWidth(), view.minimumWidth()) << "the window grows with the text";
    for (QWidget* root : {static_cast<QWidget*>(&big), static_cast<QWidget*>(&notice)}) {
        for (QWidget* control : root->findChildren<QWidget*>()) {
            auto* label = qobject_cast<QLabel*>(control);
            auto* button = qobject_cast<QAbstractButton*>(control);
            const QString text = label ? label->text() : button ? button->text() : QString();
            if (text.isEmpty())
                continue;
            const QFontMetrics metrics = control->fontMetrics();
            EXPECT_GE(control->width(), metrics.horizontalAdvance(text)) << text.toStdString();
            EXPECT_GE(control->height(), metrics.height()) << text.toStdString();
        }
    }
}

} // namespace
