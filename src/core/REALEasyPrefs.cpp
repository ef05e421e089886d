#include "REALEasyPrefs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringDecoder>

#include <limits>

void REALEasyPrefs::RemoveStaleCopies(const QDir& folder, const QString& fileName)
{
    // A write killed between writing its copy and renaming it over the file
    // leaves the whole copy beside it as "<name>.XXXXXX". Only one copy of the
    // program writes here, so at start-up any such copy is stale. A name that
    // reads as a word ("backup") is a user's own and stays.
    static const QRegularExpression random(QStringLiteral("^[A-Za-z0-9]{6}$"));
    static const QRegularExpression word(QStringLiteral("^[a-z]+$"));
    for (const QFileInfo& copy : folder.entryInfoList({fileName + QStringLiteral(".??????")}, QDir::Files | QDir::Hidden)) {
        const QString suffix = copy.fileName().mid(fileName.size() + 1);
        if (random.match(suffix).hasMatch() && !word.match(suffix).hasMatch() && !copy.isSymLink())
            QFile::remove(copy.filePath());
    }
}

void REALEasyPrefs::InitPrefFile(const QString& fileName)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    QDir().mkpath(folder);
    prefFile = QDir(folder).filePath(fileName);
    RemoveStaleCopies(QDir(folder), fileName);
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

namespace {

// Bytes that are not UTF-8 are carried as lone surrogates U+DC80..U+DCFF, one
// per byte, so that a line reads as text and still writes back byte for byte.
constexpr char16_t EscapeBase = 0xDC00;

QString DecodeLine(QByteArrayView bytes)
{
    // Stateless: a broken sequence must not swallow what follows it. A leading
    // U+FEFF is kept (QString::fromUtf8 would drop it).
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString whole = decoder.decode(bytes);
    if (whole.toUtf8() == bytes)
        return whole;
    QString line;
    for (qsizetype i = 0; i < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        const qsizetype length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (length > 1 && i + length <= bytes.size()) {
            const QByteArrayView sequence = bytes.sliced(i, length);
            const QString decoded = decoder.decode(sequence);
            if (decoded.toUtf8() == sequence) {
                line += decoded;
                i += length;
                continue;
            }
        }
        line += QChar(static_cast<char16_t>(length == 1 ? lead : EscapeBase + lead));
        ++i;
    }
    return line;
}

QByteArray EncodeLine(const QString& line)
{
    QByteArray bytes;
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char16_t c = line[i].unicode();
        const bool escaped = c >= EscapeBase + 0x80 && c <= EscapeBase + 0xFF
                             && (i == 0 || !line[i - 1].isHighSurrogate());
        if (!escaped)
            continue;
        bytes += QStringView(line).sliced(runStart, i - runStart).toUtf8();
        bytes += static_cast<char>(c - EscapeBase);
        runStart = i + 1;
    }
    bytes += QStringView(line).sliced(runStart).toUtf8();
    return bytes;
}

} // namespace

void REALEasyPrefs::ReadFrom(const QByteArray& bytes)
{
    prefNames = QStringList{QString()};
    prefItems = QStringList{QString()};

    // A line is taken whole, up to its "\n": a "\r" before it belongs to the
    // line, so that every value reads back exactly as it was written.
    qsizetype pos = 0;
    auto nextLine = [&bytes, &pos] {
        const qsizetype end = bytes.indexOf('\n', pos);
        const qsizetype stop = end < 0 ? bytes.size() : end;
        QString line = DecodeLine(QByteArrayView(bytes.constData() + pos, stop - pos));
        pos = end < 0 ? bytes.size() : end + 1;
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
    // toward zero, and no exponent is read ("1e3" gives 1). Leading blanks are
    // skipped, as a user editing the file would expect.
    const QString text = GetPrefString(name, QString::number(defaultValue));
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
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
        bytes += EncodeLine(prefNames[i]);
        bytes += '\n';
        bytes += EncodeLine(prefItems[i]);
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
