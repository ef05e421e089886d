#pragma once

#include "MCULoader.h"

#include <QString>

#include <cstdint>

// Decides, before anything is erased, whether the records a load would send
// form one unbroken image: every data record at or above the window start,
// until the window is full, holds exactly 16 bytes at the next address.
// Records below the window are skipped by the load and ignored here; records
// after a full window are never read by the load and never read here. An image
// that ends before the window is full is refused too: the device would be left
// erased, since the completion packet is only sent for a full window.
class FlashImageCheck {
public:
    enum class Problem { None, Unreadable, WrongLength, Gap, Overlap, EndsEarly };

    struct Result {
        Problem problem = Problem::None;
        int record = 0;                // 1-based number of the offending record in the file
        std::uint32_t address = 0;     // its address
        std::uint32_t expected = 0;    // the address the load was at (for EndsEarly: where the image ends)
        std::uint32_t windowEnd = 0;   // the first address past the window
        int length = 0;                // its byte count
        int packets = 0;               // records the load would send
        bool windowFull = false;       // the image reaches the window's end

        bool Sound() const { return problem == Problem::None; }
        // One line naming the first offending record, for the status log.
        QString Describe() const;
    };

    // Reads the file's `bytes` quietly with the offsets `reader` would start
    // from, so the check sees the same addresses as the load that follows it.
    static Result Run(const MCULoader& reader, const QByteArray& bytes, std::uint32_t windowStart,
                      std::uint32_t windowEnd);
    // The same over an already open quiet reader.
    static Result RunOpen(MCULoader& quietReader, std::uint32_t windowStart, std::uint32_t windowEnd);
};
