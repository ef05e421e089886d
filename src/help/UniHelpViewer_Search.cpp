// The index tab's incremental match and the search tab: attribute and page
// text search over the contents, and the page of a hit opened with the term marked.
#include "UniHelpViewer.h"

#include "HelpPlatform.h"
#include "HelpText.h"
#include "HelpXml.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpGlobals.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTreeWidget>

namespace {

QString NoMatchesText()
{
    return QStringLiteral("Sorry, No Matches Were Found.");
}

QString InternalErrorText()
{
    return QStringLiteral("An Internal Error occurred, preventing the search from being performed.");
}

// Up to two blanks is no term; three or more are searched for.
bool IsEmptyTerm(const QString& term)
{
    return term.isEmpty() || term == QLatin1String(" ") || term == QLatin1String("  ");
}

// Pages in document order, so depth first, as the contents list them.
void CollectPages(const pugi::xml_node& node, std::vector<pugi::xml_node>& pages)
{
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() != pugi::node_element)
            continue;
        if (IsNamed(child, "page"))
            pages.push_back(child);
        CollectPages(child, pages);
    }
}

} // namespace

void UniHelpViewer::IndexField_TextChange()
{
    const int last = IndexList->topLevelItemCount() - 1;
    if (last < 0)
        return;
    const QString text = IndexField->text();
    const int n = text.size();
    const auto matches = [&](int row) {
        return IndexList->topLevelItem(row)->text(0).left(n).compare(text, Qt::CaseInsensitive) == 0;
    };
    int row = 0;
    while (!matches(row) && row < last)
        ++row;
    m_indexMatch = matches(row) ? row : -1;
    if (!matches(row))
        return;
    // Top of the view where the list is long enough; near its end the last
    // rows fill the view and the row shows lower down.
    IndexList->scrollToItem(IndexList->topLevelItem(row), QAbstractItemView::PositionAtTop);
}

void UniHelpViewer::IndexList_Change()
{
    const QList<QTreeWidgetItem*> selected = IndexList->selectedItems();
    if (!selected.isEmpty())
        GetSelectedTopic(selected.first(), 1);
}

bool UniHelpViewer::SearchField_KeyDown(int key)
{
    if (key == 13)
        StartSearch();
    return false;
}

void UniHelpViewer::SearchBtn_Action()
{
    StartSearch();
}

void UniHelpViewer::SearchList_Change()
{
    const QList<QTreeWidgetItem*> selected = SearchList->selectedItems();
    if (!selected.isEmpty())
        GetSelectedTopic(selected.first(), 2);
}

void UniHelpViewer::StartSearch()
{
    SearchList->clear();
    StatusLabel->clear();
    const QString term = SearchField->text();
    if (IsEmptyTerm(term)) {
        m_globals.UHError(QStringLiteral("Please enter a keyword or phrase that you wish to search for."));
        return;
    }
    if (term.toLower() == QLatin1String("unihelp credits")) {
        m_globals.Platform().CreditsBox(
            QStringLiteral("Vexil Utility Help"),
            QStringLiteral("The help viewer of Vexil Utility: contents, index and full-text search over the manual "
                           "that ships with the program."));
        return;
    }
    SearchTOC(term);
    if (SearchList->topLevelItemCount() == 0) {
        m_globals.Platform().Beep();
        StatusLabel->setText(NoMatchesText());
    }
    SearchField->setFocus();
    SearchField->selectAll();
}

void UniHelpViewer::SearchTOC(const QString& term)
{
    if (!tocxml) {
        m_globals.UHError(TocMissingText());
        return;
    }
    std::vector<pugi::xml_node> pages;
    CollectPages(*tocxml, pages);
    for (const pugi::xml_node& page : pages) {
        const QString name = Attribute(page, "name");
        const QString source = Attribute(page, "source");
        const bool hit = HelpText::ContainsTerm(name, term) || HelpText::ContainsTerm(Attribute(page, "key"), term)
            || HelpText::ContainsTerm(Attribute(page, "desc"), term)
            || (UseFullTextSearch && HelpText::SearchPage(term, source, HelpFolder));
        if (!hit)
            continue;
        auto* row = new QTreeWidgetItem(SearchList);
        row->setText(0, name);
        row->setIcon(0, IconPage);
        row->setText(1, source);
        row->setText(2, term);
    }
}

void UniHelpViewer::ShowStartPage()
{
    if (!HomePage.isEmpty()) {
        AddToHistory(HomePage);
        ListTOC(HomePage);
        LoadHelpFile(HomePage, false, false, QString());
    } else {
        ListTOC(HelpFolder);
    }
}

void UniHelpViewer::OpenSearch(const QString& term)
{
    TabSelected(2);
    SearchList->clear();
    StatusLabel->clear();
    if (IsEmptyTerm(term)) {
        SearchField->clear();
    } else {
        SearchField->setText(term);
        SearchTOC(term);
    }
    if (SearchList->topLevelItemCount() == 0) {
        ShowStartPage();
        m_globals.Platform().Beep();
        StatusLabel->setText(NoMatchesText());
        return;
    }
    const QString source = SearchList->topLevelItem(0)->text(1);
    switch (HelpText::KindOf(source)) {
    case HelpText::SourceKind::Placeholder:
        ShowStartPage();
        return;
    case HelpText::SourceKind::External:
        ShowStartPage();
        m_globals.Platform().OpenUrl(source);
        return;
    case HelpText::SourceKind::Script:
        ShowStartPage();
        RunSourceScript(source);
        return;
    case HelpText::SourceKind::File:
        break;
    }
    bool nil = false;
    const QString file = ResolveSource(source, nil);
    if (nil) {
        m_globals.UHError(InternalErrorText());
        return;
    }
    if (file.isEmpty() || !QFileInfo::exists(file)) {
        ShowStartPage();
        return;
    }
    AddToHistory(file);
    ListTOC(file);
    LoadHelpFile(file, false, true, term);
}
