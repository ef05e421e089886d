#include "FTPReply.h"

#include <QStringList>

#include <climits>

int FTPReplyCode(const QString& line)
{
    const qsizetype blank = line.indexOf(QLatin1Char(' '));
    const QStringView field = QStringView(line).left(blank < 0 ? line.size() : blank);
    qint64 value = 0;
    for (const QChar c : field) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            break;
        value = value * 10 + (c.unicode() - '0');
        if (value > INT_MAX)
            return INT_MAX;
    }
    return static_cast<int>(value);
}

bool FTPFinalLineA(const QString& line)
{
    if (line.startsWith(QLatin1Char(' ')))
        return false;
    return line.size() < 4 || line.at(3) != QLatin1Char('-');
}

bool FTPFinalLineB(const QString& line)
{
    if (line.startsWith(QLatin1Char(' ')))
        return false;
    return line.size() >= 4 && line.at(3) == QLatin1Char(' ');
}

static QString ParenthesisedText(const QString& line)
{
    const qsizetype open = line.indexOf(QLatin1Char('('));
    if (open < 0)
        return {};
    const qsizetype close = line.indexOf(QLatin1Char(')'), open + 1);
    if (close < 0)
        return {};
    return line.mid(open + 1, close - open - 1);
}

std::optional<quint16> FTPPassivePort(const QString& line)
{
    const QString inner = ParenthesisedText(line);
    if (inner.isEmpty())
        return std::nullopt;
    const QStringList fields = inner.split(QLatin1Char(','));
    if (fields.size() != 6)
        return std::nullopt;
    int bytes[6];
    for (int i = 0; i < 6; ++i) {
        // Blanks and tabs around a number are tolerated, nothing else.
        QStringView field(fields[i]);
        while (!field.isEmpty() && (field.front() == QLatin1Char(' ') || field.front() == QLatin1Char('\t')))
            field = field.mid(1);
        while (!field.isEmpty() && (field.back() == QLatin1Char(' ') || field.back() == QLatin1Char('\t')))
            field.chop(1);
        // Digits only, counted by hand: the library's conversion stops at a NUL.
        if (field.isEmpty())
            return std::nullopt;
        int value = 0;
        for (const QChar c : field) {
            if (c < QLatin1Char('0') || c > QLatin1Char('9'))
                return std::nullopt;
            value = value * 10 + (c.unicode() - '0');
            if (value > 255)
                return std::nullopt;
        }
        bytes[i] = value;
    }
    const int port = bytes[4] * 256 + bytes[5];
    if (port == 0)
        return std::nullopt;
    return static_cast<quint16>(port);
}

QString FTPPassiveAddress(const QString& line)
{
    QString inner = ParenthesisedText(line);
    return inner.replace(QLatin1Char(','), QLatin1Char('.'));
}

QString FTPPortArgument(const QHostAddress& local, int port)
{
    bool isIPv4 = false;
    const quint32 v4 = local.toIPv4Address(&isIPv4);
    const QString address = isIPv4 ? QHostAddress(v4).toString() : local.toString();
    return QString(address).replace(QLatin1Char('.'), QLatin1Char(',')) + QLatin1Char(',')
        + QString::number(port / 256) + QLatin1Char(',') + QString::number(port % 256);
}
