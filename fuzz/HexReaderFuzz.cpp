// Fuzz target for the Intel HEX reader and the flash image check built on it.
//
// Every input is read three ways (Verify's loop, the image check, ReadNext by
// hand) and held against a small independent reading of the same bytes, so a
// wrong answer fails as loudly as a memory error does.

#include "FlashImageCheck.h"
#include "MCULoader.h"
#include "Window1Device.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

namespace {

[[noreturn]] void Violated(const char* rule, int line)
{
    std::fprintf(stderr, "HexReaderFuzz.cpp:%d: invariant violated: %s\n", line, rule);
    std::abort();
}

#define HEX_FUZZ_CHECK(cond)              \
    do {                                  \
        if (!(cond))                      \
            Violated(#cond, __LINE__);    \
    } while (0)

// The input as the reader should see it: line ends dropped wherever they are,
// then one record after another, strictly.
struct Reference {
    struct DataRecord {
        std::optional<std::uint32_t> address; // unknown after an address record too short to hold one
        std::vector<std::uint8_t> bytes;
        std::size_t rawEnd = 0; // input offset just past its last character
    };
    std::vector<DataRecord> data; // in file order, up to the end record or the first fault
    bool endRecord = false;       // stopped at a well-formed end record
};

int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

Reference ReadReference(const std::uint8_t* input, std::size_t size)
{
    std::vector<char> text;
    std::vector<std::size_t> rawEnd;
    for (std::size_t i = 0; i < size; ++i) {
        if (input[i] == '\n' || input[i] == '\r')
            continue;
        text.push_back(static_cast<char>(input[i]));
        rawEnd.push_back(i + 1);
    }

    Reference ref;
    std::uint32_t offset = 0;
    bool offsetKnown = true;
    std::size_t pos = 0;
    for (;;) {
        if (pos >= text.size() || text[pos] != ':')
            return ref;
        // Byte i of the record body, or -1 when it is missing or not hexadecimal.
        auto byteAt = [&](std::size_t i) -> int {
            const std::size_t at = pos + 1 + 2 * i;
            if (at + 1 >= text.size())
                return -1;
            const int high = HexValue(text[at]);
            const int low = HexValue(text[at + 1]);
            return high < 0 || low < 0 ? -1 : high * 16 + low;
        };
        const int count = byteAt(0);
        if (count < 0)
            return ref;
        std::vector<std::uint8_t> body;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count) + 5; ++i) {
            const int value = byteAt(i);
            if (value < 0)
                return ref;
            body.push_back(static_cast<std::uint8_t>(value));
        }
        unsigned sum = 0;
        for (std::uint8_t b : body)
            sum += b;
        if (sum % 256 != 0)
            return ref;
        const std::uint32_t address16 = static_cast<std::uint32_t>(body[1] << 8 | body[2]);
        const std::vector<std::uint8_t> payload(body.begin() + 4, body.end() - 1);
        const std::size_t last = pos + 2 * body.size();
        pos = last + 1;
        switch (body[3]) {
        case 0:
            ref.data.push_back({offsetKnown ? std::optional<std::uint32_t>(offset + address16) : std::nullopt,
                                payload, rawEnd[last]});
            break;
        case 1:
            ref.endRecord = true;
            return ref;
        case 2:
        case 4:
            offsetKnown = payload.size() >= 2;
            if (offsetKnown)
                offset = static_cast<std::uint32_t>(payload[0] << 8 | payload[1]) << (body[3] == 2 ? 4 : 16);
            break;
        case 3:
        case 5:
            break;
        default:
            return ref;
        }
    }
}

// A quiet reader over the input, in the state Verify puts a fresh one in.
void OpenQuiet(MCULoader& reader, const std::uint8_t* data, std::size_t size)
{
    // Raw data, not a copy: a read past the input's last byte is then a sanitizer report.
    reader.bs.OpenBytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    reader.m_fIsReadOK = true;
    reader.m_fIsEndOfFile = false;
}

void CheckVerify(const std::uint8_t* data, std::size_t size, const Reference& ref)
{
    MCULoader reader(nullptr, nullptr);
    OpenQuiet(reader, data, size);
    const bool verified = reader.VerifyOpenStream();
    // A pass ends at the end record, or with a data record whose last digit is the input's last byte.
    bool expected = ref.endRecord;
    for (const auto& record : ref.data)
        expected = expected || record.rawEnd == size;
    HEX_FUZZ_CHECK(verified == expected);
    HEX_FUZZ_CHECK(!reader.bs.IsOpen());
}

void CheckReadNext(const std::uint8_t* data, std::size_t size, const Reference& ref)
{
    MCULoader reader(nullptr, nullptr);
    OpenQuiet(reader, data, size);
    // Every successful call consumes at least one 11-character record.
    const std::size_t bound = size / 11 + 2;
    std::size_t seen = 0;
    for (std::size_t calls = 0;; ++calls) {
        HEX_FUZZ_CHECK(calls <= bound);
        const std::uint32_t addressBefore = reader.m_dwAddress;
        if (!reader.ReadNext()) {
            HEX_FUZZ_CHECK(!reader.m_fIsReadOK);
            HEX_FUZZ_CHECK(!ref.endRecord);
            HEX_FUZZ_CHECK(seen == ref.data.size());
            // Once failed, the reader stays failed without reading on.
            HEX_FUZZ_CHECK(!reader.ReadNext());
            return;
        }
        HEX_FUZZ_CHECK(reader.m_fIsReadOK);
        if (reader.m_fIsEndOfFile) {
            HEX_FUZZ_CHECK(ref.endRecord && seen == ref.data.size());
            HEX_FUZZ_CHECK(reader.m_dwAddress == addressBefore);
            return;
        }
        HEX_FUZZ_CHECK(seen < ref.data.size());
        const auto& expected = ref.data[seen++];
        HEX_FUZZ_CHECK(std::size_t{reader.m_bcb} == expected.bytes.size());
        for (std::size_t i = 0; i < expected.bytes.size(); ++i)
            HEX_FUZZ_CHECK(reader.m_abData[i] == expected.bytes[i]);
        if (expected.address)
            HEX_FUZZ_CHECK(reader.m_dwAddress == *expected.address);
    }
}

void CheckImage(const std::uint8_t* data, std::size_t size, const Reference& ref, std::uint32_t windowStart,
                std::uint32_t windowEnd)
{
    MCULoader reader(nullptr, nullptr);
    OpenQuiet(reader, data, size);
    const FlashImageCheck::Result result = FlashImageCheck::RunOpen(reader, windowStart, windowEnd);
    const std::uint32_t windowSize = windowEnd - windowStart;

    HEX_FUZZ_CHECK(result.packets >= 0);
    HEX_FUZZ_CHECK(static_cast<std::uint64_t>(result.packets) * 16 <= windowSize);
    HEX_FUZZ_CHECK(result.windowFull == (static_cast<std::uint64_t>(result.packets) * 16 == windowSize));
    HEX_FUZZ_CHECK(!reader.bs.IsOpen());

    // Whether the reference knows every address the check could have looked at.
    bool addressesKnown = true;
    for (const auto& record : ref.data)
        addressesKnown = addressesKnown && record.address.has_value();

    switch (result.problem) {
    case FlashImageCheck::Problem::None: {
        // Sound means the load has all it needs: a full window.
        HEX_FUZZ_CHECK(result.windowFull);
        if (!addressesKnown)
            break;
        int packets = 0;
        for (const auto& record : ref.data) {
            if (*record.address < windowStart)
                continue;
            if (packets == result.packets) {
                // Past the counted packets only a full window may leave records unread.
                HEX_FUZZ_CHECK(result.windowFull);
                break;
            }
            HEX_FUZZ_CHECK(*record.address == windowStart + 16u * static_cast<std::uint32_t>(packets));
            HEX_FUZZ_CHECK(record.bytes.size() == 16);
            ++packets;
        }
        HEX_FUZZ_CHECK(packets == result.packets);
        break;
    }
    case FlashImageCheck::Problem::EndsEarly:
        // The end record came before the window was full; where it ends is where the packets stop.
        HEX_FUZZ_CHECK(ref.endRecord);
        HEX_FUZZ_CHECK(!result.windowFull);
        HEX_FUZZ_CHECK(result.expected == windowStart + 16u * static_cast<std::uint32_t>(result.packets));
        break;
    case FlashImageCheck::Problem::Unreadable:
        // The reference must also have run out before reaching an end record, and not past a full window.
        HEX_FUZZ_CHECK(!ref.endRecord);
        HEX_FUZZ_CHECK(!result.windowFull);
        break;
    case FlashImageCheck::Problem::WrongLength:
    case FlashImageCheck::Problem::Gap:
    case FlashImageCheck::Problem::Overlap: {
        HEX_FUZZ_CHECK(result.record >= 1 && static_cast<std::size_t>(result.record) <= ref.data.size());
        const auto& named = ref.data[static_cast<std::size_t>(result.record) - 1];
        HEX_FUZZ_CHECK(named.bytes.size() == static_cast<std::size_t>(result.length));
        HEX_FUZZ_CHECK(result.address >= windowStart);
        HEX_FUZZ_CHECK(result.expected == windowStart + 16u * static_cast<std::uint32_t>(result.packets));
        HEX_FUZZ_CHECK(!result.windowFull);
        if (named.address)
            HEX_FUZZ_CHECK(result.address == *named.address);
        if (result.problem == FlashImageCheck::Problem::Gap)
            HEX_FUZZ_CHECK(result.address > result.expected);
        else if (result.problem == FlashImageCheck::Problem::Overlap)
            HEX_FUZZ_CHECK(result.address < result.expected);
        else
            HEX_FUZZ_CHECK(result.address == result.expected && result.length != 16);
        break;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Reference ref = ReadReference(data, size);
    CheckVerify(data, size, ref);
    CheckReadNext(data, size, ref);
    CheckImage(data, size, ref, Window1Device::FLASH_WINDOW_START, Window1Device::FLASH_WINDOW_END);
    // A window of eight packets, so that a small input can fill it.
    CheckImage(data, size, ref, Window1Device::FLASH_WINDOW_START, Window1Device::FLASH_WINDOW_START + 0x80);
    return 0;
}
