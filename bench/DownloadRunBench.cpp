// A whole download run against vsftpd on 127.0.0.1: log-on, change directory,
// name listing, a firmware file of 14,336 records, its verification, the
// release notes and the log-off, with the folder and device checks around it
// (on the simulated device). In the same run curl fetches the same two files in
// one process; the figures are both times and their ratio.

#include "BenchSupport.h"
#include "FirmwareDownload.h"
#include "FtpServers.h"
#include "ManualClock.h"
#include "SampleFirmware.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "Window1Firmware.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

void BM_DownloadRun(benchmark::State& state)
{
    RealFtpServer server(RealFtpServer::Kind::Vsftpd);
    const QString served = server.RootPath() + QStringLiteral("/Vexil/firmware");
    QDir().mkpath(served);
    QFile firmware(served + QStringLiteral("/vexil0112.hex"));
    QFile notes(served + QStringLiteral("/vexilfwnotes.rtf"));
    const QByteArray image = SampleFirmware::Image();
    QString error;
    if (!firmware.open(QIODevice::WriteOnly) || firmware.write(image) != image.size()
        || !notes.open(QIODevice::WriteOnly) || notes.write("{\\rtf1 Release notes}") <= 0) {
        state.SkipWithError("cannot make the served files");
        return;
    }
    firmware.close();
    notes.close();
    if (!server.Start(&error)) {
        state.SkipWithError(error.toStdString().c_str());
        return;
    }
    QTemporaryDir folder;
    ManualClock clock;
    SimulatedVexil sim{clock};
    VexilHid hid{sim};
    Globals globals;
    ScriptedPlatformServices platform;
    Window1Firmware window{globals, clock, platform, hid};
    PushButton button;
    FirmwareDownload download{window, button};
    globals.m_FolderPath = folder.path() + QLatin1Char('/');
    window.mStartup = false;
    download.SetServer(QStringLiteral("127.0.0.1"), server.Port());
    const QString base = QStringLiteral("ftp://127.0.0.1:%1/Vexil/firmware/").arg(server.Port());

    const QStringList curlArguments{QStringLiteral("-s"), QStringLiteral("-o"), folder.filePath(QStringLiteral("curl.hex")),
                                    base + QStringLiteral("vexil0112.hex"), QStringLiteral("-o"),
                                    folder.filePath(QStringLiteral("curl.rtf")), base + QStringLiteral("vexilfwnotes.rtf")};
    const auto run = [&] {
        for (const QString& name : QDir(folder.path()).entryList(QDir::Files | QDir::Hidden))
            QFile::remove(folder.filePath(name));
        download.CopyNewFilesButton_Action();
        download.DoMacDownload();
        return QFileInfo(folder.filePath(QStringLiteral("vexil0112.hex"))).size() == image.size()
            && QFileInfo::exists(folder.filePath(QStringLiteral("vexilfwnotes.rtf")));
    };
    // One of each first: the server's first log-on and curl's first start cost more.
    if (!run() || QProcess::execute(QStringLiteral("curl"), curlArguments) != 0) {
        state.SkipWithError("the warm-up run failed");
        return;
    }
    PeerTimes times;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        const bool fetched = run();
        times.ours.push_back(timer.nsecsElapsed() / 1e9);
        if (!fetched) {
            state.SkipWithError("the run did not fetch both files");
            return;
        }
        state.SetIterationTime(times.ours.back());

        timer.restart();
        const int rc = QProcess::execute(QStringLiteral("curl"), curlArguments);
        times.peer.push_back(timer.nsecsElapsed() / 1e9);
        if (rc != 0) {
            state.SkipWithError("curl failed");
            return;
        }
    }
    state.counters["run_ms"] = 1000 * Median(times.ours);
    state.counters["curl_ms"] = 1000 * Median(times.peer);
    state.counters["ratio_vs_curl"] = times.Ratio();
}

BENCHMARK(BM_DownloadRun)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(Runs(30));

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
