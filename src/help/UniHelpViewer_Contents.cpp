// The viewer's lists and pages: both XML files, the contents rows, and what
// a page load and a followed link do.
#include "UniHelpViewer.h"

#include "HelpFileKind.h"
#include "HelpPlatform.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpGlobals.h"

#include <pugixml.hpp>

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

namespace {

QString TocMissingText()
{
    return QStringLiteral("UniHelp cannot read the uhtoc.xml file. Please make sure that it is located in the help "
                          "folder and that it is compatible with UniHelp.");
}

QString TocInvalidText()
{
    return QStringLiteral("UniHelp cannot read the uhtoc.xml file. Please make sure that it is a valid XML file that "
                          "is compatible with UniHelp's TOC format.");
}

bool IsNamed(const pugi::xml_node& node, const char* name)
{
    return node.type() == pugi::node_element
        && QString::fromUtf8(node.name()).compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

QString Attribute(const pugi::xml_node& node, const char* name)
{
    return QString::fromUtf8(node.attribute(name).value());
}

// Parses `path` into a new document; empty when the file is missing, with
// `invalid` set when it is there but not well-formed XML.
std::unique_ptr<pugi::xml_document> ParseHelpXml(const QString& path, bool& invalid)
{
    invalid = false;
    if (!QFileInfo(path).isFile())
        return nullptr;
    auto document = std::make_unique<pugi::xml_document>();
    const pugi::xml_parse_result result = document->load_file(QFile::encodeName(path).constData());
    if (!result || !document->document_element()) {
        invalid = true;
        return nullptr;
    }
    return document;
}

} // namespace

bool UniHelpViewer::LoadTOC()
{
    bool invalid = false;
    tocxml = HelpFolder.isEmpty() ? nullptr : ParseHelpXml(QDir(HelpFolder).filePath(QStringLiteral("uhtoc.xml")), invalid);
    if (!tocxml) {
        m_globals.UHError(invalid ? TocInvalidText() : TocMissingText());
        StartError = true;
        return false;
    }
    return true;
}

void UniHelpViewer::ListIndex()
{
    IndexList->clear();
    bool invalid = false;
    indexml = HelpFolder.isEmpty() ? nullptr : ParseHelpXml(QDir(HelpFolder).filePath(QStringLiteral("uhindex.xml")), invalid);
    if (!indexml) {
        m_globals.UHError(
            invalid ? QStringLiteral("UniHelp cannot read the uhindex.xml file. Please make sure that it is a valid XML "
                                     "file that is compatible with UniHelp's Index format.")
                    : QStringLiteral("UniHelp cannot read the uhindex.xml file. Please make sure that it is located in "
                                     "the help folder and that it is compatible with UniHelp."));
        StartError = true;
        return;
    }
    int topics = 0;
    for (const pugi::xml_node& child : indexml->document_element().children()) {
        if (!IsNamed(child, "topic"))
            continue;
        ++topics;
        auto* row = new QTreeWidgetItem(IndexList);
        row->setText(0, Attribute(child, "name"));
        row->setText(1, QStringLiteral("helpindex/topic[%1]").arg(topics));
        row->setText(2, QStringLiteral("topic"));
        row->setText(3, Attribute(child, "source"));
    }
}

QTreeWidgetItem* UniHelpViewer::AddTocRow(const pugi::xml_node& node, const QString& address, QTreeWidgetItem* parent)
{
    auto* row = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(HelpList);
    row->setText(0, Attribute(node, "name"));
    row->setText(1, address);
    if (IsNamed(node, "chapter")) {
        row->setIcon(0, IconCategory);
        row->setText(2, QStringLiteral("chapter"));
        // The element the chapter's rows are made from when it opens.
        row->setData(1, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(node.internal_object())));
        row->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    } else {
        row->setIcon(0, IconPage);
        row->setText(2, QStringLiteral("page"));
        row->setText(3, Attribute(node, "source"));
    }
    return row;
}

int UniHelpViewer::ListTOCFolder(const pugi::xml_node& node, const QString& path, QTreeWidgetItem* parent)
{
    int chapters = 0, pages = 0, added = 0;
    for (const pugi::xml_node& child : node.children()) {
        if (IsNamed(child, "chapter"))
            AddTocRow(child, path + QStringLiteral("/chapter[%1]").arg(++chapters), parent);
        else if (IsNamed(child, "page"))
            AddTocRow(child, path + QStringLiteral("/page[%1]").arg(++pages), parent);
        else
            continue;
        ++added;
    }
    return added;
}

void UniHelpViewer::ListTOC(const QString&)
{
    HelpList->clear();
    if (tocxml)
        ListTOCFolder(tocxml->document_element(), QStringLiteral("helpbook"), nullptr);
}

void UniHelpViewer::HelpList_ExpandRow(QTreeWidgetItem* row)
{
    row->setIcon(0, IconCategoryOpen);
    // The children are made afresh each time the chapter opens.
    qDeleteAll(row->takeChildren());
    const auto* element = reinterpret_cast<pugi::xml_node_struct*>(row->data(1, Qt::UserRole).value<quintptr>());
    if (element)
        ListTOCFolder(pugi::xml_node(const_cast<pugi::xml_node_struct*>(element)), row->text(1), row);
}

void UniHelpViewer::HelpList_CollapseRow(QTreeWidgetItem* row)
{
    row->setIcon(0, IconCategory);
}

void UniHelpViewer::OpenPage(const QString& file)
{
    TabSelected(0);
    const QString page = !file.isEmpty() ? file : HomePage;
    if (page.isEmpty()) {
        ListTOC(HelpFolder);
        return;
    }
    ListTOC(page);
    LoadHelpFile(page, false, false, QString());
}

void UniHelpViewer::OpenSearch(const QString& term)
{
    TabSelected(2);
    SearchField->setText(term);
    ListTOC(HelpFolder);
}

void UniHelpViewer::LoadHelpFile(const QString& file, bool, bool, const QString&)
{
    if (file.isEmpty() || !QFileInfo::exists(file) || KindOfHelpFile(QFileInfo(file).fileName()) == HelpFileKind::Unknown)
        return;
    IsUHLink = true;
    HelpView->LoadFile(file);
}

bool UniHelpViewer::HelpView_CancelLoad(const QUrl& url)
{
    const QString text = url.toString();
    if (text.contains(QLatin1String("http://"), Qt::CaseInsensitive)
        || text.contains(QLatin1String("https://"), Qt::CaseInsensitive)
        || text.contains(QLatin1String("ftp://"), Qt::CaseInsensitive)
        || text.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive)) {
        m_globals.Platform().OpenUrl(text);
        return true;
    }
    const int script = text.indexOf(QLatin1String("UHScript:"), 0, Qt::CaseInsensitive);
    if (script >= 0) {
        QString decoded = text.mid(script + 9);
        decoded.replace(QLatin1String("%20"), QLatin1String(" "))
            .replace(QLatin1String("%26"), QLatin1String("&"))
            .replace(QLatin1Char('\''), QLatin1Char('"'));
        if (m_globals.UniHelp)
            m_globals.UniHelp->RunScript(decoded);
        return true;
    }
    return false;
}

void UniHelpViewer::HelpView_StatusChanged(const QString& text)
{
    const QString link = text.section(QLatin1Char('"'), 1, 1);
    if (link.contains(QLatin1String("http://")) || link.contains(QLatin1String("https://"))
        || link.contains(QLatin1String("ftp://")) || link.startsWith(QLatin1String("mailto:")))
        StatusLabel->setText(link);
    else if (link.contains(QLatin1String("UHScript:")))
        StatusLabel->setText(QStringLiteral("Click to Run Script"));
    else
        StatusLabel->clear();
}
