#include "HexFile.h"
#include "MCULoader.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

// What the reader yields must be what an independent Intel HEX tool reads
// from the same file.
namespace {

using Memory = std::map<std::uint32_t, std::uint8_t>;

// A file of random records: linear and segment address records, random
// lengths and gaps, mixed case and line ends. Returns the file and its memory.
QByteArray RandomImage(unsigned seed)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::vector<QByteArray> lines;
    std::vector<std::uint32_t> starts; // each block spans 64 KiB from its start; none may overlap
    for (int block = 0; block < 6; ++block) {
        const bool segment = pick(0, 2) == 0;
        std::uint16_t base = 0;
        std::uint32_t start = 0;
        do {
            base = static_cast<std::uint16_t>(segment ? pick(0, 0xFFFF) : pick(0x10, 0xFFFF));
            start = segment ? std::uint32_t(base) << 4 : std::uint32_t(base) << 16;
        } while (std::any_of(starts.begin(), starts.end(), [start](std::uint32_t s) {
            return start < s + 0x10000 && s < start + 0x10000;
        }));
        starts.push_back(start);
        lines.push_back(HexFile::Record(segment ? 2 : 4, 0, {static_cast<std::uint8_t>(base >> 8), static_cast<std::uint8_t>(base)}));
        if (pick(0, 3) == 0)
            lines.push_back(HexFile::Record(pick(0, 1) ? 3 : 5, 0, {1, 2, 3, 4}));
        int address = pick(0, 0x4000);
        for (int n = pick(5, 60); n > 0; --n) {
            const int length = pick(1, 32);
            if (address + length > 0x10000)
                break;
            std::vector<std::uint8_t> data(static_cast<std::size_t>(length));
            for (auto& b : data)
                b = static_cast<std::uint8_t>(pick(0, 255));
            QByteArray line = HexFile::Record(0, static_cast<std::uint16_t>(address), data);
            lines.push_back(pick(0, 1) ? line.toLower() : line);
            address += length + (pick(0, 3) == 0 ? pick(1, 300) : 0);
        }
    }
    lines.push_back(HexFile::EndOfFile());
    QByteArray out;
    for (const QByteArray& line : lines)
        out += line + (pick(0, 1) ? QByteArray("\n") : QByteArray("\r\n")); // the other tool takes no lone CR
    return out;
}

Memory ReadWithLoader(const QString& path)
{
    Memory memory;
    MCULoader reader(nullptr, nullptr);
    EXPECT_TRUE(reader.OpenStream(path));
    while (reader.ReadNext() && !reader.m_fIsEndOfFile)
        for (int i = 0; i < reader.m_bcb; ++i)
            memory[reader.m_dwAddress + static_cast<std::uint32_t>(i)] = reader.m_abData[static_cast<std::size_t>(i)];
    EXPECT_TRUE(reader.m_fIsEndOfFile);
    return memory;
}

Memory ReadWithSrecCat(const QString& path)
{
    QProcess tool;
    tool.start(QStringLiteral("srec_cat"), {path, QStringLiteral("-Intel"), QStringLiteral("-o"), QStringLiteral("-"),
                                            QStringLiteral("-VMem"), QStringLiteral("8")});
    EXPECT_TRUE(tool.waitForFinished(10000));
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    Memory memory;
    for (const QByteArray& line : tool.readAllStandardOutput().split('\n')) {
        if (!line.startsWith('@'))
            continue;
        const QList<QByteArray> fields = line.simplified().split(' ');
        std::uint32_t address = fields[0].mid(1).toUInt(nullptr, 16);
        for (qsizetype i = 1; i < fields.size(); ++i)
            memory[address++] = static_cast<std::uint8_t>(fields[i].toUInt(nullptr, 16));
    }
    return memory;
}

} // namespace

TEST(SrecCrossCheck, ReaderYieldsTheSameBytesAsSrecCat)
{
    ASSERT_FALSE(QStandardPaths::findExecutable(QStringLiteral("srec_cat")).isEmpty())
        << "srec_cat (package srecord) is needed; scripts/setup-deps.sh installs it";
    QTemporaryDir dir;
    for (unsigned seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        const QString path = HexFile::Write(QDir(dir.path()), QStringLiteral("image%1.hex").arg(seed), RandomImage(seed));
        const Memory ours = ReadWithLoader(path);
        const Memory theirs = ReadWithSrecCat(path);
        ASSERT_FALSE(ours.empty());
        EXPECT_EQ(ours.size(), theirs.size());
        EXPECT_TRUE(ours == theirs);
    }
    const QString firmware = HexFile::Write(QDir(dir.path()), QStringLiteral("firmware.hex"),
                                            HexFile::Image(0x1D008000, 0x38000));
    const Memory ours = ReadWithLoader(firmware);
    EXPECT_EQ(ours.size(), 0x38000u);
    EXPECT_TRUE(ours == ReadWithSrecCat(firmware));
}
