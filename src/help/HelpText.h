#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <optional>

// The help's work on page text, without widgets: what a page says once its
// markup is gone, whether it holds a search term, and the page with the term
// marked. Pages are read from disk at each call; nothing is cached.
namespace HelpText {

inline constexpr QStringView HighlightStart = u"<span style=\"font-weight: bold;background: #FFFF66;\">";
inline constexpr QStringView HighlightEnd = u"</span>";

// The page's text from its "<body" on, every tag a blank and the entity table
// applied. Empty (no value) when the tag expression runs into the regular
// expression engine's limits: such a page holds no term.
std::optional<QString> StripHTML(QStringView html);

// The entity table applied to `text` in one pass; the same text as replacing
// each row in turn, numeric form before named, and "&amp;" last.
QString ReplaceEntities(QStringView text);

// One row form of the entity table: "&", `form`, ";" becomes `character`.
struct EntityForm {
    const char* form;
    char16_t character;
    bool exactCase; // otherwise case is ignored, in ASCII
};
// The forms in the order of the table, each numeric form before its named
// form, "&amp;" last: the order in which replacing them one after the other
// gives the text ReplaceEntities gives.
QList<EntityForm> EntityForms();

// `text` with a backslash before each of . \ | $ ^ * + ? [ ( ), so that it
// matches itself in a regular expression.
QString ConvertSafeText(const QString& text);

// `html` with every occurrence of `term` after "<body", and outside a tag,
// replaced by the term in capitals between the highlight marks. Empty when
// nothing can be marked (an empty term, a term that makes no valid pattern, a
// page the engine cannot scan within its limits).
QString SearchHighlightText(const QString& term, const QString& html);
// The same for a page file; empty when the file cannot be read.
QString SearchHighlight(const QString& term, const QString& filePath);

// The substring test of the search: the whole term, blanks included, case ignored.
bool ContainsTerm(QStringView text, const QString& term);

// The kinds of a `source` value of the contents or the index.
enum class SourceKind { Placeholder, External, Script, File };
SourceKind KindOf(const QString& source);

// The existing file a `source` of the file kind names below `helpFolder`
// ("%20" a blank, "%26" "&", "/" between plain names); empty for any other
// kind, a name that is not plain, or a missing file.
QString PageFile(const QString& helpFolder, const QString& source);

// True when the page that `source` names holds `term` in its stripped text.
bool SearchPage(const QString& term, const QString& source, const QString& helpFolder);

} // namespace HelpText
