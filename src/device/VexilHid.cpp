#include "VexilHid.h"

bool VexilHid::Open()
{
    Close();
    if (m_backend.Init() != 0)
        return false;
    m_device = m_backend.Open(VendorId, ProductId);
    if (!IsOpen())
        return false;
    m_device->SetNonblocking(1);
    return true;
}

void VexilHid::Close()
{
    m_device.reset();
}

bool VexilHid::Write(ProgramFrame& frame)
{
    SetChecksum(frame.pkt);
    if (!IsOpen())
        return false;
    const auto report = frame.pkt.ToOutputReport(frame.rpt);
    return m_device->Write(report.data(), report.size()) == static_cast<int>(report.size());
}

bool VexilHid::Read(ProgramPacket& packet)
{
    if (!IsOpen())
        return false;
    unsigned char report[ProgramPacket::InputReportSize] = {};
    // An error and a time-out alike deliver nothing.
    if (m_device->ReadTimeout(report, sizeof report, ReadTimeoutMs) <= 0)
        return false;
    packet = ProgramPacket::FromInputReport(report);
    return true;
}

std::uint8_t VexilHid::AccumulateChecksum(const ProgramPacket& packet)
{
    // The packet's 25 bytes as they stand in the output report after the report number.
    const auto report = packet.ToOutputReport(0);
    std::uint8_t sum = 0;
    for (std::size_t i = 1; i <= 25; ++i)
        sum = static_cast<std::uint8_t>(sum + report[i]);
    return sum;
}

void VexilHid::SetChecksum(ProgramPacket& packet)
{
    packet.cksm = 0;
    packet.cksm = static_cast<std::uint8_t>(-AccumulateChecksum(packet));
}
