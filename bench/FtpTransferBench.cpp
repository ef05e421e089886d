// Fetches 256 MiB from vsftpd on 127.0.0.1 into a file with the session, and
// in the same run with curl, and reports both throughputs, their ratio and how
// much the process grew (peak resident size) during the session's fetch.

#include "BenchSupport.h"
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

// 256 MiB, or 16 MiB in the short mode: the same fetch, less data.
const qint64 kFileBytes = (ShortMode() ? 16LL : 256LL) * 1024 * 1024;

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
    // The server makes its folders when it starts; the served file goes in after.
    RealFtpServer server(RealFtpServer::Kind::Vsftpd);
    QString error;
    if (!server.Start(&error)) {
        state.SkipWithError(error.toStdString().c_str());
        return;
    }
    QFile source(server.IncomingPath() + QStringLiteral("/big.bin"));
    if (!source.open(QIODevice::WriteOnly) || !source.resize(kFileBytes)) {
        state.SkipWithError("cannot make the served file");
        return;
    }
    source.close();
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
    const QStringList curlArguments{QStringLiteral("-s"), QStringLiteral("-o"), local.filePath(QStringLiteral("curl.bin")),
                                    QStringLiteral("ftp://127.0.0.1:%1/incoming/big.bin").arg(server.Port())};
    const auto fetch = [&] {
        globals.FTPDone = false;
        session.AddFileName(QStringLiteral("big.bin"));
        session.GetSingleFile();
        return Wait(globals) && QFileInfo(local.filePath(QStringLiteral("big.bin"))).size() == kFileBytes;
    };
    // One of each first, so both start from a warm page cache.
    if (!fetch() || QProcess::execute(QStringLiteral("curl"), curlArguments) != 0) {
        state.SkipWithError("the warm-up fetch failed");
        return;
    }
    PeerTimes times;
    qint64 growthKiB = 0;
    for (auto _ : state) {
        const qint64 before = StatusKiB("VmRSS:");
        ResetPeak();
        QElapsedTimer timer;
        timer.start();
        const bool fetched = fetch();
        times.ours.push_back(timer.nsecsElapsed() / 1e9);
        growthKiB = std::max(growthKiB, StatusKiB("VmHWM:") - before);
        if (!fetched) {
            state.SkipWithError("the session's fetch failed");
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
    const double bytes = static_cast<double>(kFileBytes);
    state.counters["bytes_per_second"] = bytes / Median(times.ours);
    state.counters["curl_bytes_per_second"] = bytes / Median(times.peer);
    state.counters["ratio_vs_curl"] = times.Ratio();
    state.counters["rss_growth_MiB"] = static_cast<double>(growthKiB) / 1024.0;
}

BENCHMARK(BM_Fetch256MiB)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(Runs(5));

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
