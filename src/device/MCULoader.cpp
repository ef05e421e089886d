#include "MCULoader.h"

#include "Globals.h"
#include "PlatformServices.h"

namespace {

enum RecordType : std::uint8_t {
    Data = 0,
    EndOfFile = 1,
    ExtendedSegmentAddress = 2,
    StartSegmentAddress = 3,
    ExtendedLinearAddress = 4,
    StartLinearAddress = 5,
};

} // namespace

void MCULoader::Report(const QString& text)
{
    if (m_globals)
        m_globals->SetStatusText(text, false);
}

char MCULoader::EndOfStream()
{
    if (!m_atEnd)
        Report(QStringLiteral("End File record was not found"));
    m_atEnd = true;
    m_fIsReadOK = false;
    return '\0';
}

std::uint8_t MCULoader::BadCharacter()
{
    if (m_platform)
        m_platform->MsgBox(QStringLiteral("ERROR: Bad character in BIN file"));
    m_fIsReadOK = false;
    return 0;
}

bool MCULoader::ReadNext()
{
    m_atEnd = false;
    for (;;) {
        if (!m_fIsReadOK)
            return false;
        const char start = ReadChar();
        if (m_atEnd)
            return false;
        if (start != ':') {
            Report(QStringLiteral("Expected start character \":\" not found"));
            m_fIsReadOK = false;
            return false;
        }
        m_wCheckSum = 0;
        m_bcb = ReadByte();
        const std::uint16_t address = ReadWord();
        const std::uint8_t type = ReadByte();
        // The data, then the checksum byte in the entry after it.
        for (int i = 0; i <= m_bcb; ++i)
            m_abData[static_cast<std::size_t>(i)] = ReadByte();
        if (m_atEnd)
            return false;
        if ((m_wCheckSum & 0xFF) != 0) {
            Report(QStringLiteral("Intel Hex checksum verification failed"));
            m_fIsReadOK = false;
            return false;
        }
        switch (type) {
        case Data:
            m_dwAddress = m_dwOffset + address;
            break;
        case EndOfFile:
            m_fIsEndOfFile = true;
            break;
        case ExtendedSegmentAddress:
            m_dwOffset = static_cast<std::uint32_t>(m_abData[0] << 8 | m_abData[1]) << 4;
            break;
        case ExtendedLinearAddress:
            m_dwOffset = static_cast<std::uint32_t>(m_abData[0] << 8 | m_abData[1]) << 16;
            break;
        case StartSegmentAddress:
        case StartLinearAddress:
            break;
        default:
            Report(QStringLiteral("Intel Hex file contains an unrecognized record type"));
            m_fIsReadOK = false;
            break;
        }
        if (!m_fIsReadOK || m_fIsEndOfFile || type == Data)
            return m_fIsReadOK;
    }
}

bool MCULoader::OpenStream(const QString& path)
{
    if (!bs.Open(path))
        return false;
    m_fIsReadOK = true;
    m_fIsEndOfFile = false;
    return true;
}

bool MCULoader::VerifyOpenStream()
{
    bool result = false;
    for (;;) {
        result = ReadNext();
        if (!result || bs.AtEnd() || m_fIsEndOfFile)
            break;
    }
    bs.Close();
    return result;
}

bool MCULoader::Verify(const QString& path)
{
    // A missing (or unreadable) file fails without a status line.
    if (!OpenStream(path))
        return false;
    return VerifyOpenStream();
}

bool MCULoader::VerifyBytes(const QByteArray& bytes)
{
    bs.OpenBytes(bytes);
    m_fIsReadOK = true;
    m_fIsEndOfFile = false;
    return VerifyOpenStream();
}

bool MCULoader::ValidateIntelHex(const QString& fileName)
{
    return Verify((m_globals ? m_globals->m_FolderPath : QString()) + fileName);
}
