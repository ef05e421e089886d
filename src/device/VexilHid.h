#pragma once

#include "HidBackend.h"
#include "ProgramFrame.h"
#include "ProgramPacket.h"

#include <cstdint>
#include <memory>

// The USB HID link to the device's bootloader: one identity, fixed-size
// reports, a checksum over the packet.
class VexilHid {
public:
    static constexpr unsigned short VendorId = 0x04D8;
    static constexpr unsigned short ProductId = 0xF15D;
    // The longest a single Read waits for an input report.
    static constexpr int ReadTimeoutMs = 100;

    explicit VexilHid(HidBackend& backend) : m_backend(backend) {}

    bool Open();
    void Close();
    bool IsOpen() const { return m_device != nullptr; }
    // Fills the packet's checksum, then sends the output report.
    bool Write(ProgramFrame& frame);
    // Waits up to ReadTimeoutMs for one input report; returns as soon as one is there.
    bool Read(ProgramPacket& packet);

    static std::uint8_t AccumulateChecksum(const ProgramPacket& packet);
    static void SetChecksum(ProgramPacket& packet);

    std::unique_ptr<HidDevice> m_device;

private:
    HidBackend& m_backend;
};
