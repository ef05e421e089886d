#include "FTPDirList.h"

#include <QStringList>

#include <array>
#include <limits>

QString Squeeze(const QString& text, const QString& charSet)
{
    if (text.size() < 2)
        return text;
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!result.isEmpty() && result.back() == c && charSet.contains(c))
            continue;
        result.append(c);
    }
    return result;
}

qint64 FTPLeadingNumber(const QString& field)
{
    qint64 value = 0;
    for (const QChar c : field) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            break;
        if (value > (std::numeric_limits<qint64>::max() - 9) / 10)
            return std::numeric_limits<qint64>::max();
        value = value * 10 + (c.unicode() - '0');
    }
    return value;
}

namespace {

bool AllOf(const QString& field, const char* extra)
{
    if (field.isEmpty())
        return false;
    for (const QChar c : field) {
        if (!c.isDigit() && !QLatin1String(extra).contains(c))
            return false;
    }
    return true;
}

QString Joined(const QStringList& fields, qsizetype from)
{
    QString name = fields.mid(from).join(QLatin1Char(' '));
    qsizetype blanks = 0;
    while (blanks < name.size() && name.at(blanks) == QLatin1Char(' '))
        ++blanks;
    return name.mid(blanks);
}

// "12-31-19  11:59PM  <DIR>  name" or "12-31-19  11:59PM  1234  name"; the
// fields may begin after one empty field when the line begins with a blank.
FTPParsedDirListLineClass ParseDirectoryForm(const QStringList& fields)
{
    FTPParsedDirListLineClass record;
    const qsizetype d = (!fields.isEmpty() && fields.front().isEmpty()) ? 1 : 0;
    if (fields.size() < d + 4 || !AllOf(fields[d], "-/.") || !fields[d + 1].contains(QLatin1Char(':'))
        || !AllOf(fields[d + 1], ":aApPmM"))
        return record;
    const QString& kind = fields[d + 2];
    const bool isDir = kind.compare(QLatin1String("<dir>"), Qt::CaseInsensitive) == 0;
    if (!isDir && !AllOf(kind, ",."))
        return record;
    record.Name = Joined(fields, d + 3);
    if (record.Name.isEmpty())
        return {};
    record.ModDate = fields[d];
    record.ModTime = fields[d + 1];
    record.IsDir = isDir;
    record.IsFile = !isDir;
    if (!isDir)
        record.Size = FTPLeadingNumber(QString(kind).remove(QLatin1Char(',')).remove(QLatin1Char('.')));
    return record;
}

} // namespace

FTPParsedDirListLineClass ParseDirListLine(const QString& line)
{
    static const std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const QStringList fields = Squeeze(line, QStringLiteral(" ")).split(QLatin1Char(' '));
    const qsizetype last = fields.size() - 1;
    // The first field that is a month wins, field 0 included (which then counts as none).
    qsizetype m = 0;
    bool found = false;
    for (qsizetype i = 0; i <= last && !found; ++i) {
        for (const char* month : months) {
            if (fields[i].compare(QLatin1String(month), Qt::CaseInsensitive) == 0) {
                m = i;
                found = true;
                break;
            }
        }
    }
    // A one-word name in the directory form gives exactly four fields.
    if (m == 0 || m > 25 || last <= 3)
        return last < 3 ? FTPParsedDirListLineClass{} : ParseDirectoryForm(fields);
    // Date, time and at least one word of the name must follow the month.
    if (m + 3 > last)
        return {};

    FTPParsedDirListLineClass record;
    record.Name = m + 3 == last ? fields[last] : Joined(fields, m + 3);
    if (record.Name.isEmpty())
        return {};
    record.ModDate = fields[m] + QLatin1Char(' ') + fields[m + 1];
    record.ModTime = fields[m + 2];
    const QChar type = line.isEmpty() ? QChar() : line.front().toLower();
    record.IsDir = type == QLatin1Char('d') || type == QLatin1Char('l');
    record.IsFile = type == QLatin1Char('-') || type == QLatin1Char('l');
    record.Permissions = fields[0].mid(1, 9);
    for (qsizetype i = m - 1; i >= 2; --i) {
        if (!fields[i].isEmpty()) {
            record.Size = FTPLeadingNumber(fields[i]);
            break;
        }
    }
    return record;
}

bool FTPIsPlainName(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    for (const QChar c : name) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}
