#include "Globals.h"
#include "ManualClock.h"
#include "ScriptedPlatformServices.h"
#include "QtPrinters.h"
#include "Window1Base.h"

#include <QStringList>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr qint64 Second = 1'000'000;

class StatusLogTest : public ::testing::Test {
protected:
    ManualClock clock{QDateTime(QDate(2026, 3, 4), QTime(9, 5, 7))};
    Globals globals;
    ScriptedPlatformServices platform;
    Window1Base window{globals, clock, platform};

    QStringList Lines() const { return window.StatusField.Text().split(QLatin1Char('\n')); }

    // A flag that only a pass of the event loop can set.
    std::shared_ptr<bool> ArmEventProbe()
    {
        auto ran = std::make_shared<bool>(false);
        QTimer::singleShot(0, &window, [ran] { *ran = true; });
        return ran;
    }
};

TEST_F(StatusLogTest, LineIsTimeOfDayBlankTextNewline)
{
    // Single-digit fields must be zero-padded, the hour is 24-hour, and the date never shows.
    const struct {
        qint64 advanceUs;
        const char* stamp;
    } rows[] = {
        {0, "09:05:07"},
        {Second / 2, "09:05:07"},
        {(5 * 3600 + 55) * Second, "14:06:02"},
        {(9 * 3600 + 53 * 60 + 56) * Second + Second / 2, "23:59:59"},
        {Second, "00:00:00"},
    };
    QString expected;
    for (const auto& row : rows) {
        clock.Advance(row.advanceUs);
        globals.SetStatusText(QStringLiteral("Vexil firmware revision 01.12"));
        expected += QLatin1String(row.stamp) + QStringLiteral(" Vexil firmware revision 01.12\n");
        EXPECT_EQ(globals.mTIMESTAMP, QLatin1String(row.stamp) + QLatin1Char(' '));
        EXPECT_EQ(window.StatusField.Text(), expected) << row.stamp;
        EXPECT_EQ(Lines().constLast(), QString());
    }
    EXPECT_TRUE(platform.calls.isEmpty());
}

TEST_F(StatusLogTest, VerboseOnlyLinesNeedVerboseButEveryCallPumpsEvents)
{
    const struct {
        bool verboseOnly;
        bool verbose;
        bool shown;
    } rows[] = {
        {false, false, true},
        {true, false, false},
        {true, true, true},
        {false, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "verboseOnly=" << row.verboseOnly << " verbose=" << row.verbose);
        globals.m_Verbose = row.verbose;
        globals.m_TraceMode = false;
        const QString before = window.StatusField.Text();
        const auto pumped = ArmEventProbe();
        globals.SetStatusText(QStringLiteral("Erase done"), row.verboseOnly);
        EXPECT_TRUE(*pumped);
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
    EXPECT_EQ(Lines(), QStringList({"09:05:07 outer", "09:05:08 inner", ""}));
}

} // namespace
