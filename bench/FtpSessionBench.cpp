// A logged-on round on a real server: log-on, change directory, log-off,
// against vsftpd and pyftpdlib on 127.0.0.1. It measures what the session
// engine adds to the server's own round trips; the whole download run builds
// on it.

#include "BenchSupport.h"
#include "FTPSessionClass.h"
#include "FtpServers.h"
#include "Globals.h"
#include "SystemClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>

namespace {

// Runs one operation and waits, bounded, for its end report, sleeping only
// until the next event so that the figure is the session's and not a polling
// period's.
bool RunAndWait(Globals& globals, const std::function<void()>& operation)
{
    globals.FTPDone = false;
    globals.FTPError = false;
    operation();
    QDeadlineTimer deadline(10000);
    QTimer wake;
    wake.start(100);
    while (!globals.FTPDone && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return globals.FTPDone && !globals.FTPError;
}

template <RealFtpServer::Kind kind>
void BM_LogonChangeDirLogoff(benchmark::State& state)
{
    RealFtpServer server(kind);
    QString error;
    if (!server.Start(&error)) {
        state.SkipWithError(error.toStdString().c_str());
        return;
    }
    SystemClock clock;
    Globals globals;
    for (auto _ : state) {
        FTPSessionClass session(globals, clock);
        session.SetLoginInfo(QStringLiteral("127.0.0.1"), QStringLiteral("anonymous"), QStringLiteral("bench@example.org"));
        session.CommandPort = server.Port();
        session.ServerDirectory = QStringLiteral("/incoming");
        const bool ok = RunAndWait(globals, [&] { session.Logon(); })
                        && RunAndWait(globals, [&] { session.ChangeDir(); })
                        && RunAndWait(globals, [&] { session.Logoff(); });
        if (!ok) {
            state.SkipWithError("an operation failed");
            return;
        }
    }
}

BENCHMARK_TEMPLATE(BM_LogonChangeDirLogoff, RealFtpServer::Kind::Vsftpd)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(ShortMode() ? 0.1 : 2.0);
BENCHMARK_TEMPLATE(BM_LogonChangeDirLogoff, RealFtpServer::Kind::Pyftpdlib)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(ShortMode() ? 0.1 : 2.0);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
