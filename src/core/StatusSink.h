#pragma once

#include <QString>

// Where status lines leave a subsystem. Globals hands every line to one sink:
// the main window's log in the application, a plain list in a test, so that a
// library reporting through Globals needs no window.
class StatusSink {
public:
    virtual ~StatusSink() = default;
    // A line the user is to see (shown) or a trace line hidden while trace is
    // off; either one marks activity. An empty hidden line only marks activity.
    virtual void StatusPosted(const QString& text, bool shown) = 0;
};
