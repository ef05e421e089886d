#include "REALEasyPrefs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringDecoder>

#include <limits>

void REALEasyPrefs::InitPrefFile(const QString& fileName)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    QDir().mkpath(folder);
    prefFile = QDir(folder).filePath(fileName);
    prefNames = QStringList{QString()};
    prefItems = QStringList{QString()};

    if (!QFileInfo::exists(prefFile)) {
        // NewOnly: never truncate a file that appeared since the check.
        QFile created(prefFile);
        (void)created.open(QIODevice::WriteOnly | QIODevice::NewOnly);
        return;
    }
    QFile file(prefFile);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    // Half a file would silently drop keys; all defaults is the predictable outcome.
    if (file.error() != QFileDevice::NoError)
        return;
    ReadFrom(bytes);
}

void REALEasyPrefs::ReadFrom(const QByteArray& bytes)
{
    prefNames = QStringList{QString()};
    prefItems = QStringList{QString()};

    // A line is taken whole, a leading U+FEFF included (QString::fromUtf8 would
    // drop it, and the entry would not read back as it was written). Stateless:
    // a broken sequence at a line's end must not swallow the next line's start.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    qsizetype pos = 0;
    auto nextLine = [&bytes, &pos, &decoder] {
        qsizetype end = bytes.indexOf('\n', pos);
        const qsizetype next = end < 0 ? bytes.size() : end + 1;
        if (end < 0)
            end = bytes.size();
        // A file edited on another system may end its lines in "\r\n"; the
        // "\r" is never meant as part of the key or value.
        if (end > pos && bytes[end - 1] == '\r')
            --end;
        QString line = decoder.decode(QByteArrayView(bytes.constData() + pos, end - pos));
        pos = next;
        return line;
    };
    while (pos < bytes.size()) {
        prefNames.append(nextLine());
        // An odd line count leaves the last key with an empty value.
        prefItems.append(pos < bytes.size() ? nextLine() : QString());
    }
}

qsizetype REALEasyPrefs::IndexOf(const QString& name) const
{
    for (qsizetype i = 1; i < prefNames.size(); ++i)
        if (prefNames[i].compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

QString REALEasyPrefs::GetPrefString(const QString& name, const QString& defaultValue) const
{
    const qsizetype i = IndexOf(name);
    return i < 0 ? defaultValue : prefItems[i];
}

int REALEasyPrefs::GetPrefNumber(const QString& name, int defaultValue) const
{
    // Only the sign and the whole digits matter: any fraction goes on truncation
    // toward zero. Leading blanks are not part of a number, so " 7" gives 0,
    // and no exponent is read ("1e3" gives 1).
    const QString text = GetPrefString(name, QString::number(defaultValue));
    qsizetype i = 0;
    const bool negative = i < text.size() && text[i] == u'-';
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        ++i;
    // One past the largest magnitude either way, so clamping needs no more digits.
    constexpr long long limit = static_cast<long long>(std::numeric_limits<int>::max()) + 2;
    long long magnitude = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i)
        if (magnitude < limit)
            magnitude = magnitude * 10 + (text[i].unicode() - u'0');
    const long long value = negative ? -magnitude : magnitude;
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

bool REALEasyPrefs::GetPrefBoolean(const QString& name, bool defaultValue) const
{
    const QString text = GetPrefString(name, defaultValue ? QStringLiteral("true") : QStringLiteral("false"));
    return text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
}

void REALEasyPrefs::SetPrefString(const QString& name, const QString& value)
{
    const qsizetype i = IndexOf(name);
    if (i >= 0) {
        prefItems[i] = value;
        return;
    }
    prefNames.append(name);
    prefItems.append(value);
}

void REALEasyPrefs::SetPrefNumber(const QString& name, int value)
{
    SetPrefString(name, QString::number(value));
}

void REALEasyPrefs::SetPrefBoolean(const QString& name, bool value)
{
    SetPrefString(name, value ? QStringLiteral("true") : QStringLiteral("false"));
}

QByteArray REALEasyPrefs::Serialise() const
{
    QByteArray bytes;
    for (qsizetype i = 1; i < prefNames.size(); ++i) {
        bytes += prefNames[i].toUtf8();
        bytes += '\n';
        bytes += prefItems[i].toUtf8();
        bytes += '\n';
    }
    return bytes;
}

bool REALEasyPrefs::WritePrefsFile()
{
    // A new file renamed over the old one: a crash or a full disk mid-write
    // leaves the previous settings whole instead of a truncated file.
    QSaveFile file(prefFile);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray bytes = Serialise();
    if (file.write(bytes) != bytes.size() || (beforeCommit && !beforeCommit())) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
