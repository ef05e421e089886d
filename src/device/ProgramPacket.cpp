#include "ProgramPacket.h"

#include <algorithm>

namespace {

void PutLe32(std::uint8_t* out, std::int32_t value)
{
    const auto u = static_cast<std::uint32_t>(value);
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<std::uint8_t>(u >> (8 * i));
}

std::int32_t GetLe32(const std::uint8_t* in)
{
    std::uint32_t u = 0;
    for (int i = 0; i < 4; ++i)
        u |= static_cast<std::uint32_t>(in[i]) << (8 * i);
    return static_cast<std::int32_t>(u);
}

} // namespace

std::array<std::uint8_t, ProgramPacket::OutputReportSize> ProgramPacket::ToOutputReport(std::uint8_t rpt) const
{
    std::array<std::uint8_t, OutputReportSize> out{};
    out[0] = rpt;
    out[1] = static_cast<std::uint8_t>(cmd);
    out[2] = pkno;
    out[3] = rw;
    PutLe32(&out[4], addr);
    std::copy(data.begin(), data.end(), out.begin() + 8);
    out[24] = cksm;
    out[25] = status;
    return out;
}

ProgramPacket ProgramPacket::FromInputReport(const std::uint8_t* report)
{
    ProgramPacket p;
    p.cmd = static_cast<char>(report[0]);
    p.pkno = report[1];
    p.rw = report[2];
    p.addr = GetLe32(&report[3]);
    std::copy(report + 7, report + 7 + DataSize, p.data.begin());
    p.cksm = report[23];
    p.status = report[24];
    return p;
}
