#include "DeviceFixture.h"
#include "FlashImageCheck.h"
#include "HexFile.h"

#include <QTemporaryDir>

using HexFile::Record;

namespace {

// Two packets from the window start, so that a small file fills the window.
constexpr std::uint32_t Start = Window1Device::FLASH_WINDOW_START, End = Start + 0x20;

std::vector<std::uint8_t> Bytes(std::size_t n) { return std::vector<std::uint8_t>(n, 0x5A); }

} // namespace

class HexFileCheck : public DeviceFixture {
protected:
    QTemporaryDir dir;

    QString Write(const QByteArray& content) { return HexFile::Write(QDir(dir.path()), QStringLiteral("x.hex"), content); }
};

// What the reader tells the user about a broken file; the fuzz corpus replay
// holds the reading itself to an independent reference.
TEST_F(HexFileCheck, ReaderFaultsAreReportedOnceInTheUsersWords)
{
    const struct { QByteArray content; const char* status; bool messageBox; } rows[] = {
        {"x00000001FF\r\n", "Expected start character \":\" not found", false},
        {":000000017F\r\n", "Intel Hex checksum verification failed", false}, // wrong in the top bit only
        {":00000006FA\r\n", "Intel Hex file contains an unrecognized record type", false},
        {":0100000G00FE\r\n", "Intel Hex checksum verification failed", true},
        {":10800000010203\r\n", "End File record was not found", false},
    };
    MCULoader& reader = window->m_MCULoader;
    for (const auto& row : rows) {
        window->StatusField.SetText({});
        platform.calls.clear();
        ASSERT_TRUE(reader.OpenStream(Write(row.content)));
        EXPECT_FALSE(reader.ReadNext());
        EXPECT_FALSE(reader.ReadNext());
        EXPECT_EQ(StatusLines() + platform.calls, QStringList{QString::fromLatin1(row.status)}
                                                  + (row.messageBox ? QStringList{"MsgBox: ERROR: Bad character in BIN file"} : QStringList{}));
    }
}

// Every data record at or above the window start, until the window is full,
// must hold 16 bytes at the next address; the first one that does not is named.
TEST_F(HexFileCheck, ImageCheckNamesTheFirstRecordTheLoadCouldNotSend)
{
    const QByteArray upper = HexFile::Linear(0x1D00);
    const std::pair<std::vector<QByteArray>, const char*> rows[] = {
        {{upper, Record(0, 0x0000, Bytes(7)), Record(0, 0x8000, Bytes(16)), Record(0, 0x8010, Bytes(16)), Record(0, 0x8020, Bytes(1))},
         "Firmware image is sound: 2 packets"},
        {{upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8010, Bytes(12)), Record(0, 0x8020, Bytes(16))},
         "Firmware file refused: data record 2 at 0x1D008010 holds 12 bytes, not 16"},
        {{upper, Record(0, 0x8000, Bytes(32))}, "Firmware file refused: data record 1 at 0x1D008000 holds 32 bytes, not 16"},
        {{upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8020, Bytes(16))},
         "Firmware file refused: data record 2 at 0x1D008020 leaves a gap after 0x1D008010"},
        {{upper, Record(0, 0x8000, Bytes(16)), Record(0, 0x8008, Bytes(16))},
         "Firmware file refused: data record 2 at 0x1D008008 overlaps or comes out of order before 0x1D008010"},
        {{upper, Record(0, 0x8000, Bytes(16))}, "Firmware file refused: it could not be read to the end of its image"},
        // A proper end record before the window is full: the load could never send its completion packet.
        {{upper, Record(0, 0x8000, Bytes(16)), HexFile::EndOfFile()},
         "Firmware file refused: its image ends at 0x1D008010, before the flash window ends at 0x1D008020"},
    };
    for (const auto& [lines, text] : rows)
        EXPECT_EQ(FlashImageCheck::Run(MCULoader(nullptr, nullptr), HexFile::Lines(lines), Start, End).Describe(),
                  QString::fromLatin1(text));

    // The load reads on from the offset the validation left behind; the check does the same, on a copy.
    MCULoader reader(nullptr, nullptr);
    reader.m_dwOffset = 0x1D000000;
    EXPECT_EQ(FlashImageCheck::Run(reader, HexFile::Lines({Record(0, 0x8000, Bytes(16)), Record(0, 0x8010, Bytes(16))}),
                                   Start, End).packets, 2);
    EXPECT_EQ(reader.m_dwOffset, 0x1D000000u);
}
