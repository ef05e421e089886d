#include "HelpText.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

namespace {

using namespace HelpText;

QString Mark(const QString& term)
{
    return HighlightStart.toString() + term + HighlightEnd.toString();
}

// A "<" followed by carriage returns and asterisks: the tag expression backtracks without end.
QString Hostile()
{
    return QStringLiteral("<") + QStringLiteral("\r*").repeated(40) + QStringLiteral(">");
}

TEST(HelpText, StripHTML)
{
    const struct {
        QString html, text;
    } cases[] = {
        {u"<html><head><title>Head</title></head><BODY class=\"x\"><p>Load</p></body>"_qs, u"  Load  "_qs},
        {u"bo<b>ld</b>er"_qs, u"bo ld er"_qs},
        {u"&quot;&QUOT;&#34;&reg;&#8482;&pound;&euro;&deg;&plusmn;&ne;&infin;&micro;&yen;"_qs, u"\"\"\"®™£€°±≠∞µ¥"_qs},
        {u"&#8722;&MINUS;&#8212;&mdash;&#039;&apos;&#39;"_qs, u"--\u2013\u2013''&#39;"_qs},
        {u"&Auml;&auml;&AUML;&#196;&Yuml;&#376;&SZLIG;&iexcl;&IQUEST;&AElig;&aelig;&AELIG;&OElig;"_qs, u"Ää&AUML;ÄŸŸß¡¿Ææ&AELIG;Œ"_qs},
        {u"&amp;lt;&amp;eacute;&amp;amp;&lt;&gt;&nbsp;&&eacute;&eacute"_qs, u"&lt;&eacute;&amp;&lt;&gt;&nbsp;&é&eacute"_qs},
        {u"&ſzlig;&#x22;"_qs, u"&ſzlig;&#x22;"_qs},
        {u"&AMP;lt;&Amp;"_qs, u"&lt;&"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(StripHTML(c.html), c.text) << c.html.toStdString();

    // Each such page is given up at once, not after the engine's default limit.
    QElapsedTimer timer;
    timer.start();
    for (int page = 0; page < 20; ++page)
        EXPECT_FALSE(StripHTML(u"<body>word "_qs + Hostile().repeated(50)).has_value());
    EXPECT_LT(timer.elapsed(), 100);
}

TEST(HelpText, ConvertSafeTextAndHighlight)
{
    EXPECT_EQ(ConvertSafeText(u"a.b\\c|d$e^f*g+h?i[j]k(l)m{n}"_qs), u"a\\.b\\\\c\\|d\\$e\\^f\\*g\\+h\\?i\\[j]k\\(l\\)m{n}"_qs);
    const QString head = u"<head><title>Vexil</title></head>"_qs;
    const struct {
        QString term, html, marked;
    } cases[] = {
        {u"vexil"_qs, head + u"<body><a href=\"vexil.htm\">The Vexil</a>"_qs,
         head + u"<body><a href=\"vexil.htm\">The "_qs + Mark(u"VEXIL"_qs) + u"</a>"_qs},
        {u"(1)*"_qs, u"<body>(1)* and (1)"_qs, u"<body>"_qs + Mark(u"(1)*"_qs) + u" and (1)"_qs},
        {u"a\\1$0"_qs, u"<body>x a\\1$0"_qs, u"<body>x "_qs + Mark(u"A\\1$0"_qs)},
        {u"alt"_qs, u"<body><img alt=\"alt\">"_qs, u"<body><img alt=\"alt\">"_qs},
        {u"x{0}"_qs, u"<body>x"_qs, u"<body>x"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SearchHighlightText(c.term, c.html), c.marked) << c.term.toStdString();
}

TEST(HelpText, SearchPage)
{
    QTemporaryDir dir;
    const QDir help(dir.filePath(u"Help"_qs));
    ASSERT_TRUE(help.mkpath(u"sub"_qs));
    const auto write = [&](const QString& name, const QString& text) {
        QFile f(help.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text.toUtf8());
    };
    write(u"Load page.htm"_qs, u"<head><title>Title word</title></head><body><p title=\"attr\">Send the <b>Vexil</b> flash\nerase caf&eacute; &amp;lt; ſearch \u212Aelvin a<br>b"_qs);
    write(u"sub/Tips & Tricks.htm"_qs, u"<body>Tricks"_qs);
    write(u"hostile.htm"_qs, u"<body>Vexil "_qs + Hostile().repeated(200));
    QFile(help.filePath(u"Load page.htm"_qs)).copy(dir.filePath(u"outside.htm"_qs));
    // A pipe named as a page must not hang the search, nor may a folder.
    ASSERT_EQ(::mkfifo(QFile::encodeName(help.filePath(u"pipe.htm"_qs)).constData(), 0600), 0);
    const struct {
        QString term, source;
        bool found;
    } cases[] = {
        {u"VEXIL"_qs, u"Load%20page.htm"_qs, true},       {u"tricks"_qs, u"sub/Tips%20%26%20Tricks.htm"_qs, true},
        {u"title word"_qs, u"Load%20page.htm"_qs, false}, {u"attr"_qs, u"Load%20page.htm"_qs, false},
        {u"flash erase"_qs, u"Load%20page.htm"_qs, false}, {u"Café"_qs, u"Load%20page.htm"_qs, true},
        {u"&lt;"_qs, u"Load%20page.htm"_qs, true},        {u"search"_qs, u"Load%20page.htm"_qs, true},
        {u"a b"_qs, u"Load%20page.htm"_qs, true},         {u"kelvin"_qs, u"Load%20page.htm"_qs, true},
        {u"vexil"_qs, u"#Load%20page.htm"_qs, false},
        {u"vexil"_qs, u"UHScript:Load%20page.htm"_qs, false}, {u"vexil"_qs, u"../outside.htm"_qs, false},
        {u"vexil"_qs, u"missing.htm"_qs, false},          {u"vexil"_qs, u"hostile.htm"_qs, false},
        {u"vexil"_qs, u"pipe.htm"_qs, false},             {u"vexil"_qs, u"sub"_qs, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SearchPage(c.term, c.source, help.path()), c.found) << c.term.toStdString() << " in " << c.source.toStdString();
}

} // namespace
