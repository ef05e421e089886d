#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

// From process start to the main window shown, with no device plugged in, on
// the offscreen platform: the demo quits as soon as its window is up, so the
// whole run (start, checks, first paint, exit) bounds the figure from above.
void BM_StartToMainWindow(benchmark::State& state)
{
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    for (auto _ : state) {
        QProcess demo;
        demo.setProcessEnvironment(env);
        demo.start(QStringLiteral(DEMO_EXECUTABLE), {QStringLiteral("--absent"), QStringLiteral("--quit-when-shown")});
        if (!demo.waitForFinished(10000) || demo.exitCode() != 0)
            state.SkipWithError("the demo did not start and quit cleanly");
    }
}
BENCHMARK(BM_StartToMainWindow)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
