#include "BenchSupport.h"
#include "Globals.h"
#include "HexFile.h"
#include "ScriptedPlatformServices.h"
#include "REALEasyPrefs.h"
#include "SimulatedVexil.h"
#include "SystemClock.h"
#include "VexilHid.h"
#include "Window1.h"
#include "Window1View.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <sys/prctl.h>

namespace {

// A whole load of a full image into the simulated device, with the main
// window and the progress window on screen (offscreen platform) and the event
// pump running once per packet. Reports the programming loop per packet, from
// the device's own receive times, and the whole call with its half-second pause.
void BM_WholeLoad(benchmark::State& state)
{
    const qint64 latencyUs = state.range(0);
    QTemporaryDir dir;
    HexFile::Write(QDir(dir.path()), QStringLiteral("vexil0113.hex"), HexFile::Image(0x1D008000, 0x38000));

    SystemClock clock;
    SimulatedVexil sim(clock);
    sim.SetLatencyMicroseconds(latencyUs);
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid(sim);
    REALEasyPrefs prefs;
    Window1 window(globals, clock, platform, hid, prefs);
    Window1View view(window);
    view.show();
    window.mStartup = false;
    globals.m_FolderPath = dir.path() + QLatin1Char('/');
    window.m_RevisionedFilename.m_mstrPath = QStringLiteral("vexil0113.hex");
    window.MCUavailableText.SetText(QStringLiteral("01.13"));

    double loopUs = 0;
    double wholeUs = 0;
    int packets = 0;
    for (auto _ : state) {
        sim.SetAppRevision(112);
        window.CheckVexilRevisions();
        ProgressWin& progress = window.GetProgressWin();
        progress.Show();
        globals.m_ProgressWinOpen = true;
        const std::size_t first = sim.Log().size();
        const qint64 start = clock.Microseconds();
        if (!window.VexilLoader())
            state.SkipWithError("load failed");
        wholeUs += double(clock.Microseconds() - start);
        globals.m_ProgressWinOpen = false;
        progress.CloseIt_Action();

        qint64 firstPacket = -1, lastPacket = 0;
        int n = 0;
        for (std::size_t i = first; i < sim.Log().size(); ++i) {
            const auto& r = sim.Log()[i];
            if (r.cmd != '!')
                continue;
            if (firstPacket < 0)
                firstPacket = r.atMicroseconds;
            lastPacket = r.atMicroseconds;
            ++n;
        }
        packets = n;
        // From the first packet's arrival to the completion packet's answer.
        loopUs += double(lastPacket - firstPacket + latencyUs);
    }
    const double runs = double(state.iterations());
    state.counters["packets"] = packets;
    state.counters["loop_s"] = loopUs / runs / 1e6;
    state.counters["us_per_packet"] = loopUs / runs / packets;
    state.counters["whole_load_s"] = wholeUs / runs / 1e6;
    if (latencyUs > 0)
        state.counters["ratio_vs_wire"] = loopUs / runs / (double(packets) * double(latencyUs));
}
BENCHMARK(BM_WholeLoad)->Arg(0)->Iterations(Runs(5))->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WholeLoad)->Arg(1000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The simulated device's latency is a sleep; without this the kernel's
    // default 50 us timer slack would be charged to the host on every packet.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
