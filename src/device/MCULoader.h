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
    char ReadChar();
    std::uint8_t ReadByte();
    std::uint16_t ReadWord();
    std::uint8_t NibbleToBin(char c);

    // A whole pass over the file at `path`.
    bool Verify(const QString& path);
    // Verify of the file `fileName` in the firmware folder.
    bool ValidateIntelHex(const QString& fileName);

    // Opens `bs` on the file for a caller that pulls records itself.
    bool OpenStream(const QString& path);
    // Runs Verify's loop over an already open `bs`, then closes it.
    bool VerifyOpenStream();

private:
    void Report(const QString& text);

    Globals* m_globals;
    PlatformServices* m_platform;
    // The stream ran out inside this ReadNext; its message is given once.
    bool m_atEnd = false;
};
