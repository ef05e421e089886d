#pragma once

#include <thread>

// Reads the desktop's font configuration on a second thread while Qt starts
// up, so that the first text the main window measures does not wait for it
// (some forty files of settings, the largest single cost of a first window).
// Made before the application object; its end waits for the thread.
class FontWarmUp {
public:
    FontWarmUp();
    ~FontWarmUp();
    FontWarmUp(const FontWarmUp&) = delete;
    FontWarmUp& operator=(const FontWarmUp&) = delete;

private:
    std::thread m_thread;
};
