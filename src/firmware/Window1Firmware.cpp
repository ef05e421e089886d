#include "Window1Firmware.h"

#include <limits>

qint64 Window1Firmware::LeadingNumber(const QString& text)
{
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('+') || text[i] == QLatin1Char('-')))
        negative = text[i++] == QLatin1Char('-');
    qint64 value = 0;
    for (; i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        const int digit = text[i].unicode() - '0';
        // Saturate rather than wrap, so a long run of digits still compares as large.
        if (value > (std::numeric_limits<qint64>::max() - digit) / 10)
            value = std::numeric_limits<qint64>::max();
        else
            value = value * 10 + digit;
    }
    return negative ? -value : value;
}

QString Window1Firmware::GetNewestRevision(const QString& prefix, const QStringList& files, int& index)
{
    QString best;
    for (int i = 0; i < files.size(); ++i) {
        const QString& name = files[i];
        if (name.left(prefix.size()).toLower() != prefix)
            continue;
        if (name.right(4).toLower() != QLatin1String(".hex"))
            continue;
        const QString digits = name.mid(prefix.size(), name.size() - prefix.size() - 4);
        if (LeadingNumber(digits) > LeadingNumber(best)) {
            best = digits;
            index = i;
        }
    }
    return best;
}
