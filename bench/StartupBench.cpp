#include "BenchSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

// From process start to the first paint of the window, offscreen: the program
// says "shown" once its window's pixels are done and then quits; the clock
// stops at that line, so the shut-down is not in the figure. Negative: it failed.
double SecondsToShown(const QProcessEnvironment& env, const char* executable, const QStringList& arguments)
{
    QProcess program;
    program.setProcessEnvironment(env);
    QElapsedTimer clock;
    clock.start();
    program.start(QString::fromUtf8(executable), arguments);
    while (!program.canReadLine() && program.waitForReadyRead(10000)) {
    }
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    const QByteArray line = program.readLine();
    if (!program.waitForFinished(10000) || program.exitCode() != 0 || line != "shown\n")
        return -1;
    return seconds;
}

// The program itself, with no device plugged in, and beside it, start for
// start, Qt alone: a window of the same size with one line of text, the floor
// under the figure.
void BM_StartToMainWindow(benchmark::State& state)
{
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    const QStringList demo{QStringLiteral("--absent"), QStringLiteral("--quit-when-shown")};
    // One of each first: the libraries come into the page cache.
    if (SecondsToShown(env, DEMO_EXECUTABLE, demo) < 0 || SecondsToShown(env, BARE_WINDOW_EXECUTABLE, {}) < 0) {
        state.SkipWithError("a program did not show its window and quit cleanly");
        return;
    }
    PeerTimes times;
    for (auto _ : state) {
        times.ours.push_back(SecondsToShown(env, DEMO_EXECUTABLE, demo));
        times.peer.push_back(SecondsToShown(env, BARE_WINDOW_EXECUTABLE, {}));
        if (times.ours.back() < 0 || times.peer.back() < 0) {
            state.SkipWithError("a program did not show its window and quit cleanly");
            return;
        }
        state.SetIterationTime(times.ours.back());
    }
    state.counters["bare_window_ms"] = Median(times.peer) * 1000;
    state.counters["ratio_vs_bare_window"] = times.Ratio();
}
BENCHMARK(BM_StartToMainWindow)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(Runs(30));

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
