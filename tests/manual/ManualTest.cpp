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

namespace {

const QDir Help(QStringLiteral(VEXIL_HELP_SOURCE_DIR));

QString Read(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Each page or topic of an XML file of the folder: name, source, chapters above it.
QList<std::tuple<QString, QString, int>> Entries(const QString& file, QStringList& faults)
{
    QList<std::tuple<QString, QString, int>> entries;
    QXmlStreamReader xml(Read(Help.filePath(file)));
    for (int depth = 0; !xml.atEnd() && xml.readNext() != QXmlStreamReader::Invalid;) {
        const bool chapter = xml.name().compare(QLatin1String("chapter"), Qt::CaseInsensitive) == 0;
        if (xml.isStartElement() && !chapter && xml.attributes().hasAttribute(QLatin1String("name")))
            entries.append({xml.attributes().value(QLatin1String("name")).toString(),
                            xml.attributes().value(QLatin1String("source")).toString(), depth});
        depth += xml.isStartElement() && chapter ? 1 : xml.isEndElement() && chapter ? -1 : 0;
    }
    if (xml.hasError())
        faults << file + QStringLiteral(": ") + xml.errorString();
    return entries;
}

// The file of the folder a relative path names, or empty when it is missing or lies outside.
QString Resolve(const QString& relative)
{
    const QString clean = QDir::cleanPath(relative);
    if (relative.isEmpty() || QDir::isAbsolutePath(clean) || clean == QLatin1String("..") || clean.startsWith(QLatin1String("../")))
        return {};
    return QFileInfo(Help.filePath(clean)).isFile() ? Help.filePath(clean) : QString();
}

bool IsExternal(const QString& link)
{
    return link.contains(QLatin1String("://")) || link.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive);
}

TEST(Manual, FolderIsWhole)
{
    QStringList faults, listed, index;
    int deepest = 0;
    for (const QString& file : {QStringLiteral("uhtoc.xml"), QStringLiteral("uhindex.xml")}) {
        for (const auto& [name, source, depth] : Entries(file, faults)) {
            // The viewer decodes only these two, then walks the parts from the folder.
            const QString decoded = QString(source).replace(QLatin1String("%20"), QLatin1String(" ")).replace(QLatin1String("%26"), QLatin1String("&"));
            (file == QLatin1String("uhtoc.xml") ? listed : index) << (file == QLatin1String("uhtoc.xml") ? decoded : name);
            deepest = std::max(deepest, depth);
            if (!source.startsWith(u'#') && !IsExternal(source) && Resolve(decoded).isEmpty())
                faults << file + QStringLiteral(": \"") + name + QStringLiteral("\" names a missing file: ") + source;
        }
    }
    if (deepest < 2 || !listed.contains(QStringLiteral("GettingStarted.htm")))
        faults << QStringLiteral("uhtoc.xml: no chapter inside a chapter, or no Getting Started page");
    // The field scrolls to the first entry that starts with the typed text, case ignored.
    for (qsizetype i = 1; i < index.size(); ++i)
        if (index[i - 1].toLower() > index[i].toLower() || index[i].isEmpty())
            faults << QStringLiteral("uhindex.xml: \"%1\" stands after \"%2\"").arg(index[i], index[i - 1]);
    if (index.size() < 60)
        faults << QStringLiteral("uhindex.xml: fewer than 60 entries");

    static const QRegularExpression attribute(QStringLiteral("\\b(href|src)\\s*=\\s*\"([^\"]*)\""),
                                              QRegularExpression::CaseInsensitiveOption);
    for (QDirIterator it(Help.path(), {QStringLiteral("*.htm")}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString page = Help.relativeFilePath(it.next());
        if (!listed.contains(page))
            faults << page + QStringLiteral(": not in uhtoc.xml, so search never finds it");
        for (auto links = attribute.globalMatch(Read(it.filePath())); links.hasNext();) {
            const QString link = links.next().captured(2);
            if (IsExternal(link))
                continue;
            const QString path = QUrl::fromPercentEncoding(link.section(u'#', 0, 0).toUtf8());
            const QString target = path.isEmpty() ? it.filePath() : Resolve(QFileInfo(page).dir().filePath(path));
            const QString anchor = link.section(u'#', 1);
            const QRegularExpression named(QStringLiteral("\\b(name|id)=\"") + QRegularExpression::escape(anchor) + u'"');
            if (target.isEmpty() || (!anchor.isEmpty() && !named.match(Read(target)).hasMatch()))
                faults << page + QStringLiteral(": link to a missing file or anchor, or out of the folder: ") + link;
        }
    }
    EXPECT_TRUE(QFileInfo(Help.filePath(QStringLiteral("VexilUtility.htm"))).isFile()) << "no start page";
    EXPECT_TRUE(faults.isEmpty()) << faults.join(u'\n').toStdString();
}

} // namespace
