#include "FontWarmUp.h"

#include <fontconfig/fontconfig.h>

#include <system_error>

FontWarmUp::FontWarmUp()
{
    // The library keeps the configuration it reads for every later caller, Qt
    // included; should Qt ask first, both read it and one copy is dropped.
    try {
        m_thread = std::thread([] { FcInit(); });
    } catch (const std::system_error&) {
        // No thread to spare: Qt reads the configuration itself, as always.
    }
}

FontWarmUp::~FontWarmUp()
{
    if (m_thread.joinable())
        m_thread.join();
}
