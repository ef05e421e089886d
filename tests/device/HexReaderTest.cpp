#include "DeviceFixture.h"
#include "HexFile.h"

#include <QTemporaryDir>

using HexFile::Record;

class HexReader : public DeviceFixture {
protected:
    QTemporaryDir dir;
    MCULoader& reader = window->m_MCULoader;

    QString Write(const QByteArray& content, const QString& name = QStringLiteral("vexil0112.hex"))
    {
        return HexFile::Write(QDir(dir.path()), name, content);
    }

    void Open(const QByteArray& content) { ASSERT_TRUE(reader.OpenStream(Write(content))); }
};

TEST_F(HexReader, EndRecordAloneLeavesTheAddress)
{
    reader.m_dwAddress = 0x1234;
    Open(":00000001FF");
    EXPECT_TRUE(reader.ReadNext());
    EXPECT_TRUE(reader.m_fIsEndOfFile);
    EXPECT_EQ(reader.m_dwAddress, 0x1234u);
}

TEST_F(HexReader, LinearOffsetAppliesToFollowingDataAndSurvivesPasses)
{
    Open(HexFile::Lines({":020000041D00DD", Record(0, 0x8000, {1, 2, 3}), HexFile::EndOfFile()}));
    ASSERT_TRUE(reader.ReadNext());
    EXPECT_FALSE(reader.m_fIsEndOfFile);
    EXPECT_EQ(reader.m_dwOffset, 0x1D000000u);
    EXPECT_EQ(reader.m_dwAddress, 0x1D008000u);
    EXPECT_EQ(reader.m_bcb, 3);

    // A second file with no address record of its own reads with the offset left behind.
    reader.bs.Close();
    Open(HexFile::Lines({Record(0, 0x8040, {9}), HexFile::EndOfFile()}));
    ASSERT_TRUE(reader.ReadNext());
    EXPECT_EQ(reader.m_dwAddress, 0x1D008040u);
}

TEST_F(HexReader, SegmentStartAndLinearStartRecordsAreReadThroughInOneCall)
{
    Open(HexFile::Lines({Record(2, 0, {0x12, 0x34}), Record(3, 0, {0, 0, 0, 0}), Record(5, 0, {1, 2, 3, 4}),
                         Record(0, 0x0010, {0xAB}), HexFile::EndOfFile()}));
    ASSERT_TRUE(reader.ReadNext());
    EXPECT_EQ(reader.m_dwAddress, 0x12340u + 0x10u);
    EXPECT_EQ(reader.m_abData[0], 0xAB);
    ASSERT_TRUE(reader.ReadNext());
    EXPECT_TRUE(reader.m_fIsEndOfFile);
}

TEST_F(HexReader, AnyLineEndBlankLinesAndLowerCase)
{
    const QByteArray records[] = {":020000041d00dd", Record(0, 0x8000, {1, 2, 3, 4}).toLower(), ":00000001ff"};
    for (const QByteArray& eol : {QByteArray("\r\n"), QByteArray("\n"), QByteArray("\r"), QByteArray("\n\n\r\n\r\r")}) {
        SCOPED_TRACE(eol.toHex().toStdString());
        QByteArray content = eol; // a blank line before the first record, too
        for (const QByteArray& r : records)
            content += r + eol;
        Open(content);
        ASSERT_TRUE(reader.ReadNext());
        EXPECT_EQ(reader.m_dwAddress, 0x1D008000u);
        EXPECT_EQ(reader.m_abData[3], 0x04);
        ASSERT_TRUE(reader.ReadNext());
        EXPECT_TRUE(reader.m_fIsEndOfFile);
        reader.bs.Close();
    }
    EXPECT_TRUE(StatusLines().isEmpty());
}

TEST_F(HexReader, LongRecordFillsIndex255AndShortOnesKeepTheRest)
{
    std::vector<std::uint8_t> full(255);
    for (int i = 0; i < 255; ++i)
        full[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
    const QByteArray longRecord = Record(0, 0, full);
    const auto checksum = static_cast<std::uint8_t>(longRecord.right(2).toUInt(nullptr, 16));
    Open(HexFile::Lines({longRecord, Record(0, 0x100, {0xEE, 0xFF}), HexFile::EndOfFile()}));
    ASSERT_TRUE(reader.ReadNext());
    EXPECT_EQ(reader.m_bcb, 255);
    EXPECT_EQ(reader.m_abData[254], 254);
    EXPECT_EQ(reader.m_abData[255], checksum);

    ASSERT_TRUE(reader.ReadNext());
    EXPECT_EQ(reader.m_bcb, 2);
    EXPECT_EQ(reader.m_abData[1], 0xFF);
    EXPECT_EQ(reader.m_abData[2], 0x10) << "the checksum byte follows the data";
    EXPECT_EQ(reader.m_abData[3], 3) << "entries after it keep the earlier record's bytes";
}

TEST_F(HexReader, EachFailureReportsOnceAndStopsReadingUntilReopened)
{
    struct Row {
        const char* name;
        QByteArray content;
        const char* status;   // expected status lines, '|' between them
        bool messageBox;
    };
    const Row rows[] = {
        {"no start character", "x00000001FF\r\n", "Expected start character \":\" not found", false},
        {"checksum", ":00000001FE\r\n", "Intel Hex checksum verification failed", false},
        {"unknown type", ":00000006FA\r\n", "Intel Hex file contains an unrecognized record type", false},
        {"bad digit", ":0100000G00FE\r\n", "Intel Hex checksum verification failed", true},
        {"cut in a record", ":10800000010203\r\n", "End File record was not found", false},
        {"no end record", ":0100000001FE\r\n", "End File record was not found", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        window->StatusField.SetText({});
        platform.calls.clear();
        Open(row.content);
        bool result = reader.ReadNext();
        // Only the file without an end record has a good record first.
        if (result)
            result = reader.ReadNext();
        EXPECT_FALSE(result);
        EXPECT_FALSE(reader.m_fIsReadOK);
        EXPECT_EQ(StatusLines().join('|'), QString::fromLatin1(row.status));
        EXPECT_EQ(platform.calls, row.messageBox ? QStringList{"MsgBox: ERROR: Bad character in BIN file"} : QStringList{});

        EXPECT_FALSE(reader.ReadNext()) << "no read after a failure";
        EXPECT_EQ(StatusLines().size(), 1);
        reader.bs.Close();
        Open(":00000001FF");
        EXPECT_TRUE(reader.ReadNext()) << "reopening clears the failure";
        reader.bs.Close();
    }
}

TEST_F(HexReader, VerifyPassesOnlyWellFormedFilesToTheirEnd)
{
    struct Row {
        const char* name;
        QByteArray content;
        bool passes;
    };
    const QByteArray data = Record(0, 0x10, {1, 2});
    const Row rows[] = {
        {"image", HexFile::Image(0x1D008000, 0x400), true},
        {"stops at the end record", HexFile::Lines({data, HexFile::EndOfFile()}) + "garbage", true},
        {"last record ends the stream", HexFile::Lines({data}, "\r\n") + data, true},
        {"no end record, trailing newline", HexFile::Lines({data}), false},
        {"empty file", "", false},
        {"bad record in the middle", HexFile::Lines({data, ":0100000001FF", HexFile::EndOfFile()}), false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(reader.Verify(Write(row.content)), row.passes) << row.name;
    EXPECT_FALSE(reader.bs.IsOpen());
}

TEST_F(HexReader, MissingFileFailsSilentlyAndValidateUsesTheFolder)
{
    EXPECT_FALSE(reader.Verify(dir.filePath("vexil9999.hex")));
    EXPECT_TRUE(StatusLines().isEmpty());
    EXPECT_TRUE(platform.calls.isEmpty());

    Write(HexFile::Image(0x1D008000, 0x100), QStringLiteral("vexil0113.hex"));
    globals.m_FolderPath = dir.path() + QLatin1Char('/');
    EXPECT_TRUE(reader.ValidateIntelHex(QStringLiteral("vexil0113.hex")));
    EXPECT_FALSE(reader.ValidateIntelHex(QStringLiteral("vexil0114.hex")));
}
