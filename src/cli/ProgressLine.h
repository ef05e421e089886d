#pragma once

#include <cstdio>

// The load's progress on standard output: a bar redrawn in place on a
// terminal, otherwise one plain line at every tenth, so a log file stays short.
class ProgressLine {
public:
    ProgressLine(std::FILE* out, bool terminal) : m_out(out), m_terminal(terminal) {}

    void Show(long long value, long long maximum);
    // Ends a bar left on its line, before other output or at the end.
    void Break();

private:
    std::FILE* m_out;
    bool m_terminal;
    int m_shown = -1;
    bool m_open = false;
};
