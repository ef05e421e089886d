#include "InterruptWatch.h"

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Written by the handler, read by the notifier: a signal handler can reach
// nothing but a static, so this is the one pair of the process.
int g_pair[2] = {-1, -1};

void OnSigint(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_pair[0], &byte, 1);
}

} // namespace

InterruptWatch::InterruptWatch()
{
    if (g_pair[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_pair) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(g_pair[1], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(g_pair[1], &byte, 1) == 1)
            emit interrupted();
    });
    struct sigaction action = {};
    action.sa_handler = OnSigint;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
}

InterruptWatch::~InterruptWatch()
{
    ::signal(SIGINT, SIG_DFL);
}
