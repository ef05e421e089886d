#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// One packet of the bootloader protocol, as the host and the device see it.
class ProgramPacket {
public:
    static constexpr std::size_t DataSize = 16;
    // Output report: report number, then the packet, then zero padding.
    static constexpr std::size_t OutputReportSize = 33;
    // Input report: the packet without a report number, then padding.
    static constexpr std::size_t InputReportSize = 32;

    char cmd = 0;
    std::uint8_t pkno = 0;
    std::uint8_t rw = 0;
    std::int32_t addr = 0;
    std::array<std::uint8_t, DataSize> data{};
    std::uint8_t cksm = 0;
    std::uint8_t status = 0;

    // Lays the packet out behind the report number byte `rpt`.
    std::array<std::uint8_t, OutputReportSize> ToOutputReport(std::uint8_t rpt) const;
    // Fills every field from a 32-byte input report.
    static ProgramPacket FromInputReport(const std::uint8_t* report);
};
