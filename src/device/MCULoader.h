#pragma once

#include "BinaryStream.h"

#include <QString>

#include <array>
#include <cstdint>

class Globals;
class PlatformServices;

// Reads an Intel HEX firmware file one record at a time. Keeps only the
// current record; offsets survive from one pass to the next, as the load
// relies on reading the file the same way its validation did.
class MCULoader {
public:
    // Messages go to the status log and the platform's message box; a loader
    // without them (nullptr) reads quietly.
    MCULoader(Globals* globals, PlatformServices* platform) : m_globals(globals), m_platform(platform) {}

    BinaryStream bs;
    std::uint16_t m_wCheckSum = 0;
    bool m_fIsReadOK = false;
    std::uint32_t m_dwAddress = 0;
    std::uint8_t m_bcb = 0;
    std::array<std::uint8_t, 256> m_abData{};
    std::uint32_t m_dwOffset = 0;
    bool m_fIsEndOfFile = false;

    // Reads up to the next data record or the end-of-file record.
    bool ReadNext();

    // The next character that is not LF or CR; '\0' once the stream has ended.
    // These run once per character of a file, so they stay inline.
    char ReadChar()
    {
        char c = 0;
        do {
            if (!bs.ReadByte(c))
                return EndOfStream();
        } while (c == '\n' || c == '\r');
        return c;
    }

    std::uint8_t ReadByte()
    {
        const char high = ReadChar();
        const char low = ReadChar();
        // Past the end there is nothing to convert, and no bad character to show.
        if (m_atEnd)
            return 0;
        const auto value = static_cast<std::uint8_t>(NibbleToBin(high) << 4 | NibbleToBin(low));
        m_wCheckSum = static_cast<std::uint16_t>(m_wCheckSum + value);
        return value;
    }

    std::uint16_t ReadWord()
    {
        const std::uint8_t high = ReadByte();
        return static_cast<std::uint16_t>(high << 8 | ReadByte());
    }

    std::uint8_t NibbleToBin(char c)
    {
        const std::uint8_t value = HexValue[static_cast<unsigned char>(c)];
        return value != NotHex ? value : BadCharacter();
    }

    // A whole pass over the file at `path`.
    bool Verify(const QString& path);
    // Verify of the file `fileName` in the firmware folder.
    bool ValidateIntelHex(const QString& fileName);
    // A whole pass over a file already read into memory.
    bool VerifyBytes(const QByteArray& bytes);

    // Opens `bs` on the file for a caller that pulls records itself.
    bool OpenStream(const QString& path);
    // Runs Verify's loop over an already open `bs`, then closes it.
    bool VerifyOpenStream();

private:
    static constexpr std::uint8_t NotHex = 0xFF;
    static constexpr std::array<std::uint8_t, 256> HexValue = [] {
        std::array<std::uint8_t, 256> table{};
        table.fill(NotHex);
        for (int i = 0; i < 10; ++i)
            table[static_cast<std::size_t>('0' + i)] = static_cast<std::uint8_t>(i);
        for (int i = 0; i < 6; ++i) {
            table[static_cast<std::size_t>('a' + i)] = static_cast<std::uint8_t>(10 + i);
            table[static_cast<std::size_t>('A' + i)] = static_cast<std::uint8_t>(10 + i);
        }
        return table;
    }();

    void Report(const QString& text);
    char EndOfStream();
    std::uint8_t BadCharacter();

    Globals* m_globals;
    PlatformServices* m_platform;
    // The stream ran out inside this ReadNext; its message is given once.
    bool m_atEnd = false;
};
