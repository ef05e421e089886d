#include "FlashImageCheck.h"

namespace {

QString Hex(std::uint32_t value)
{
    return QStringLiteral("0x") + QString::number(value, 16).toUpper();
}

} // namespace

QString FlashImageCheck::Result::Describe() const
{
    const QString at = QStringLiteral("data record %1 at %2").arg(record).arg(Hex(address));
    switch (problem) {
    case Problem::None:
        return QStringLiteral("Firmware image is sound: %1 packets").arg(packets);
    case Problem::Unreadable:
        return QStringLiteral("Firmware file refused: it could not be read to the end of its image");
    case Problem::WrongLength:
        return QStringLiteral("Firmware file refused: %1 holds %2 bytes, not 16").arg(at).arg(length);
    case Problem::Gap:
        return QStringLiteral("Firmware file refused: %1 leaves a gap after %2").arg(at, Hex(expected));
    case Problem::Overlap:
        return QStringLiteral("Firmware file refused: %1 overlaps or comes out of order before %2").arg(at, Hex(expected));
    case Problem::EndsEarly:
        return QStringLiteral("Firmware file refused: its image ends at %1, before the flash window ends at %2")
            .arg(Hex(expected), Hex(windowEnd));
    }
    return {};
}

FlashImageCheck::Result FlashImageCheck::Run(const MCULoader& reader, const QByteArray& bytes,
                                             std::uint32_t windowStart, std::uint32_t windowEnd)
{
    MCULoader quiet(nullptr, nullptr);
    quiet.m_dwOffset = reader.m_dwOffset;
    quiet.m_dwAddress = reader.m_dwAddress;
    quiet.bs.OpenBytes(bytes);
    quiet.m_fIsReadOK = true;
    quiet.m_fIsEndOfFile = false;
    return RunOpen(quiet, windowStart, windowEnd);
}

FlashImageCheck::Result FlashImageCheck::RunOpen(MCULoader& quietReader, std::uint32_t windowStart,
                                                 std::uint32_t windowEnd)
{
    Result result;
    result.windowEnd = windowEnd;
    std::uint32_t counter = windowStart;
    int record = 0;
    // The load's loop: stop at a full window, at the end record, or at a read failure.
    while (counter < windowEnd && !quietReader.m_fIsEndOfFile) {
        if (!quietReader.ReadNext()) {
            result.problem = Problem::Unreadable;
            break;
        }
        if (quietReader.m_fIsEndOfFile)
            break;
        ++record;
        const std::uint32_t address = quietReader.m_dwAddress;
        if (address < windowStart)
            continue;
        result.record = record;
        result.address = address;
        result.expected = counter;
        result.length = quietReader.m_bcb;
        if (address > counter) {
            result.problem = Problem::Gap;
            break;
        }
        if (address < counter) {
            result.problem = Problem::Overlap;
            break;
        }
        if (quietReader.m_bcb != 16) {
            result.problem = Problem::WrongLength;
            break;
        }
        counter += 16;
        ++result.packets;
    }
    result.windowFull = counter >= windowEnd;
    if (result.problem == Problem::None && !result.windowFull) {
        result.problem = Problem::EndsEarly;
        result.expected = counter;
    }
    quietReader.bs.Close();
    return result;
}
