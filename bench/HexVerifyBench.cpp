#include "HexFile.h"
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
#include <vector>

namespace {

// A full flash window in 16-byte records, as a real firmware file has it:
// 14,336 data records and a type 4 record wherever the upper half of the address changes.
QByteArray SampleImage()
{
    return HexFile::Image(Window1Device::FLASH_WINDOW_START,
                          Window1Device::FLASH_WINDOW_END - Window1Device::FLASH_WINDOW_START);
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
    if (!dir.isValid() || !file.open(QIODevice::WriteOnly) || file.write(SampleImage()) < 0) {
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
