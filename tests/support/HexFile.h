#pragma once

#include "SampleFirmware.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

#include <cstdint>
#include <vector>

// Builders for Intel HEX test files.
namespace HexFile {

// One record line, without line end, with a correct checksum.
inline QByteArray Record(int type, std::uint16_t address, const std::vector<std::uint8_t>& data)
{
    return SampleFirmware::Record(type, address, data);
}

inline QByteArray Linear(std::uint16_t upper)
{
    return Record(4, 0, {static_cast<std::uint8_t>(upper >> 8), static_cast<std::uint8_t>(upper)});
}

inline QByteArray EndOfFile()
{
    return Record(1, 0, {});
}

// The lines joined with `eol` after each.
inline QByteArray Lines(const std::vector<QByteArray>& lines, const QByteArray& eol = "\r\n")
{
    QByteArray out;
    for (const QByteArray& line : lines)
        out += line + eol;
    return out;
}

// A firmware image of `bytes` bytes from `start` in 16-byte records, data
// byte i = (i * 7 + seed) & 0xFF, type 4 records where the upper half changes.
inline QByteArray Image(std::uint32_t start, std::uint32_t bytes, int seed = 0, bool withEnd = true)
{
    std::vector<QByteArray> lines;
    std::uint32_t upper = 0x10000; // none yet
    for (std::uint32_t a = start; a < start + bytes; a += 16) {
        if ((a >> 16) != upper) {
            upper = a >> 16;
            lines.push_back(Linear(static_cast<std::uint16_t>(upper)));
        }
        std::vector<std::uint8_t> data(16);
        for (std::uint32_t i = 0; i < 16; ++i)
            data[i] = static_cast<std::uint8_t>(((a - start + i) * 7 + static_cast<std::uint32_t>(seed)) & 0xFF);
        lines.push_back(Record(0, static_cast<std::uint16_t>(a & 0xFFFF), data));
    }
    if (withEnd)
        lines.push_back(EndOfFile());
    return Lines(lines);
}

inline QString Write(const QDir& dir, const QString& name, const QByteArray& content)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(content);
    return path;
}

} // namespace HexFile
