#pragma once

#include <QString>

// What the program asks of the desktop. The Qt implementation shows real
// dialogs; tests use a scripted one that records each call and answers from
// a queue, so no test ever blocks on a modal window.
class PlatformServices {
public:
    virtual ~PlatformServices() = default;

    // The platform's modal message box.
    virtual void MsgBox(const QString& text) = 0;
    virtual void Beep() = 0;
};
