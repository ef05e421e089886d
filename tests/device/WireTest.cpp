#include "ProgramFrame.h"
#include "VexilHid.h"

#include <QByteArray>
#include <gtest/gtest.h>

// The 33 bytes of each output report, checksum included, as the device must receive them.
TEST(Wire, OutputReportBytes)
{
    // With a non-zero pkno the data bytes are 1 to 16.
    struct Row { char cmd; std::uint8_t pkno; std::uint32_t addr; std::uint8_t status; const char* hex; };
    const Row rows[] = {
        {'U', 0, 0, 0, "005500000000000000000000000000000000000000000000ab0000000000000000"},
        {'!', 3, 0x1D008000, 0, "002103000080001d0102030405060708090a0b0c0d0e0f10b70000000000000000"},
        {'E', 0, 0, 'A', "0045000000000000000000000000000000000000000000007a4100000000000000"}, // status is summed too
    };
    for (const Row& row : rows) {
        ProgramFrame frame;
        frame.pkt.cmd = row.cmd;
        frame.pkt.pkno = row.pkno;
        frame.pkt.addr = static_cast<std::int32_t>(row.addr);
        frame.pkt.status = row.status;
        for (std::size_t i = 0; row.pkno != 0 && i < frame.pkt.data.size(); ++i)
            frame.pkt.data[i] = static_cast<std::uint8_t>(i + 1);
        VexilHid::SetChecksum(frame.pkt);
        const auto report = frame.pkt.ToOutputReport(frame.rpt);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(report.data()), report.size()).toHex().toStdString(), row.hex);
    }
}
