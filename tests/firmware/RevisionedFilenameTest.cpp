#include "QtPrinters.h"
#include "Window1Firmware.h"

#include <gtest/gtest.h>

TEST(GetNewestRevision, PicksTheHighestNumberFirstOfEqualsAndLeavesIndexWhenNone)
{
    struct Row {
        const char* name;
        QStringList files;
        const char* digits;
        int index; // -7: untouched
    };
    const Row rows[] = {
        {"newest in the middle", {"vexil0110.hex", "vexil0112.hex", "vexil0111.hex"}, "0112", 1},
        {"case ignored", {"VEXIL0112.HEX"}, "0112", 0},
        {"wrong extension", {"vexil0112.txt"}, "", -7},
        {"prefix must lead", {"xvexil0112.hex"}, "", -7},
        {"revision 0 is no firmware", {"vexil0000.hex"}, "", -7},
        {"no digits", {"vexil.hex"}, "", -7},
        {"equal numbers keep the first", {"vexil0112.hex", "Vexil112.hex"}, "0112", 0},
        {"number, not text", {"vexil0111.hex", "vexil112.hex"}, "112", 1},
        {"leading number of the digits", {"vexil0111.hex", "vexil0113b.hex", "vexilx999.hex"}, "0113b", 1},
        {"other files around", {"notes.rtf", "vexil0100.hex", ".hex", "vexil0101.HEX.bak"}, "0100", 1},
        {"empty list", {}, "", -7},
    };
    for (const Row& row : rows) {
        int index = -7;
        EXPECT_EQ(Window1Firmware::GetNewestRevision(QStringLiteral("vexil"), row.files, index), QString::fromLatin1(row.digits))
            << row.name;
        EXPECT_EQ(index, row.index) << row.name;
    }
}

TEST(GetNewestRevision, LeadingNumberReadsOnlyTheNumericBeginning)
{
    const std::pair<const char*, qint64> rows[] = {
        {"0112", 112}, {"", 0}, {"abc", 0}, {"12ab34", 12}, {"-5", -5}, {"+7", 7},
        {"99999999999999999999999", std::numeric_limits<qint64>::max()},
    };
    for (const auto& [text, number] : rows)
        EXPECT_EQ(Window1Firmware::LeadingNumber(QString::fromLatin1(text)), number) << text;
}
