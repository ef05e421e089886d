#include "HelpText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <array>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto Options = QRegularExpression::CaseInsensitiveOption | QRegularExpression::InvertedGreedinessOption;

// The tag expression nests quantifiers, so a page with many carriage returns
// and asterisks after a "<" makes it backtrack for ever. The inline limit makes
// the engine give up at such a "<" within a fraction of a millisecond instead
// of the default's tens of milliseconds per start; ordinary tags need a few
// hundred steps at most.
const QString TagExpression = QStringLiteral("(*LIMIT_MATCH=100000)<(.*\\r)*[^*]*>");
const QString NotInATag = QStringLiteral("(?!([^<]+)?>)");

// The engine checks the whole subject at every call unless told it is sound;
// with one call per tag that would cost the page's length per tag.
QRegularExpression::MatchOptions CheckedOnce(QStringView text)
{
    return text.isValidUtf16() ? QRegularExpression::DontCheckSubjectStringMatchOption
                               : QRegularExpression::NoMatchOption;
}

qsizetype BodyStart(QStringView html)
{
    const qsizetype body = html.indexOf(u"<body", 0, Qt::CaseInsensitive);
    return body < 0 ? 0 : body;
}

std::optional<QByteArray> ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

bool IsPlainName(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    for (QChar c : name)
        if (c == u'/' || c == u'\\' || c.category() == QChar::Other_Control)
            return false;
    return true;
}

unsigned char AsciiFold(unsigned char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c;
}

// `needle` (ASCII, folded) in `hay`, ASCII case ignored; Horspool's skip.
bool ContainsFolded(QByteArrayView hay, QByteArrayView needle)
{
    const qsizetype m = needle.size();
    if (m > hay.size())
        return false;
    std::array<qsizetype, 256> skip;
    skip.fill(m);
    for (qsizetype i = 0; i + 1 < m; ++i) {
        const auto c = static_cast<unsigned char>(needle[i]);
        skip[c] = skip[static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 32 : c)] = m - 1 - i;
    }
    for (qsizetype at = 0; at + m <= hay.size();) {
        qsizetype i = m - 1;
        while (i >= 0 && AsciiFold(static_cast<unsigned char>(hay[at + i])) == static_cast<unsigned char>(needle[i]))
            --i;
        if (i < 0)
            return true;
        at += skip[static_cast<unsigned char>(hay[at + m - 1])];
    }
    return false;
}

// A necessary condition for the stripped page to hold `term`, checked on the
// file's bytes. Stripping only removes text, puts blanks for tags and puts
// '"', '\'', '-', '&' or non-ASCII characters for entities; so an ASCII term
// without those is in the stripped text only if it is in the file. The only
// characters that the case-blind test matches to ASCII letters are U+017F
// (s) and U+212A (k): a file with them is always stripped.
bool MayContain(QByteArrayView bytes, const QString& term)
{
    QByteArray folded;
    folded.reserve(term.size());
    for (QChar c : term) {
        const char16_t u = c.unicode();
        if (u >= 0x80 || u == u' ' || u == u'"' || u == u'\'' || u == u'-' || u == u'&')
            return true;
        folded += static_cast<char>(AsciiFold(static_cast<unsigned char>(u)));
    }
    if (folded.contains('s') && bytes.indexOf("\xC5\xBF") >= 0)
        return true;
    if (folded.contains('k') && bytes.indexOf("\xE2\x84\xAA") >= 0)
        return true;
    return ContainsFolded(bytes, folded);
}

} // namespace

std::optional<QString> HelpText::StripHTML(QStringView html)
{
    static const QRegularExpression tag = [] {
        QRegularExpression expression(TagExpression, Options);
        expression.optimize();
        return expression;
    }();
    const QString text = html.sliced(BodyStart(html)).toString();
    const auto options = CheckedOnce(text);
    QString out;
    out.reserve(text.size());
    qsizetype done = 0;
    for (;;) {
        // The expression's first match starts at the next "<", and where no "*"
        // comes before the next ">" it ends at that ">": its lazy parts try the
        // shortest way first. Only the other tags need the engine.
        const qsizetype open = text.indexOf(u'<', done);
        if (open < 0)
            break;
        const qsizetype close = text.indexOf(u'>', open + 1);
        if (close >= 0 && QStringView(text).sliced(open, close - open).indexOf(u'*') < 0) {
            out += QStringView(text).sliced(done, open - done);
            out += u' ';
            done = close + 1;
            continue;
        }
        const QRegularExpressionMatch match = tag.match(text, open, QRegularExpression::NormalMatch, options);
        if (!match.isValid())
            return std::nullopt;
        if (!match.hasMatch())
            break;
        out += QStringView(text).sliced(done, match.capturedStart() - done);
        out += u' ';
        done = match.capturedEnd();
    }
    out += QStringView(text).sliced(done);
    return ReplaceEntities(out);
}

QString HelpText::ConvertSafeText(const QString& text)
{
    static constexpr QStringView Special = u".\\|$^*+?[()";
    QString out;
    out.reserve(text.size() * 2);
    for (QChar c : text) {
        if (Special.contains(c))
            out += u'\\';
        out += c;
    }
    return out;
}

QString HelpText::SearchHighlightText(const QString& term, const QString& html)
{
    if (term.isEmpty())
        return {};
    const QRegularExpression pattern(ConvertSafeText(term) + NotInATag, Options);
    if (!pattern.isValid())
        return {};
    // The mark is appended as it is: a backslash or "$" in the term is text.
    const QString mark = HighlightStart.toString() + term.toUpper() + HighlightEnd.toString();
    const auto options = CheckedOnce(html);
    qsizetype done = BodyStart(html);
    QString out = html.left(done);
    for (qsizetype from = done;;) {
        const QRegularExpressionMatch match = pattern.match(html, from, QRegularExpression::NormalMatch, options);
        if (!match.isValid())
            return {};
        if (!match.hasMatch())
            break;
        // A term such as "x{0}" matches nothing; there is nothing to mark then.
        if (match.capturedLength() == 0) {
            from = match.capturedStart() + 1;
            if (from > html.size())
                break;
            continue;
        }
        out += QStringView(html).sliced(done, match.capturedStart() - done);
        out += mark;
        done = from = match.capturedEnd();
    }
    out += QStringView(html).sliced(done);
    return out;
}

QString HelpText::SearchHighlight(const QString& term, const QString& filePath)
{
    const std::optional<QByteArray> bytes = ReadFile(filePath);
    return bytes ? SearchHighlightText(term, QString::fromUtf8(*bytes)) : QString();
}

bool HelpText::ContainsTerm(QStringView text, const QString& term)
{
    return text.contains(term, Qt::CaseInsensitive);
}

HelpText::SourceKind HelpText::KindOf(const QString& source)
{
    if (source.startsWith(u'#'))
        return SourceKind::Placeholder;
    if ((source.contains(QLatin1String("://")) || source.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive))
        && !source.contains(u' '))
        return SourceKind::External;
    if (source.contains(QLatin1String("UHScript:"), Qt::CaseInsensitive))
        return SourceKind::Script;
    return SourceKind::File;
}

namespace {

// The path a `source` of the file kind names below `helpFolder`, whether or not it exists.
QString PagePath(const QString& helpFolder, const QString& source)
{
    if (HelpText::KindOf(source) != HelpText::SourceKind::File)
        return {};
    QString decoded = source;
    decoded.replace(QLatin1String("%20"), QLatin1String(" ")).replace(QLatin1String("%26"), QLatin1String("&"));
    const QStringList fields = decoded.split(u'/');
    for (const QString& field : fields)
        if (!IsPlainName(field))
            return {};
    return QDir(helpFolder).filePath(fields.join(u'/'));
}

// The bytes of a regular file, in one open: a search reads a thousand pages,
// and a name in the index that is a pipe or a device must not hang it.
std::optional<QByteArray> ReadRegularFile(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return std::nullopt;
    struct stat info {};
    std::optional<QByteArray> bytes;
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
        QByteArray data(static_cast<qsizetype>(info.st_size), Qt::Uninitialized);
        qsizetype got = 0;
        bool failed = false;
        while (got < data.size()) {
            const ssize_t n = ::read(fd, data.data() + got, static_cast<size_t>(data.size() - got));
            if (n < 0 && errno == EINTR)
                continue;
            failed = n < 0;
            if (n <= 0)
                break;
            got += n;
        }
        data.truncate(got);
        if (!failed)
            bytes = std::move(data);
    }
    ::close(fd);
    return bytes;
}

} // namespace

QString HelpText::PageFile(const QString& helpFolder, const QString& source)
{
    const QString path = PagePath(helpFolder, source);
    return !path.isEmpty() && QFileInfo(path).isFile() ? path : QString();
}

bool HelpText::SearchPage(const QString& term, const QString& source, const QString& helpFolder)
{
    const QString path = PagePath(helpFolder, source);
    if (path.isEmpty())
        return false;
    const std::optional<QByteArray> bytes = ReadRegularFile(path);
    if (!bytes || !MayContain(*bytes, term))
        return false;
    // A blank of the term may stand for a tag, but each word between blanks
    // lies whole in one stretch of the page's text: a page without one of them
    // need not be stripped.
    if (term.contains(u' ')) {
        for (const QString& word : term.split(u' ', Qt::SkipEmptyParts))
            if (!MayContain(*bytes, word))
                return false;
    }
    const std::optional<QString> text = StripHTML(QString::fromUtf8(*bytes));
    return text && ContainsTerm(*text, term);
}
