#include "SampleFirmware.h"

#include <QDir>
#include <QSaveFile>

QByteArray SampleFirmware::Record(int type, std::uint16_t address, const std::vector<std::uint8_t>& data)
{
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(address >> 8),
                                    static_cast<std::uint8_t>(address), static_cast<std::uint8_t>(type)};
    bytes.insert(bytes.end(), data.begin(), data.end());
    std::uint8_t sum = 0;
    for (std::uint8_t b : bytes)
        sum = static_cast<std::uint8_t>(sum + b);
    bytes.push_back(static_cast<std::uint8_t>(-sum));
    return ":" + QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())).toHex().toUpper();
}

QByteArray SampleFirmware::Image(int seed)
{
    const auto Line = [](int type, std::uint16_t address, const std::vector<std::uint8_t>& data) {
        return Record(type, address, data) + "\r\n";
    };
    constexpr std::uint32_t start = 0x1D008000;
    constexpr std::uint32_t end = 0x1D040000;
    QByteArray image;
    std::uint32_t upper = 0x10000;
    for (std::uint32_t a = start; a < end; a += 16) {
        if ((a >> 16) != upper) {
            upper = a >> 16;
            image += Line(4, 0, {static_cast<std::uint8_t>(upper >> 8), static_cast<std::uint8_t>(upper)});
        }
        std::vector<std::uint8_t> data(16);
        for (std::uint32_t i = 0; i < 16; ++i)
            data[i] = static_cast<std::uint8_t>((a + i) * 31 + static_cast<std::uint32_t>(seed));
        image += Line(0, static_cast<std::uint16_t>(a), data);
    }
    // A boot-configuration record after the program, which a load never reaches.
    image += Line(4, 0, {0x1F, 0xC0});
    image += Line(0, 0x2FF0, {0xFF, 0xFF, 0xFF, 0x7F});
    return image + Line(1, 0, {});
}

bool SampleFirmware::WriteTo(const QString& folder, int revision)
{
    QSaveFile file(QDir(folder).filePath(QStringLiteral("vexil%1.hex").arg(revision, 4, 10, QLatin1Char('0'))));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(Image(revision));
    return file.commit();
}
