#pragma once

#include "TextArea.h"

#include <QRegularExpression>
#include <QStringList>

// The lines of a status log without their time stamps. The second line of a
// two-line message carries no stamp and is kept as it is.
inline QStringList StatusLinesOf(const TextArea& log)
{
    static const QRegularExpression stamp(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d "));
    QStringList lines = log.Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString& line : lines)
        line.remove(stamp);
    return lines;
}
