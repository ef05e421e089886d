#include "RevisionText.h"

QString RevisionText(qint64 number)
{
    return QStringLiteral("%1.%2")
        .arg(number / 100, 2, 10, QLatin1Char('0'))
        .arg(number % 100, 2, 10, QLatin1Char('0'));
}
