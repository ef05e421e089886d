// The viewer's lists: both XML files, the contents tree and the way down
// to the page shown, the index rows.
#include "UniHelpViewer.h"

#include "HelpXml.h"
#include "UniHelpGlobals.h"

#include <pugixml.hpp>

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

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

namespace {

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

void UniHelpViewer::ListTOC(const QString& page)
{
    HelpList->clear();
    if (tocxml)
        ListTOCFolder(tocxml->document_element(), QStringLiteral("helpbook"), nullptr);
    SelectListTopic(page);
}

void UniHelpViewer::HelpList_ExpandRow(QTreeWidgetItem* row)
{
    row->setIcon(0, IconCategoryOpen);
    // The children are made afresh each time the chapter opens.
    qDeleteAll(row->takeChildren());
    const auto* element = reinterpret_cast<pugi::xml_node_struct*>(row->data(1, Qt::UserRole).value<quintptr>());
    RowsAdded = element ? ListTOCFolder(pugi::xml_node(const_cast<pugi::xml_node_struct*>(element)), row->text(1), row) : 0;
}

void UniHelpViewer::HelpList_CollapseRow(QTreeWidgetItem* row)
{
    row->setIcon(0, IconCategory);
}

QString UniHelpViewer::RelativeToHelpFolder(const QString& file) const
{
    const QString folder = QFileInfo(HelpFolder).absoluteFilePath();
    QString path = QFileInfo(file).absoluteFilePath();
    if (path == folder)
        return QString();
    if (path.startsWith(folder + QLatin1Char('/')))
        path.remove(0, folder.size() + 1);
    return QDir::fromNativeSeparators(path);
}

void UniHelpViewer::SelectListTopic(const QString& page)
{
    FirstRow = 0;
    RowsAdded = HelpList->topLevelItemCount() - 1 + FirstRow;
    if (!tocxml)
        return;
    pugi::xpath_node_set found;
    try {
        found = tocxml->select_nodes(
            (QStringLiteral("//*[translate(name(),'PAGE','page')='page'][@source='") + RelativeToHelpFolder(page) + QStringLiteral("']")).toUtf8().constData());
    } catch (const pugi::xpath_exception&) {
        m_globals.UHError(TocInvalidText());
        return;
    }
    if (found.empty())
        return;
    // The way down is the names from the outermost chapter to the page; a
    // slash inside a name is escaped so that the name stays one step.
    pugi::xml_node node = found.first().node();
    QString way = Attribute(node, "name").replace(QLatin1String("/"), QLatin1String("%2f"));
    while (node.parent().type() == pugi::node_element && !IsNamed(node.parent(), "helpbook")) {
        node = node.parent();
        way = Attribute(node, "name").replace(QLatin1String("/"), QLatin1String("%2f")) + QLatin1Char('/') + way;
    }
    for (const QString& step : way.split(QLatin1Char('/')))
        SelectListDig(step);
}

void UniHelpViewer::SelectListDig(const QString& escapedName)
{
    const QString name = QString(escapedName).replace(QLatin1String("%2f"), QLatin1String("/"));
    QList<QTreeWidgetItem*> rows;
    for (QTreeWidgetItem* row = HelpList->topLevelItem(0); row; row = HelpList->itemBelow(row))
        rows << row;
    for (int r = FirstRow; r <= RowsAdded && r < rows.size(); ++r) {
        QTreeWidgetItem* row = rows.at(r);
        if (row->text(0).compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (row->text(2) == QLatin1String("chapter")) {
            // Opening it runs HelpList_ExpandRow, which leaves the count of new rows.
            RowsAdded = 0;
            row->setExpanded(true);
            FirstRow = r + 1;
            RowsAdded = r + RowsAdded;
            return;
        }
        if (row->text(2) == QLatin1String("page")) {
            HelpList->setCurrentItem(row);
            row->setSelected(true);
            return;
        }
    }
}

void UniHelpViewer::HelpList_DoubleClick()
{
    const QList<QTreeWidgetItem*> selected = HelpList->selectedItems();
    if (!selected.isEmpty())
        selected.first()->setExpanded(!selected.first()->isExpanded());
}
