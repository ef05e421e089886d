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

// On "alpha\nbeta\n": a key and the selection and clipboard before it; whether it was used, then the text,
// clipboard and selection after it.
struct KeyRow {
    const char* key;
    Qt::KeyboardModifiers modifiers;
    int start, length;
    const char* clipboard;
    bool used;
    const char *textAfter, *clipboardAfter;
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

TEST_F(LogEditingTest, ShortcutsNeedCtrlAndActOnTheSelectionTheActivityLogNeverPastes)
{
    const KeyRow statusKeys[] = {
        {"A", Ctrl | Qt::ShiftModifier, 2, 1, "old", true, "alpha\nbeta\n", "old", 0, 11},
        {"c", Ctrl, 6, 4, "old", true, "alpha\nbeta\n", "beta", 6, 4},
        {"c", Ctrl, 11, 0, "old", true, "alpha\nbeta\n", "", 11, 0},
        {"X", Ctrl, 0, 6, "old", true, "beta\n", "alpha\n", 5, 0},
        {"v", Ctrl, 0, 5, "omega", true, "omega\nbeta\n", "omega", 11, 0},
        {"z", Ctrl, 2, 3, "old", true, "alpha\nbeta\n", "old", 2, 3},
        {"c", Qt::AltModifier, 6, 4, "old", false, "alpha\nbeta\n", "old", 6, 4},
    };
    RunKeys(status, [this](const QString& k, Qt::KeyboardModifiers m) { return window.StatusField_KeyDown(k, m); }, statusKeys);

    ProgressWin& progress = window.GetProgressWin();
    const KeyRow activity[] = {
        {"a", Ctrl, 3, 0, "old", true, "alpha\nbeta\n", "old", 0, 11},
        {"C", Ctrl, 6, 4, "old", true, "alpha\nbeta\n", "beta", 6, 4},
        {"x", Ctrl, 0, 6, "old", true, "beta\n", "alpha\n", 5, 0},
        {"x", Ctrl, 3, 0, "old", true, "alpha\nbeta\n", "old", 3, 0},
        {"v", Ctrl, 0, 5, "omega", true, "alpha\nbeta\n", "omega", 0, 5},
        {"c", Qt::NoModifier, 6, 4, "old", false, "alpha\nbeta\n", "old", 6, 4},
    };
    RunKeys(progress.ActivityLog,
            [&progress](const QString& k, Qt::KeyboardModifiers m) { return progress.ActivityLog_KeyDown(k, m); }, activity);
}

TEST_F(LogEditingTest, StatusFieldMenuEnablesByContentSelectionAndClipboardAndItsChoicesAct)
{
    const struct { const char* text; int start, length; const char *clipboard, *shown; } menus[] = {
        {"", 0, 0, "x", "(Cut)|(Copy)|Paste|(Delete)|-|(Select All)|-|(Undo)|(Redo)"},
        {"alpha\n", 6, 0, "", "(Cut)|(Copy)|(Paste)|(Delete)|-|Select All|-|(Undo)|(Redo)"},
        {"alpha\n", 1, 3, "x", "Cut|Copy|Paste|Delete|-|Select All|-|(Undo)|(Redo)"},
    };
    QSignalSpy focused(&status, &TextArea::focusRequested);
    for (const auto& row : menus) {
        SCOPED_TRACE(row.shown);
        Prepare(status, row.text, row.start, row.length, row.clipboard);
        EXPECT_TRUE(window.StatusField_MouseDown(10, 4, true));
        EXPECT_EQ(platform.calls, QStringList{QStringLiteral("PopupMenu: ") + row.shown});
        ExpectState(status, row.text, row.clipboard, row.start, row.length);
    }
    EXPECT_FALSE(window.StatusField_MouseDown(10, 4, false));
    EXPECT_EQ(focused.size(), 3);

    const struct { int choice; const char *text, *clipboard; int start, length; } choices[] = {
        {0, "alpha\n\n", "beta", 7, 0},        {1, "alpha\nbeta\n", "beta", 6, 4},
        {2, "alpha\nomega\n", "omega", 12, 0}, {3, "alpha\n\n", "omega", 7, 0},
        {5, "alpha\nbeta\n", "omega", 0, 11},  {-1, "alpha\nbeta\n", "omega", 6, 4},
    };
    for (const auto& row : choices) {
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
    EXPECT_EQ(std::pair(appended.size(), reset.size()), std::pair(qsizetype(2), qsizetype(0))) << "lines are appended, never redrawn whole";

    // Select all and paste over the history: undo brings it back, the newer line kept; redo and the menu follow.
    status.SelectAll();
    platform.clipboard = QStringLiteral("oops");
    EXPECT_TRUE(window.StatusField_KeyDown(QStringLiteral("v"), Ctrl));
    globals.SetStatusText(QStringLiteral("three"));
    EXPECT_TRUE(window.StatusField_KeyDown(QStringLiteral("z"), Ctrl));
    EXPECT_EQ(status.Text(), pasted + "09:30:01 two\n09:30:01 three\n");
    EXPECT_TRUE(window.StatusField_KeyDown(QStringLiteral("Z"), Ctrl | Qt::ShiftModifier));
    EXPECT_EQ(status.Text(), "oops09:30:01 three\n");
    platform.popupChoices = QQueue<int>({7, 7});
    EXPECT_TRUE(window.StatusField_MouseDown(0, 0, true) && window.StatusField_MouseDown(0, 0, true));
    EXPECT_EQ(status.Text(), "09:30:00 one\n09:30:01 two\n09:30:01 three\n") << "back to before the first paste";
    EXPECT_TRUE(platform.calls.constLast().endsWith("|Undo|Redo"));
}

} // namespace
