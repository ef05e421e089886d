#include "ProgressLine.h"

#include <string>

void ProgressLine::Show(long long value, long long maximum)
{
    // The bar is set up before the handshake; it shows once packets go out.
    if (maximum <= 0 || value <= 0)
        return;
    const int percent = static_cast<int>(value * 100 / maximum);
    const int step = m_terminal ? percent : percent / 10 * 10;
    if (step == m_shown)
        return;
    m_shown = step;
    if (!m_terminal) {
        std::fprintf(m_out, "Sending firmware: %d%%\n", step);
    } else {
        constexpr int Width = 40;
        const int filled = percent * Width / 100;
        const std::string bar = std::string(static_cast<std::size_t>(filled), '#')
            + std::string(static_cast<std::size_t>(Width - filled), '-');
        std::fprintf(m_out, "\rSending firmware [%s] %3d%%", bar.c_str(), percent);
        m_open = true;
    }
    std::fflush(m_out);
}

void ProgressLine::Break()
{
    if (m_open)
        std::fputc('\n', m_out);
    m_open = false;
    std::fflush(m_out);
}
