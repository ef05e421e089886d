#include "Globals.h"
#include "ManualClock.h"
#include "ProgressWin.h"
#include "QtPrinters.h"
#include "ScriptedPlatformServices.h"
#include "Window1Base.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <functional>
#include <span>

namespace {

constexpr auto Ctrl = Qt::ControlModifier;

// Selection and clipboard before a key on "alpha\nbeta\n"; then its result, text, clipboard and selection.
struct KeyRow {
    const char* key;
    Qt::KeyboardModifiers modifiers;
    int start, length;
    const char *clipboard, *textAfter, *clipboardAfter;
    bool used;
    int startAfter, lengthAfter;
};

class LogEditingTest : public ::testing::Test {
protected:
    Globals globals;
    ManualClock clock;
    ScriptedPlatformServices platform;
    Window1Base window{globals, clock, platform};
    TextArea& status = window.StatusField;

    void Prepare(TextArea& log, const QString& text, int start, int length, const QString& clipboard)
    {
        log.SetText(text);
        log.SetSelection(start, length);
        platform.clipboard = clipboard;
        platform.calls.clear();
    }
    void ExpectState(const TextArea& log, const QString& text, const QString& clipboard, int start, int length)
    {
        EXPECT_EQ(log.Text(), text);
        EXPECT_EQ(log.LineOfEnd(), text.count(QLatin1Char('\n'))) << "the status log scrolls by this count";
        EXPECT_EQ(platform.clipboard, clipboard);
        EXPECT_EQ(std::pair(log.SelStart(), log.SelLength()), std::pair(start, length));
    }
    void RunKeys(TextArea& log, const std::function<bool(const QString&, Qt::KeyboardModifiers)>& keyDown,
                 std::span<const KeyRow> rows)
    {
        for (const KeyRow& row : rows) {
            SCOPED_TRACE(testing::Message() << row.key << " " << row.modifiers.toInt() << " @" << row.start);
            Prepare(log, "alpha\nbeta\n", row.start, row.length, row.clipboard);
            EXPECT_EQ(keyDown(row.key, row.modifiers), row.used);
            ExpectState(log, row.textAfter, row.clipboardAfter, row.startAfter, row.lengthAfter);
            EXPECT_TRUE(platform.calls.isEmpty());
        }
    }
};

TEST_F(LogEditingTest, StatusFieldShortcutsNeedCtrlAndActOnTheSelection)
{
    const KeyRow rows[] = {
        {"a", Ctrl, 2, 1, "old", "alpha\nbeta\n", "old", true, 0, 11},
        {"A", Ctrl | Qt::ShiftModifier, 11, 0, "old", "alpha\nbeta\n", "old", true, 0, 11},
        {"c", Ctrl, 6, 4, "old", "alpha\nbeta\n", "beta", true, 6, 4},
        {"c", Ctrl, 11, 0, "old", "alpha\nbeta\n", "", true, 11, 0},
        {"X", Ctrl, 0, 6, "old", "beta\n", "alpha\n", true, 5, 0},
        {"v", Ctrl, 0, 5, "omega", "omega\nbeta\n", "omega", true, 11, 0},
        {"V", Ctrl, 11, 0, "tail", "alpha\nbeta\ntail", "tail", true, 15, 0},
        {"z", Ctrl, 2, 3, "old", "alpha\nbeta\n", "old", true, 2, 3},
        {"c", Qt::NoModifier, 6, 4, "old", "alpha\nbeta\n", "old", false, 6, 4},
        {"a", Qt::AltModifier | Qt::ShiftModifier, 6, 4, "old", "alpha\nbeta\n", "old", false, 6, 4},
    };
    RunKeys(status, [this](const QString& k, Qt::KeyboardModifiers m) { return window.StatusField_KeyDown(k, m); },
            rows);
}

TEST_F(LogEditingTest, StatusFieldMenuEnablesByContentSelectionAndClipboard)
{
    const struct { const char* text; int start, length; const char *clipboard, *shown; } rows[] = {
        {"", 0, 0, "", "(Cut)|(Copy)|(Paste)|(Delete)|-|(Select All)"},
        {"", 0, 0, "x", "(Cut)|(Copy)|Paste|(Delete)|-|(Select All)"},
        {"alpha\n", 6, 0, "", "(Cut)|(Copy)|(Paste)|(Delete)|-|Select All"},
        {"alpha\n", 1, 3, "x", "Cut|Copy|Paste|Delete|-|Select All"},
    };
    QSignalSpy focused(&status, &TextArea::focusRequested);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.shown);
        Prepare(status, row.text, row.start, row.length, row.clipboard);
        EXPECT_TRUE(window.StatusField_MouseDown(10, 4, true));
        EXPECT_EQ(platform.calls, QStringList{QStringLiteral("PopupMenu: ") + row.shown});
        ExpectState(status, row.text, row.clipboard, row.start, row.length);
    }
    EXPECT_EQ(focused.size(), 4);

    platform.calls.clear();
    EXPECT_FALSE(window.StatusField_MouseDown(10, 4, false));
    EXPECT_TRUE(platform.calls.isEmpty());
    EXPECT_EQ(focused.size(), 4);
}

TEST_F(LogEditingTest, StatusFieldMenuChoicesAct)
{
    const struct { int choice; const char *text, *clipboard; int start, length; } rows[] = {
        {0, "alpha\n\n", "beta", 7, 0},        {1, "alpha\nbeta\n", "beta", 6, 4},
        {2, "alpha\nomega\n", "omega", 12, 0}, {3, "alpha\n\n", "omega", 7, 0},
        {5, "alpha\nbeta\n", "omega", 0, 11},  {-1, "alpha\nbeta\n", "omega", 6, 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.choice);
        Prepare(status, "alpha\nbeta\n", 6, 4, "omega");
        platform.popupChoices.enqueue(row.choice);
        EXPECT_TRUE(window.StatusField_MouseDown(0, 0, true));
        ExpectState(status, row.text, row.clipboard, row.start, row.length);
    }
}

TEST_F(LogEditingTest, PastedTextStaysAndNewLinesArriveAfterItWithTheCaretAtTheEnd)
{
    QSignalSpy appended(&status, &TextArea::appended);
    QSignalSpy reset(&status, &TextArea::textReset);
    globals.SetStatusText(QStringLiteral("one"));
    ExpectState(status, "09:30:00 one\n", "", 13, 0);

    status.SetSelection(9, 3);
    platform.clipboard = QStringLiteral("pasted\nby hand");
    EXPECT_TRUE(window.StatusField_KeyDown(QStringLiteral("v"), Ctrl));
    const QString pasted = QStringLiteral("09:30:00 pasted\nby hand\n");
    ExpectState(status, pasted, platform.clipboard, 24, 0);

    // A selection the user made gives way to the new line.
    status.SetSelection(0, 8);
    clock.Advance(1'000'000);
    globals.SetStatusText(QStringLiteral("two"));
    ExpectState(status, pasted + "09:30:01 two\n", platform.clipboard, 37, 0);
    EXPECT_EQ(appended.size(), 2) << "status lines are appended, never redrawn whole";
    EXPECT_EQ(reset.size(), 0);
}

TEST_F(LogEditingTest, ActivityLogCopiesAndCutsButNeverPastes)
{
    ProgressWin& progress = window.GetProgressWin();
    const KeyRow rows[] = {
        {"a", Ctrl, 3, 0, "old", "alpha\nbeta\n", "old", true, 0, 11},
        {"C", Ctrl, 6, 4, "old", "alpha\nbeta\n", "beta", true, 6, 4},
        {"c", Ctrl, 3, 0, "old", "alpha\nbeta\n", "old", true, 3, 0},
        {"x", Ctrl, 0, 6, "old", "beta\n", "alpha\n", true, 5, 0},
        {"x", Ctrl, 3, 0, "old", "alpha\nbeta\n", "old", true, 3, 0},
        {"v", Ctrl, 0, 5, "omega", "alpha\nbeta\n", "omega", true, 0, 5},
        {"c", Qt::NoModifier, 6, 4, "old", "alpha\nbeta\n", "old", false, 6, 4},
    };
    RunKeys(progress.ActivityLog,
            [&progress](const QString& k, Qt::KeyboardModifiers m) { return progress.ActivityLog_KeyDown(k, m); }, rows);
}

} // namespace
