#include "BenchSupport.h"
#include "HexFile.h"
#include "MCULoader.h"
#include "Window1Device.h"

#include <QCoreApplication>
#include <QElapsedTimer>
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

// The reader's whole pass, and beside it, pass for pass, an independent Intel
// HEX tool on the same file, process start included, as the yardstick.
void BM_MCULoaderVerify(benchmark::State& state, const QString& path, qint64 size)
{
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("srec_info"));
    if (tool.isEmpty()) {
        state.SkipWithError("srec_info not found (package srecord)");
        return;
    }
    const auto srecInfo = [&] {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(tool, {path, QStringLiteral("-Intel")});
        return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    };
    MCULoader warm(nullptr, nullptr);
    if (!warm.Verify(path) || !srecInfo()) {
        state.SkipWithError("the warm-up pass failed");
        return;
    }
    PeerTimes times;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        MCULoader reader(nullptr, nullptr);
        const bool read = reader.Verify(path);
        times.ours.push_back(timer.nsecsElapsed() / 1e9);
        timer.restart();
        const bool peer = srecInfo();
        times.peer.push_back(timer.nsecsElapsed() / 1e9);
        if (!read || !peer) {
            state.SkipWithError(read ? "srec_info failed on the image" : "Verify rejected the image");
            return;
        }
        state.SetIterationTime(times.ours.back());
    }
    state.counters["bytes_per_second"] = static_cast<double>(size) / Median(times.ours);
    state.counters["srec_info_ms"] = Median(times.peer) * 1000;
    state.counters["ratio_vs_srec_info"] = times.Ratio();
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

    benchmark::RegisterBenchmark("BM_MCULoaderVerify", BM_MCULoaderVerify, path, size)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(Runs(30));
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
