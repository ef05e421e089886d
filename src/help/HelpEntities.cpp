#include "HelpText.h"

#include <array>

namespace {

using Entity = HelpText::EntityForm;

// The table's rows, each numeric form then its named form. Every form begins
// with "&" and ends at its first ";", and no replacement is a character of a
// form, so at most one form matches at any "&" and replacing in one pass left
// to right gives the text of replacing row after row. "&amp;" stands apart:
// it must be matched too, but what it yields is never looked at again.
constexpr Entity Row(const char* form, char16_t c) { return {form, c, false}; }
constexpr Entity Exact(const char* form, char16_t c) { return {form, c, true}; }

constexpr std::array Table{
    Row("#34", u'"'), Row("quot", u'"'), Row("#174", u'®'), Row("reg", u'®'), Row("#169", u'©'), Row("copy", u'©'),
    Row("#8482", u'™'), Row("trade", u'™'), Row("#163", u'£'), Row("pound", u'£'), Row("#162", u'¢'), Row("cent", u'¢'),
    Row("#8364", u'€'), Row("euro", u'€'), Row("#176", u'°'), Row("deg", u'°'),
    Row("#8722", u'-'), Row("minus", u'-'), // the hyphen-minus, not U+2212
    Row("#177", u'±'), Row("plusmn", u'±'), Row("#8800", u'≠'), Row("ne", u'≠'), Row("#8734", u'∞'), Row("infin", u'∞'),
    Row("#181", u'µ'), Row("micro", u'µ'),
    Row("#039", u'\''), Row("apos", u'\''), // with the leading zero: "&#39;" stays
    Row("#165", u'¥'), Row("yen", u'¥'),
    Row("#8212", u'\u2013'), Row("mdash", u'\u2013'), // the en dash, not the em dash
    Row("#192", u'À'), Exact("Agrave", u'À'), Row("#193", u'Á'), Exact("Aacute", u'Á'), Row("#194", u'Â'), Exact("Acirc", u'Â'),
    Row("#195", u'Ã'), Exact("Atilde", u'Ã'), Row("#196", u'Ä'), Exact("Auml", u'Ä'), Row("#197", u'Å'), Exact("Aring", u'Å'),
    Row("#224", u'à'), Exact("agrave", u'à'), Row("#225", u'á'), Exact("aacute", u'á'), Row("#226", u'â'), Exact("acirc", u'â'),
    Row("#227", u'ã'), Exact("atilde", u'ã'), Row("#228", u'ä'), Exact("auml", u'ä'), Row("#229", u'å'), Exact("aring", u'å'),
    Row("#199", u'Ç'), Exact("Ccedil", u'Ç'), Row("#231", u'ç'), Exact("ccedil", u'ç'),
    Row("#200", u'È'), Exact("Egrave", u'È'), Row("#201", u'É'), Exact("Eacute", u'É'), Row("#202", u'Ê'), Exact("Ecirc", u'Ê'),
    Row("#203", u'Ë'), Exact("Euml", u'Ë'), Row("#232", u'è'), Exact("egrave", u'è'), Row("#233", u'é'), Exact("eacute", u'é'),
    Row("#234", u'ê'), Exact("ecirc", u'ê'), Row("#235", u'ë'), Exact("euml", u'ë'),
    Row("#204", u'Ì'), Exact("Igrave", u'Ì'), Row("#205", u'Í'), Exact("Iacute", u'Í'), Row("#206", u'Î'), Exact("Icirc", u'Î'),
    Row("#207", u'Ï'), Exact("Iuml", u'Ï'), Row("#236", u'ì'), Exact("igrave", u'ì'), Row("#237", u'í'), Exact("iacute", u'í'),
    Row("#238", u'î'), Exact("icirc", u'î'), Row("#239", u'ï'), Exact("iuml", u'ï'),
    Row("#209", u'Ñ'), Exact("Ntilde", u'Ñ'), Row("#241", u'ñ'), Exact("ntilde", u'ñ'),
    Row("#210", u'Ò'), Exact("Ograve", u'Ò'), Row("#211", u'Ó'), Exact("Oacute", u'Ó'), Row("#212", u'Ô'), Exact("Ocirc", u'Ô'),
    Row("#213", u'Õ'), Exact("Otilde", u'Õ'), Row("#214", u'Ö'), Exact("Ouml", u'Ö'), Row("#242", u'ò'), Exact("ograve", u'ò'),
    Row("#243", u'ó'), Exact("oacute", u'ó'), Row("#244", u'ô'), Exact("ocirc", u'ô'), Row("#245", u'õ'), Exact("otilde", u'õ'),
    Row("#246", u'ö'), Exact("ouml", u'ö'),
    Row("#217", u'Ù'), Exact("Ugrave", u'Ù'), Row("#218", u'Ú'), Exact("Uacute", u'Ú'), Row("#219", u'Û'), Exact("Ucirc", u'Û'),
    Row("#220", u'Ü'), Exact("Uuml", u'Ü'), Row("#249", u'ù'), Exact("ugrave", u'ù'), Row("#250", u'ú'), Exact("uacute", u'ú'),
    Row("#251", u'û'), Exact("ucirc", u'û'), Row("#252", u'ü'), Exact("uuml", u'ü'),
    Row("#221", u'Ý'), Exact("Yacute", u'Ý'), Row("#376", u'Ÿ'), Exact("Yuml", u'Ÿ'), Row("#253", u'ý'), Exact("yacute", u'ý'),
    Row("#255", u'ÿ'), Exact("yuml", u'ÿ'),
    Row("#223", u'ß'), Row("szlig", u'ß'), Row("#161", u'¡'), Row("iexcl", u'¡'), Row("#191", u'¿'), Row("iquest", u'¿'),
    Row("#339", u'œ'), Exact("oelig", u'œ'), Row("#338", u'Œ'), Exact("OElig", u'Œ'),
    Row("#230", u'æ'), Exact("aelig", u'æ'), Row("#198", u'Æ'), Exact("AElig", u'Æ'),
    Row("amp", u'&'), // last, and like every row not marked exact, in any case
};

// Longest form plus one: a ";" further away ends no form.
constexpr qsizetype FormLimit = 8;

char16_t AsciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
}

// Case is ignored in ASCII only: no other letter may stand in a form.
bool FormMatches(const Entity& entity, QStringView token)
{
    const char* form = entity.form;
    qsizetype i = 0;
    for (; form[i] != '\0'; ++i) {
        if (i >= token.size())
            return false;
        const char16_t want = static_cast<unsigned char>(form[i]);
        const char16_t have = token[i].unicode();
        if (entity.exactCase ? have != want : AsciiLower(have) != AsciiLower(want))
            return false;
    }
    return i == token.size();
}

} // namespace

QList<HelpText::EntityForm> HelpText::EntityForms()
{
    return QList<EntityForm>(Table.begin(), Table.end());
}

QString HelpText::ReplaceEntities(QStringView text)
{
    QString out;
    out.reserve(text.size());
    qsizetype done = 0;
    for (qsizetype amp = text.indexOf(u'&'); amp >= 0; amp = text.indexOf(u'&', done)) {
        out += text.sliced(done, amp - done);
        done = amp + 1;
        const qsizetype semicolon = text.sliced(amp + 1, std::min(FormLimit, text.size() - amp - 1)).indexOf(u';');
        if (semicolon < 0) {
            out += u'&';
            continue;
        }
        const QStringView token = text.sliced(amp + 1, semicolon);
        const Entity* found = nullptr;
        for (const Entity& entity : Table) {
            if (FormMatches(entity, token)) {
                found = &entity;
                break;
            }
        }
        if (found) {
            out += QChar(found->character);
            done = amp + 1 + semicolon + 1;
        } else {
            out += u'&';
        }
    }
    out += text.sliced(done);
    return out;
}
