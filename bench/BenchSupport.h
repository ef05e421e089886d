#pragma once

#include <algorithm>
#include <cstdlib>
#include <vector>

// VEXIL_BENCH_SHORT=1 runs every benchmark through the same code with fewer
// runs or less data: CI shows that each one still runs and still has its peer.
inline bool ShortMode()
{
    const char* value = std::getenv("VEXIL_BENCH_SHORT");
    return value && *value && *value != '0';
}

inline int Runs(int full)
{
    return ShortMode() ? std::min(full, 3) : full;
}

inline double Median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Our time and the peer's, one of each per run, both after the same warm-up:
// the ratio is of their medians, our time over the peer's (below 1 is faster).
struct PeerTimes {
    std::vector<double> ours, peer;
    double Ratio() const { return Median(ours) / Median(peer); }
};
