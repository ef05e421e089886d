#include "Globals.h"
#include "ManualClock.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "SystemClock.h"
#include "VexilHid.h"
#include "Window1Device.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

namespace {

// Host-side cost of one program-packet exchange (encode, checksum, write, wait
// loop, decode) against a device that answers at once: the floor under a load.
void BM_ProgramPacketExchange(benchmark::State& state)
{
    SystemClock clock;
    SimulatedVexil sim(clock);
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid(sim);
    Window1Device window(globals, clock, platform, hid);
    window.OpenHid();
    window.VexilWriteReadResponse('=');
    window.VexilWriteReadResponse('E');
    std::uint32_t counter = Window1Device::FLASH_WINDOW_START;
    for (auto _ : state) {
        if (counter >= Window1Device::FLASH_WINDOW_END) {
            state.PauseTiming();
            window.VexilWriteReadResponse('E');
            counter = Window1Device::FLASH_WINDOW_START;
            state.ResumeTiming();
        }
        window.WriteFrame.pkt.addr = static_cast<std::int32_t>(counter & ~127u);
        window.WriteFrame.pkt.pkno = static_cast<std::uint8_t>((counter % 128) / 16);
        if (!window.VexilWriteReadResponse('!'))
            state.SkipWithError("exchange failed");
        counter += 16;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ProgramPacketExchange);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
