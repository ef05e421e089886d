#include "TerminalPlatform.h"

#include <cstdio>

void TerminalPlatform::MsgBox(const QString& text)
{
    lastMessage = text;
    if (!quiet)
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}
