#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

// From process start to the first paint of the window, offscreen: the program
// says "shown" once its window's pixels are done and then quits; the clock
// stops at that line, so the shut-down is not in the figure.
void TimeToShown(benchmark::State& state, const char* executable, const QStringList& arguments)
{
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    for (auto _ : state) {
        QProcess program;
        program.setProcessEnvironment(env);
        QElapsedTimer clock;
        clock.start();
        program.start(QString::fromUtf8(executable), arguments);
        while (!program.canReadLine() && program.waitForReadyRead(10000)) {
        }
        const qint64 nanoseconds = clock.nsecsElapsed();
        const QByteArray line = program.readLine();
        if (!program.waitForFinished(10000) || program.exitCode() != 0 || line != "shown\n") {
            state.SkipWithError("the program did not show its window and quit cleanly");
            break;
        }
        state.SetIterationTime(static_cast<double>(nanoseconds) / 1e9);
    }
}

// The program itself, with no device plugged in.
void BM_StartToMainWindow(benchmark::State& state)
{
    TimeToShown(state, DEMO_EXECUTABLE, {QStringLiteral("--absent"), QStringLiteral("--quit-when-shown")});
}
BENCHMARK(BM_StartToMainWindow)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(30);

// Qt alone, a window of the same size with one line of text: the floor under
// the figure above.
void BM_BareQtWindow(benchmark::State& state)
{
    TimeToShown(state, BARE_WINDOW_EXECUTABLE, {});
}
BENCHMARK(BM_BareQtWindow)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(30);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
