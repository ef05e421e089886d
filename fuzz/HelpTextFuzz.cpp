// Fuzz target for the help's text functions: the first line of the input is a
// search term, the rest a page. StripHTML must give the text of replacing the
// entity table's forms one after the other, as the table reads, and a page
// the tag expression cannot strip must end as such, not hang. SearchHighlight
// must leave everything before "<body" alone and, for a term of letters and
// digits, change nothing but the marked occurrences of the term.
//
// CorpusReplay.cpp replays its corpus as an ordinary test.

#include "HelpText.h"

#include <QRegularExpression>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void Violated(const char* rule, int line)
{
    std::fprintf(stderr, "HelpTextFuzz.cpp:%d: invariant violated: %s\n", line, rule);
    std::abort();
}

#define HELPTEXT_CHECK(cond)           \
    do {                               \
        if (!(cond))                   \
            Violated(#cond, __LINE__); \
    } while (0)

// The slow way, for comparison: every form of the table in turn over the whole
// text, case ignored in ASCII where the row says so.
QString ReplaceOneByOne(QString text)
{
    for (const HelpText::EntityForm& entity : HelpText::EntityForms()) {
        const QString form = QLatin1Char('&') + QLatin1String(entity.form) + QLatin1Char(';');
        QString out;
        qsizetype at = 0;
        while (at < text.size()) {
            bool same = at + form.size() <= text.size();
            for (qsizetype i = 0; same && i < form.size(); ++i) {
                const QChar a = text[at + i], b = form[i];
                same = entity.exactCase || a.unicode() >= 0x80 ? a == b : a.toLower() == b.toLower();
            }
            out += same ? QChar(entity.character) : text[at];
            at += same ? form.size() : 1;
        }
        text = out;
    }
    return text;
}

bool IsWord(const QString& term)
{
    static const QRegularExpression word(QStringLiteral("^[A-Za-z0-9]+$"));
    return word.match(term).hasMatch();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype newline = input.indexOf(QLatin1Char('\n'));
    const QString term = newline < 0 ? QString() : input.left(newline);
    const QString page = newline < 0 ? input : input.mid(newline + 1);

    if (const std::optional<QString> stripped = HelpText::StripHTML(page)) {
        const qsizetype body = page.indexOf(QLatin1String("<body"), 0, Qt::CaseInsensitive);
        static const QRegularExpression tag(QStringLiteral("<(.*\\r)*[^*]*>"), QRegularExpression::CaseInsensitiveOption
                                                                                   | QRegularExpression::InvertedGreedinessOption);
        const QString tagsGone = page.mid(std::max<qsizetype>(body, 0)).replace(tag, QStringLiteral(" "));
        HELPTEXT_CHECK(*stripped == ReplaceOneByOne(tagsGone));
    }

    const QString marked = HelpText::SearchHighlightText(term, page);
    if (marked.isEmpty())
        return 0;
    const qsizetype body = std::max<qsizetype>(page.indexOf(QLatin1String("<body"), 0, Qt::CaseInsensitive), 0);
    HELPTEXT_CHECK(marked.left(body) == page.left(body));
    if (IsWord(term)) {
        const QString mark = HelpText::HighlightStart.toString() + term.toUpper() + HelpText::HighlightEnd.toString();
        HELPTEXT_CHECK(QString(marked).replace(mark, term).compare(page, Qt::CaseInsensitive) == 0);
    }
    return 0;
}
