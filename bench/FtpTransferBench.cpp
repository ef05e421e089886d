// Fetches 256 MiB from vsftpd on 127.0.0.1 into a file with the session, and
// in the same run with curl, and reports both throughputs, their ratio and how
// much the process grew (peak resident size) during the session's fetch.

#include "FTPSessionClass.h"
#include "FtpServers.h"
#include "Globals.h"
#include "SystemClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr qint64 kFileBytes = 256LL * 1024 * 1024;

// A line of /proc/self/status in KiB ("VmRSS", "VmHWM").
qint64 StatusKiB(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field) + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return 0;
}

// Lets the next VmHWM measure from now on.
void ResetPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

bool Wait(Globals& globals)
{
    QDeadlineTimer deadline(120000);
    QTimer wake;
    wake.start(100);
    while (!globals.FTPDone && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return globals.FTPDone && !globals.FTPError;
}

void BM_Fetch256MiB(benchmark::State& state)
{
    VsftpdServer server;
    QString error;
    QFile source(server.WritablePath() + QStringLiteral("/big.bin"));
    if (!source.open(QIODevice::WriteOnly) || !source.resize(kFileBytes)) {
        state.SkipWithError("cannot make the served file");
        return;
    }
    source.close();
    if (!server.Start(&error)) {
        state.SkipWithError(error.toStdString().c_str());
        return;
    }
    QTemporaryDir local;
    SystemClock clock;
    Globals globals;
    FTPSessionClass session(globals, clock);
    session.SetLoginInfo(QStringLiteral("127.0.0.1"), QStringLiteral("anonymous"), QStringLiteral("bench@example.org"));
    session.CommandPort = server.Port();
    session.LocalDirectory = local.path() + QLatin1Char('/');
    session.ServerDirectory = QStringLiteral("/incoming");
    globals.FTPDone = false;
    session.Logon();
    if (!Wait(globals) || (globals.FTPDone = false, session.ChangeDir(), !Wait(globals))) {
        state.SkipWithError("log-on failed");
        return;
    }
    double ours = 0, curl = 0;
    qint64 growthKiB = 0;
    for (auto _ : state) {
        const qint64 before = StatusKiB("VmRSS:");
        ResetPeak();
        QElapsedTimer timer;
        timer.start();
        globals.FTPDone = false;
        session.AddFileName(QStringLiteral("big.bin"));
        session.GetSingleFile();
        const bool fetched = Wait(globals);
        ours += timer.nsecsElapsed() / 1e9;
        growthKiB = std::max(growthKiB, StatusKiB("VmHWM:") - before);
        if (!fetched || QFileInfo(local.filePath(QStringLiteral("big.bin"))).size() != kFileBytes) {
            state.SkipWithError("the session's fetch failed");
            return;
        }
        state.SetIterationTime(timer.nsecsElapsed() / 1e9);

        timer.restart();
        const int rc = QProcess::execute(QStringLiteral("curl"),
            {QStringLiteral("-s"), QStringLiteral("-o"), local.filePath(QStringLiteral("curl.bin")),
             QStringLiteral("ftp://127.0.0.1:%1/incoming/big.bin").arg(server.Port())});
        curl += timer.nsecsElapsed() / 1e9;
        if (rc != 0) {
            state.SkipWithError("curl failed");
            return;
        }
    }
    const double bytes = static_cast<double>(kFileBytes) * static_cast<double>(state.iterations());
    state.counters["bytes_per_second"] = bytes / ours;
    state.counters["curl_bytes_per_second"] = bytes / curl;
    state.counters["vs_curl"] = curl / ours;
    state.counters["rss_growth_MiB"] = static_cast<double>(growthKiB) / 1024.0;
}

BENCHMARK(BM_Fetch256MiB)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
