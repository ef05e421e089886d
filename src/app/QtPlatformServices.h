#pragma once

#include "PlatformServices.h"

// The desktop's own dialogs and sounds.
class QtPlatformServices final : public PlatformServices {
public:
    void MsgBox(const QString& text) override;
    void Beep() override;
};
