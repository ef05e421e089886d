// Walks the shipped manual as the help viewer and a reader would: the two XML
// files, every source they name, every link and picture of every page.
#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>
#include <QXmlStreamReader>

#include <functional>

namespace {

const QDir Help(QStringLiteral(VEXIL_HELP_SOURCE_DIR));

struct Entry {
    QString element, name, source;
    int depth = 0; // chapters above it
};

// Every element of an XML file of the folder, in document order; `error` is set when it does not parse.
QList<Entry> ReadXml(const QString& file, QString& error)
{
    QFile f(Help.filePath(file));
    if (!f.open(QIODevice::ReadOnly)) {
        error = file + QStringLiteral(": cannot be read");
        return {};
    }
    QList<Entry> entries;
    int chapters = 0;
    QXmlStreamReader xml(&f);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const auto a = xml.attributes();
            entries.append({xml.name().toString().toLower(), a.value(QLatin1String("name")).toString(), a.value(QLatin1String("source")).toString(), chapters});
            chapters += xml.name().compare(u"chapter", Qt::CaseInsensitive) == 0;
        } else if (xml.isEndElement() && xml.name().compare(u"chapter", Qt::CaseInsensitive) == 0) {
            --chapters;
        }
    }
    if (xml.hasError())
        error = file + QStringLiteral(": ") + xml.errorString();
    return entries;
}

// A relative path below the folder, "/" between its parts: a file of the
// folder, or empty when it is missing or would lead out of the folder.
QString Resolve(const QString& relative)
{
    if (relative.isEmpty() || QDir::isAbsolutePath(relative))
        return {};
    const QString clean = QDir::cleanPath(relative);
    if (clean == QLatin1String("..") || clean.startsWith(QLatin1String("../")))
        return {};
    return QFileInfo(Help.filePath(clean)).isFile() ? Help.filePath(clean) : QString();
}

bool IsExternal(const QString& link)
{
    return link.contains(QLatin1String("://")) || link.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive);
}

QString ReadText(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

QStringList Pages()
{
    QStringList pages;
    for (QDirIterator it(Help.path(), {QStringLiteral("*.htm"), QStringLiteral("*.html")}, QDir::Files,
                         QDirIterator::Subdirectories);
         it.hasNext();)
        pages << Help.relativeFilePath(it.next());
    return pages;
}

QStringList CheckToc()
{
    QString error;
    const QList<Entry> toc = ReadXml(QStringLiteral("uhtoc.xml"), error);
    QStringList faults;
    if (!error.isEmpty())
        return {error};
    int deepest = 0;
    bool gettingStarted = false;
    for (const Entry& e : toc) {
        deepest = std::max(deepest, e.depth);
        gettingStarted |= e.element == QLatin1String("page") && e.name == QLatin1String("Getting Started");
    }
    if (deepest < 2)
        faults << QStringLiteral("uhtoc.xml: no chapter inside a chapter");
    if (!gettingStarted)
        faults << QStringLiteral("uhtoc.xml: no page \"Getting Started\", which the status log refers to");
    QStringList listed;
    for (const Entry& e : toc)
        listed << QDir::cleanPath(QUrl::fromPercentEncoding(e.source.toUtf8()));
    // Search covers only the pages of the contents.
    for (const QString& page : Pages())
        if (!listed.contains(page))
            faults << page + QStringLiteral(": not in uhtoc.xml, so search never finds it");
    return faults;
}

QStringList CheckIndex()
{
    QString error;
    const QList<Entry> index = ReadXml(QStringLiteral("uhindex.xml"), error);
    if (!error.isEmpty())
        return {error};
    QStringList faults;
    QStringList names;
    for (const Entry& e : index)
        if (e.element == QLatin1String("topic"))
            names << e.name;
    if (names.size() < 60)
        faults << QStringLiteral("uhindex.xml: %1 entries, fewer than 60").arg(names.size());
    // The field scrolls to the first entry that starts with the typed text,
    // case ignored: entries out of that order are passed over.
    for (qsizetype i = 0; i < names.size(); ++i) {
        if (names[i].isEmpty())
            faults << QStringLiteral("uhindex.xml: entry %1 has no name").arg(i + 1);
        if (i > 0 && names[i - 1].toLower() > names[i].toLower())
            faults << QStringLiteral("uhindex.xml: \"%1\" stands after \"%2\"").arg(names[i], names[i - 1]);
    }
    return faults;
}

QStringList CheckSources()
{
    QStringList faults;
    for (const QString& file : {QStringLiteral("uhtoc.xml"), QStringLiteral("uhindex.xml")}) {
        QString error;
        for (const Entry& e : ReadXml(file, error)) {
            const QString& s = e.source;
            if (e.element == QLatin1String("chapter") || e.element == QLatin1String("helpbook")
                || e.element == QLatin1String("helpindex") || s.startsWith(QLatin1Char('#'))
                || (IsExternal(s) && !s.contains(QLatin1Char(' '))))
                continue;
            // The viewer decodes only these two, then walks the parts from the folder.
            QString decoded = s;
            decoded.replace(QLatin1String("%20"), QLatin1String(" ")).replace(QLatin1String("%26"), QLatin1String("&"));
            if (Resolve(decoded).isEmpty())
                faults << file + QStringLiteral(": \"") + e.name + QStringLiteral("\" names a missing file: ") + s;
        }
    }
    return faults;
}

QStringList CheckLinks()
{
    static const QRegularExpression attribute(QStringLiteral("\\b(href|src)\\s*=\\s*\"([^\"]*)\""),
                                              QRegularExpression::CaseInsensitiveOption);
    QStringList faults;
    for (const QString& page : Pages()) {
        const QString html = ReadText(Help.filePath(page));
        for (auto it = attribute.globalMatch(html); it.hasNext();) {
            const QString link = it.next().captured(2);
            if (IsExternal(link))
                continue;
            const QString path = QUrl::fromPercentEncoding(link.section(QLatin1Char('#'), 0, 0).toUtf8());
            const QString anchor = link.section(QLatin1Char('#'), 1);
            const QString target = path.isEmpty() ? Help.filePath(page)
                                                  : Resolve(QFileInfo(page).dir().filePath(path));
            if (target.isEmpty()) {
                faults << page + QStringLiteral(": link to a missing file or out of the folder: ") + link;
                continue;
            }
            const QRegularExpression named(QStringLiteral("\\b(name|id)\\s*=\\s*\"")
                                           + QRegularExpression::escape(anchor) + QLatin1Char('"'));
            if (!anchor.isEmpty() && !named.match(ReadText(target)).hasMatch())
                faults << page + QStringLiteral(": link to a missing anchor: ") + link;
        }
    }
    return faults;
}

TEST(Manual, FolderIsWhole)
{
    ASSERT_TRUE(QFileInfo(Help.filePath(QStringLiteral("VexilUtility.htm"))).isFile()) << "no start page";
    const std::pair<const char*, std::function<QStringList()>> checks[] = {
        {"contents", CheckToc},
        {"index", CheckIndex},
        {"sources", CheckSources},
        {"links and pictures", CheckLinks},
    };
    for (const auto& [what, check] : checks) {
        const QStringList faults = check();
        EXPECT_TRUE(faults.isEmpty()) << what << ":\n  " << faults.join(QStringLiteral("\n  ")).toStdString();
    }
}

} // namespace
