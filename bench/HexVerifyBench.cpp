#include "MCULoader.h"
#include "Window1Device.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

namespace {

QByteArray Record(std::uint8_t type, std::uint16_t address, const std::vector<std::uint8_t>& data)
{
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(address >> 8),
                                    static_cast<std::uint8_t>(address), type};
    bytes.insert(bytes.end(), data.begin(), data.end());
    std::uint8_t sum = 0;
    for (std::uint8_t b : bytes)
        sum = static_cast<std::uint8_t>(sum + b);
    bytes.push_back(static_cast<std::uint8_t>(-sum));
    QByteArray line(":");
    line += QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())).toHex().toUpper();
    return line + "\r\n";
}

// A full flash window of random data in 16-byte records, as a real firmware
// file has it: 14,336 data records, a type 4 record wherever the upper half
// of the address changes.
QByteArray FirmwareImage()
{
    std::mt19937 random(0x1D008000);
    QByteArray image;
    std::uint32_t upper = ~0u;
    for (std::uint32_t address = Window1Device::FLASH_WINDOW_START; address < Window1Device::FLASH_WINDOW_END;
         address += 16) {
        if (address >> 16 != upper) {
            upper = address >> 16;
            image += Record(4, 0, {static_cast<std::uint8_t>(upper >> 8), static_cast<std::uint8_t>(upper)});
        }
        std::vector<std::uint8_t> data(16);
        for (auto& b : data)
            b = static_cast<std::uint8_t>(random());
        image += Record(0, static_cast<std::uint16_t>(address), data);
    }
    return image + Record(1, 0, {});
}

void BM_MCULoaderVerify(benchmark::State& state, const QString& path, qint64 size)
{
    for (auto _ : state) {
        MCULoader reader(nullptr, nullptr);
        if (!reader.Verify(path)) {
            state.SkipWithError("Verify rejected the image");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * size);
}

// The same file through an independent Intel HEX tool, process start included,
// as the yardstick for the figure above.
void BM_SrecInfo(benchmark::State& state, const QString& path, qint64 size)
{
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("srec_info"));
    if (tool.isEmpty()) {
        state.SkipWithError("srec_info not found (package srecord)");
        return;
    }
    for (auto _ : state) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(tool, {path, QStringLiteral("-Intel")});
        if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
            state.SkipWithError("srec_info failed on the image");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * size);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("firmware.hex"));
    QFile file(path);
    if (!dir.isValid() || !file.open(QIODevice::WriteOnly) || file.write(FirmwareImage()) < 0) {
        std::fprintf(stderr, "cannot write the image into a temporary folder\n");
        return 1;
    }
    file.close();
    const qint64 size = QFileInfo(path).size();

    // Wall time: srec_info's work happens in another process, outside this one's CPU time.
    benchmark::RegisterBenchmark("BM_MCULoaderVerify", BM_MCULoaderVerify, path, size)->UseRealTime();
    benchmark::RegisterBenchmark("BM_SrecInfo", BM_SrecInfo, path, size)->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
