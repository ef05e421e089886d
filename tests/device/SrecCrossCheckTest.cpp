#include "HexFile.h"
#include "MCULoader.h"

#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <map>
#include <random>

// What the reader yields must be what an independent Intel HEX tool reads from the same file.
namespace {

using Memory = std::map<std::uint32_t, std::uint8_t>;

// Random records of random lengths, with gaps, in mixed case and line ends,
// each block behind a linear or a segment address record and a start record.
QByteArray RandomImage(unsigned seed)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    QByteArray out;
    auto add = [&](const QByteArray& line) { out += (pick(0, 1) ? line.toLower() : line) + (pick(0, 1) ? "\n" : "\r\n"); };
    for (int block = 1; block <= 6; ++block) {
        // Distinct 64 KiB blocks: odd ones behind a segment base, even ones behind a linear one.
        const bool segment = block % 2 == 1;
        const int base = segment ? (block << 12) + pick(0, 0xF) : (block << 8) + pick(0, 0xFF);
        add(HexFile::Record(segment ? 2 : 4, 0, {static_cast<std::uint8_t>(base >> 8), static_cast<std::uint8_t>(base)}));
        add(HexFile::Record(segment ? 3 : 5, 0, {1, 2, 3, 4}));
        for (int address = pick(0, 0x4000), n = pick(5, 40); n > 0 && address < 0xFF00; --n) {
            std::vector<std::uint8_t> data(static_cast<std::size_t>(pick(1, 32)));
            for (auto& b : data)
                b = static_cast<std::uint8_t>(pick(0, 255));
            add(HexFile::Record(0, static_cast<std::uint16_t>(address), data));
            address += static_cast<int>(data.size()) + (pick(0, 3) == 0 ? pick(1, 300) : 0);
        }
    }
    add(HexFile::EndOfFile());
    return out;
}

Memory ReadWithSrecCat(const QString& path)
{
    QProcess tool;
    tool.start(QStringLiteral("srec_cat"), {path, "-Intel", "-o", "-", "-VMem", "8"});
    EXPECT_TRUE(tool.waitForFinished(10000)) << "srec_cat (package srecord) is needed; scripts/setup-deps.sh installs it";
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    Memory memory;
    for (const QByteArray& line : tool.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        std::uint32_t address = fields[0].mid(1).toUInt(nullptr, 16);
        for (qsizetype i = 1; line.startsWith('@') && i < fields.size(); ++i)
            memory[address++] = static_cast<std::uint8_t>(fields[i].toUInt(nullptr, 16));
    }
    return memory;
}

} // namespace

TEST(SrecCrossCheck, ReaderYieldsTheSameBytesAsSrecCat)
{
    QTemporaryDir dir;
    for (unsigned seed = 1; seed <= 6; ++seed) {
        const QString path = HexFile::Write(QDir(dir.path()), QStringLiteral("image%1.hex").arg(seed), RandomImage(seed));
        MCULoader reader(nullptr, nullptr);
        ASSERT_TRUE(reader.OpenStream(path));
        Memory ours;
        while (reader.ReadNext() && !reader.m_fIsEndOfFile)
            for (int i = 0; i < reader.m_bcb; ++i)
                ours[reader.m_dwAddress + static_cast<std::uint32_t>(i)] = reader.m_abData[static_cast<std::size_t>(i)];
        EXPECT_GT(ours.size(), 1000u) << seed;
        EXPECT_TRUE(ours == ReadWithSrecCat(path)) << seed;
    }
}
