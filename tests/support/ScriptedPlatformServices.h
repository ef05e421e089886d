#pragma once

#include "PlatformServices.h"

#include <QStringList>

// Desktop services for tests: records every call in order, shows nothing.
class ScriptedPlatformServices final : public PlatformServices {
public:
    void MsgBox(const QString& text) override { calls << QStringLiteral("MsgBox: ") + text; }
    void Beep() override { calls << QStringLiteral("Beep"); }

    QStringList calls;
};
