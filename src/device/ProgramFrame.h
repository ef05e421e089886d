#pragma once

#include "ProgramPacket.h"

#include <cstdint>

// An output report: the HID report number (never assigned, so 0) and the packet.
class ProgramFrame {
public:
    std::uint8_t rpt = 0;
    ProgramPacket pkt;
};
