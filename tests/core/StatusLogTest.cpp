#include "Globals.h"
#include "ManualClock.h"
#include "ScriptedPlatformServices.h"
#include "QtPrinters.h"
#include "Window1Base.h"

#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr qint64 Second = 1'000'000;

class StatusLogTest : public ::testing::Test {
protected:
    ManualClock clock{QDateTime(QDate(2026, 3, 4), QTime(9, 5, 7))};
    Globals globals;
    ScriptedPlatformServices platform;
    Window1Base window{globals, clock, platform};
};

TEST_F(StatusLogTest, LineIsTimeOfDayBlankTextNewline)
{
    // Fields zero-padded, seconds cut rather than rounded, the hour 24-hour, the date never shown.
    const std::pair<qint64, const char*> rows[] = {{0, "09:05:07"}, {Second / 2, "09:05:07"}, {(5 * 3600 + 55) * Second, "14:06:02"}};
    QString expected;
    for (const auto& [advanceUs, stamp] : rows) {
        clock.Advance(advanceUs);
        globals.SetStatusText(QStringLiteral("Vexil firmware revision 01.12"));
        expected += QLatin1String(stamp) + QStringLiteral(" Vexil firmware revision 01.12\n");
        EXPECT_EQ(window.StatusField.Text(), expected) << stamp;
    }
}

TEST_F(StatusLogTest, VerboseOnlyLinesNeedVerboseButEveryCallPumpsEvents)
{
    const struct { bool verboseOnly, verbose, shown; } rows[] = {
        {false, false, true}, {true, false, false}, {true, true, true}, {false, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "verboseOnly=" << row.verboseOnly << " verbose=" << row.verbose);
        globals.m_Verbose = row.verbose;
        const QString before = window.StatusField.Text();
        bool pumped = false;
        QTimer::singleShot(0, &window, [&pumped] { pumped = true; });
        globals.SetStatusText(QStringLiteral("Erase done"), row.verboseOnly);
        EXPECT_TRUE(pumped);
        EXPECT_EQ(window.StatusField.Text(), row.shown ? before + QStringLiteral("09:05:07 Erase done\n") : before);
    }
}

TEST_F(StatusLogTest, NestedCallFromTimerLandsWholeAfterTheOuterLine)
{
    QTimer::singleShot(0, &window, [this] {
        clock.Advance(Second);
        globals.SetStatusText(QStringLiteral("inner"));
    });
    globals.SetStatusText(QStringLiteral("outer"));
    EXPECT_EQ(window.StatusField.Text(), "09:05:07 outer\n09:05:08 inner\n");
}

} // namespace
