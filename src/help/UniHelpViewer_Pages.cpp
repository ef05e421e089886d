// What the viewer shows: pages by their kind, the kinds of a source and of a
// followed link, and the history behind back, next and the history menu.
#include "UniHelpViewer.h"

#include "HelpFileKind.h"
#include "HelpPlatform.h"
#include "HelpText.h"
#include "HelpXml.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpGlobals.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

namespace {

QString RequestedFileText()
{
    return QStringLiteral("The requested file is either invalid or could not be found or there is not enough memory "
                          "to open it.");
}

bool IsExternalSource(const QString& value)
{
    return (value.contains(QLatin1String("://")) || value.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive))
        && !value.contains(QLatin1Char(' '));
}

bool IsExternalUrl(const QString& url)
{
    return url.contains(QLatin1String("http://"), Qt::CaseInsensitive)
        || url.contains(QLatin1String("https://"), Qt::CaseInsensitive)
        || url.contains(QLatin1String("ftp://"), Qt::CaseInsensitive)
        || url.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive);
}

int ScriptAt(const QString& value)
{
    return value.indexOf(QLatin1String("UHScript:"), 0, Qt::CaseInsensitive);
}

// A single quote is how a script inside an HTML attribute carries a double one.
QString DecodeScript(const QString& value)
{
    QString script = value.mid(ScriptAt(value) + 9);
    const int end = ScriptAt(script);
    if (end >= 0)
        script.truncate(end);
    return script.replace(QLatin1String("%20"), QLatin1String(" "))
        .replace(QLatin1String("%26"), QLatin1String("&"))
        .replace(QLatin1Char('\''), QLatin1Char('"'));
}

} // namespace

QString UniHelpViewer::ResolveSource(const QString& source, bool& nil) const
{
    nil = false;
    const QString decoded =
        QString(source).replace(QLatin1String("%20"), QLatin1String(" ")).replace(QLatin1String("%26"), QLatin1String("&"));
    QDir folder(HelpFolder);
    const QStringList fields = decoded.split(QLatin1Char('/'));
    for (int i = 0; i < fields.size(); ++i) {
        const QString& field = fields.at(i);
        // Only plain names: nothing outside the help folder opens.
        if (field.isEmpty() || field == QLatin1String(".") || field == QLatin1String(".."))
            return QString();
        if (i == fields.size() - 1)
            return folder.filePath(field);
        if (!folder.cd(field)) {
            nil = true;
            return QString();
        }
    }
    return QString();
}

bool UniHelpViewer::InsideHelpFolder(const QString& file) const
{
    const QString folder = QFileInfo(HelpFolder).canonicalFilePath();
    const QString path = QFileInfo(file).canonicalFilePath();
    return !folder.isEmpty() && path.startsWith(folder + QLatin1Char('/'));
}

void UniHelpViewer::LoadHelpFile(const QString& file, bool addHistory, bool highlight, const QString& term)
{
    if (file.isEmpty() || !QFileInfo::exists(file))
        return;
    switch (KindOfHelpFile(QFileInfo(file).fileName())) {
    case HelpFileKind::Text:
    case HelpFileKind::Page:
        if (addHistory) {
            AddToHistory(file);
            IsBackHistory = true;
            PaintBack();
            PaintHistory();
        }
        break;
    case HelpFileKind::Image:
    case HelpFileKind::Movie:
    case HelpFileKind::Sound:
        // Pictures and media never enter the history.
        break;
    case HelpFileKind::Unknown:
        return;
    }
    IsUHLink = true;
    // Only a page is marked: a picture or a text file would be shown as mangled text.
    if (highlight && UseFullTextSearch && ShowSearchHighlights && KindOfHelpFile(QFileInfo(file).fileName()) == HelpFileKind::Page) {
        // Shown from memory; the file on disk stays as it is.
        const QString marked = HelpText::SearchHighlight(term, file);
        if (!marked.isEmpty()) {
            HelpView->LoadText(marked, file);
            return;
        }
    }
    HelpView->LoadFile(file);
}

void UniHelpViewer::OpenPage(const QString& file)
{
    TabSelected(0);
    const QString page = !file.isEmpty() ? file : HomePage;
    if (page.isEmpty()) {
        ListTOC(HelpFolder);
        return;
    }
    AddToHistory(page);
    ListTOC(page);
    LoadHelpFile(page, false, false, QString());
}

void UniHelpViewer::RunSourceScript(const QString& value)
{
    if (m_globals.UniHelp)
        m_globals.UniHelp->RunScript(DecodeScript(value));
}

void UniHelpViewer::GetSelectedTopic(QTreeWidgetItem* row, int listKind)
{
    QTreeWidget* list = listKind == 1 ? IndexList : listKind == 2 ? SearchList : HelpList;
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    if (!row || selected.isEmpty() || selected.first()->text(0).isEmpty())
        return;
    QString value, term;
    if (listKind == 1) {
        if (row->text(2) != QLatin1String("topic"))
            return;
        value = row->text(3);
    } else if (listKind == 2) {
        value = row->text(1);
        term = row->text(2);
    } else {
        if (row->text(2) != QLatin1String("page"))
            return;
        value = row->text(3);
    }

    if (value.startsWith(QLatin1Char('#')))
        return;
    if (IsExternalSource(value)) {
        m_globals.Platform().OpenUrl(value);
        return;
    }
    if (ScriptAt(value) >= 0) {
        if (m_globals.UniHelp)
            m_globals.UniHelp->RunScript(DecodeScript(value));
        return;
    }
    bool nil = false;
    const QString file = ResolveSource(value, nil);
    if (nil) {
        m_globals.UHError(RequestedFileText());
        return;
    }
    if (file.isEmpty() || !QFileInfo::exists(file))
        return;
    if (listKind == 1 || listKind == 2)
        ListTOC(file);
    LoadHelpFile(file, true, listKind == 2, term);
}

bool UniHelpViewer::HelpView_CancelLoad(const QUrl& url)
{
    const QString text = url.toString();
    if (IsExternalUrl(text)) {
        m_globals.Platform().OpenUrl(text);
        return true;
    }
    if (ScriptAt(text) >= 0) {
        if (m_globals.UniHelp)
            m_globals.UniHelp->RunScript(DecodeScript(text));
        return true;
    }
    // A link that leaves the help folder goes nowhere, as a missing file would.
    return url.isLocalFile() && !InsideHelpFolder(url.toLocalFile());
}

void UniHelpViewer::HelpView_DocumentComplete(const QUrl& url)
{
    if (!IsUHLink) {
        // The reader followed a link in the page: it enters the history now.
        const QString file = url.toLocalFile();
        const QString name = QFileInfo(file).fileName();
        if (QFileInfo::exists(file)
            && (name.contains(QLatin1String(".htm"), Qt::CaseInsensitive)
                || name.contains(QLatin1String(".txt"), Qt::CaseInsensitive))) {
            AddToHistory(file);
            IsBackHistory = true;
            PaintBack();
            PaintHistory();
            ListTOC(file);
        }
    }
    IsUHLink = false;
}

void UniHelpViewer::HelpView_StatusChanged(const QString& text)
{
    const QString link = text.section(QLatin1Char('"'), 1, 1);
    // Qt gives a link's scheme in lower case, so none of these may depend on case.
    constexpr auto any = Qt::CaseInsensitive;
    if (link.contains(QLatin1String("http://"), any) || link.contains(QLatin1String("https://"), any)
        || link.contains(QLatin1String("ftp://"), any) || link.startsWith(QLatin1String("mailto:"), any))
        StatusLabel->setText(link);
    else if (link.contains(QLatin1String("UHScript:"), any))
        StatusLabel->setText(QStringLiteral("Click to Run Script"));
    else
        StatusLabel->clear();
}

void UniHelpViewer::AddToHistory(const QString& file)
{
    if (file.isEmpty() || !QFileInfo::exists(file))
        return;
    QString title = QFileInfo(file).fileName();
    if (!tocxml) {
        m_globals.UHError(TocMissingText());
        return;
    }
    try {
        const pugi::xpath_node found = tocxml->select_node(
            (QStringLiteral("//*[translate(name(),'PAGE','page')='page'][@source='") + RelativeToHelpFolder(file) + QStringLiteral("']")).toUtf8().constData());
        if (found)
            title = Attribute(found.node(), "name");
    } catch (const pugi::xpath_exception&) {
        m_globals.UHError(TocInvalidText());
        return;
    }
    HistoryFile.insert(HistoryNum, file);
    HistoryTitle.insert(HistoryNum, title);
}

void UniHelpViewer::BtnBack_MouseDown()
{
    if (!IsBackHistory)
        return;
    const int u = HistoryFile.size() - 1;
    if (HistoryNum < u - 1)
        ++HistoryNum;
    const QString entry = HistoryFile.value(HistoryNum);
    IsNextHistory = u > 1 && HistoryNum != 0;
    PaintNext();
    IsBackHistory = HistoryNum < u - 1;
    PaintBack();
    PaintHistory();
    if (!entry.isEmpty()) {
        ListTOC(entry);
        LoadHelpFile(entry, false, false, QString());
    }
}

void UniHelpViewer::BtnNext_MouseDown()
{
    if (!IsNextHistory)
        return;
    const int u = HistoryFile.size() - 1;
    if (HistoryNum > 0)
        --HistoryNum;
    const QString entry = HistoryFile.value(HistoryNum);
    IsBackHistory = HistoryNum < u - 1;
    PaintBack();
    IsNextHistory = u > 1 && HistoryNum != 0;
    PaintNext();
    PaintHistory();
    if (!entry.isEmpty()) {
        ListTOC(entry);
        LoadHelpFile(entry, false, false, QString());
    }
}

void UniHelpViewer::BtnHistory_MouseDown()
{
    ShowUHistoryMenu();
}

void UniHelpViewer::ShowUHistoryMenu()
{
    if (!IsBackHistory && !IsNextHistory)
        return;
    UHistoryMenu.clear();
    // The newest fifteen; older entries stay but are not listed.
    const int last = std::min<int>(HistoryFile.size() - 1, 14);
    for (int index = 0; index <= last; ++index)
        if (!HistoryFile.at(index).isEmpty())
            AddUHistoryMenu(HistoryTitle.at(index), HistoryFile.at(index), index);
    QStringList titles;
    int checked = -1;
    for (const UniHelpHistory& item : UHistoryMenu) {
        if (item.mChecked)
            checked = titles.size();
        titles << item.mPageTitle;
    }
    const int chosen = m_globals.Platform().HistoryMenu(titles, checked);
    if (chosen >= 0 && chosen < static_cast<int>(UHistoryMenu.size())) {
        const UniHelpHistory item = UHistoryMenu.at(chosen);
        item.Action(*this);
    }
}

void UniHelpViewer::AddUHistoryMenu(const QString& title, const QString& file, int index)
{
    UHistoryMenu.emplace_back(title, file, index == HistoryNum);
}

void UniHelpViewer::LoadHistoryTopic(const QString&, const QString& file)
{
    if (file.isEmpty())
        return;
    ListTOC(file);
    LoadHelpFile(file, true, false, QString());
}
