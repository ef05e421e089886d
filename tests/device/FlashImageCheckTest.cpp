#include "FlashImageCheck.h"
#include "HexFile.h"
#include "QtPrinters.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using HexFile::Record;
using Problem = FlashImageCheck::Problem;

namespace {

constexpr std::uint32_t Start = 0x1D008000;
constexpr std::uint32_t End = 0x1D040000;

std::vector<std::uint8_t> Bytes(int n)
{
    return std::vector<std::uint8_t>(static_cast<std::size_t>(n), 0x5A);
}

FlashImageCheck::Result Check(const QByteArray& content)
{
    QTemporaryDir dir;
    const QString path = HexFile::Write(QDir(dir.path()), QStringLiteral("vexil0112.hex"), content);
    return FlashImageCheck::Run(MCULoader(nullptr, nullptr), path, Start, End);
}

} // namespace

TEST(FlashImageCheck, FullWindowIsSoundWhateverFollowsIt)
{
    QByteArray image = HexFile::Image(Start, End - Start, 0, false);
    // A boot-configuration record after the program, which the load never reads.
    image += HexFile::Lines({HexFile::Linear(0x1FC0), Record(0, 0x2FF0, Bytes(4)), HexFile::EndOfFile()});
    const auto result = Check(image);
    EXPECT_TRUE(result.Sound()) << result.Describe().toStdString();
    EXPECT_TRUE(result.windowFull);
    EXPECT_EQ(result.packets, 14336);

    // The demo's sample file is a sound full image too.
    const auto sample = Check(SampleFirmware::Image(113));
    EXPECT_TRUE(sample.Sound() && sample.windowFull) << sample.Describe().toStdString();

    // Even a broken record after a full window is never reached.
    EXPECT_TRUE(Check(HexFile::Image(Start, End - Start, 0, false) + ":0100000001FF\r\n").Sound());
}

TEST(FlashImageCheck, RecordsTheLoadWouldSendMustRunUnbroken)
{
    struct Row {
        const char* name;
        std::vector<QByteArray> lines;
        Problem problem;
        int record;
        std::uint32_t address;
    };
    const QByteArray upper = HexFile::Linear(0x1D00);
    const Row rows[] = {
        {"below the window is skipped",
         {HexFile::Linear(0x1D00), Record(0, 0x0000, Bytes(7)), Record(0, 0x8000, Bytes(16)), Record(0, 0x8010, Bytes(16))},
         Problem::EndsEarly, 3, 0x1D008010},
        {"short record", {upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8010, Bytes(8))}, Problem::WrongLength, 2, 0x1D008010},
        {"long record", {upper, Record(0, 0x8000, Bytes(32))}, Problem::WrongLength, 1, 0x1D008000},
        {"empty data record", {upper, Record(0, 0x8000, {})}, Problem::WrongLength, 1, 0x1D008000},
        {"gap", {upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8020, Bytes(16))}, Problem::Gap, 2, 0x1D008020},
        {"first record above the start", {upper, Record(0, 0x8010, Bytes(16))}, Problem::Gap, 1, 0x1D008010},
        {"overlap", {upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8008, Bytes(16))}, Problem::Overlap, 2, 0x1D008008},
        {"repeat", {upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8000, Bytes(16))}, Problem::Overlap, 2, 0x1D008000},
        {"beyond the window before it is full",
         {upper, Record(0, 0x8000, Bytes(16)), HexFile::Linear(0x1D04), Record(0, 0x0000, Bytes(16))}, Problem::Gap, 2, 0x1D040000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<QByteArray> lines = row.lines;
        lines.push_back(HexFile::EndOfFile());
        const auto result = Check(HexFile::Lines(lines));
        EXPECT_EQ(result.problem, row.problem) << result.Describe().toStdString();
        EXPECT_EQ(result.record, row.record);
        EXPECT_EQ(result.address, row.address);
        EXPECT_FALSE(result.windowFull);
    }
}

TEST(FlashImageCheck, DescribesTheFirstOffendingRecord)
{
    const auto result = Check(HexFile::Lines({HexFile::Linear(0x1D00), Record(0, 0x8000, Bytes(16)),
                                              Record(0, 0x8010, Bytes(12)), Record(0, 0x8040, Bytes(16)),
                                              HexFile::EndOfFile()}));
    EXPECT_EQ(result.Describe(), "Firmware file refused: data record 2 at 0x1D008010 holds 12 bytes, not 16");
    EXPECT_EQ(result.packets, 1);
}

TEST(FlashImageCheck, UnreadableBeforeTheWindowIsFullIsRefused)
{
    const QByteArray image = HexFile::Image(Start, 0x100, 0, false);
    EXPECT_EQ(Check(image).problem, Problem::Unreadable) << "no end record: the load would fail in the middle";
    EXPECT_EQ(Check(image + ":0100000001FF\r\n").problem, Problem::Unreadable);
    const auto early = Check(image + HexFile::EndOfFile());
    EXPECT_EQ(early.Describe(), "Firmware file refused: its image ends at 0x1D008100, before the flash window ends at 0x1D040000");
    EXPECT_FALSE(early.windowFull);
    EXPECT_EQ(early.packets, 16);
    EXPECT_EQ(FlashImageCheck::Run(MCULoader(nullptr, nullptr), QStringLiteral("/nonexistent/vexil.hex"), Start, End).problem,
              Problem::Unreadable);
}

TEST(FlashImageCheck, StartsFromTheOffsetTheValidationLeftBehind)
{
    // Validation of the file leaves the last type 4 offset; the load reads on from it,
    // so a file whose data comes before any address record lands where that offset says.
    MCULoader reader(nullptr, nullptr);
    reader.m_dwOffset = 0x1D000000;
    QTemporaryDir dir;
    const QString path = HexFile::Write(QDir(dir.path()), QStringLiteral("x.hex"),
                                        HexFile::Lines({Record(0, 0x8000, Bytes(16)), HexFile::EndOfFile()}));
    EXPECT_EQ(FlashImageCheck::Run(reader, path, Start, End).packets, 1);
    EXPECT_EQ(reader.m_dwOffset, 0x1D000000u) << "the check reads on a copy";
}
