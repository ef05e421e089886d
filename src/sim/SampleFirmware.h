#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

// A firmware file for the simulated device: a full flash window of 16-byte
// records behind extended address records, as a real file is laid out.
class SampleFirmware {
public:
    static QByteArray Image(int seed = 0);
    // One Intel HEX record line, upper-case digits, correct checksum, no line end.
    static QByteArray Record(int type, std::uint16_t address, const std::vector<std::uint8_t>& data);
    // Writes "vexil<revision as four digits>.hex" into `folder`; false on a write error.
    static bool WriteTo(const QString& folder, int revision);
};
