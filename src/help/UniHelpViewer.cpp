#include "UniHelpViewer.h"

#include "HelpPlatform.h"
#include "HtmlHelpView.h"
#include "UniHelpGlobals.h"
#include "UniHelpHistory.h"

#include <pugixml.hpp>

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QShortcut>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>

namespace {

using L = DesignLayout;

QIcon StyleIcon(QStyle::StandardPixmap pixmap)
{
    return QApplication::style()->standardIcon(pixmap);
}

QIcon ThemeIcon(const char* name, QStyle::StandardPixmap fallback)
{
    return QIcon::fromTheme(QLatin1String(name), StyleIcon(fallback));
}

// A list with hidden cells 1 to 3 behind the shown text, no heading, and a
// scroll bar only when needed.
QTreeWidget* MakeList(QWidget* parent, const char* name, bool tree)
{
    auto* list = new QTreeWidget(parent);
    list->setObjectName(QLatin1String(name));
    list->setColumnCount(4);
    for (int column = 1; column < 4; ++column)
        list->setColumnHidden(column, true);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(tree);
    list->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return list;
}

constexpr const char* HelpTabProperty = "helpTab";

// The three tab buttons, checkable tool buttons to the toolkit, are page tabs to a screen reader.
class HelpTabAccessible : public QAccessibleWidget {
public:
    explicit HelpTabAccessible(QWidget* button) : QAccessibleWidget(button, QAccessible::PageTab) {}
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.selected = static_cast<QToolButton*>(widget())->isChecked();
        return state;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& action) override
    {
        if (action == pressAction())
            static_cast<QToolButton*>(widget())->click();
    }
};

QAccessibleInterface* HelpTabFactory(const QString& className, QObject* object)
{
    if (className == QLatin1String("QToolButton") && object && object->property(HelpTabProperty).toBool())
        return new HelpTabAccessible(static_cast<QWidget*>(object));
    return nullptr;
}

void InstallHelpTabAccessibility()
{
    static const bool installed = [] {
        QAccessible::installFactory(HelpTabFactory);
        return true;
    }();
    (void)installed;
}

} // namespace

UniHelpViewer::UniHelpViewer(UniHelpGlobals& globals, QWidget* parent)
    : QWidget(parent, Qt::Window), m_globals(globals), m_layout(QSize(DesignWidth, DesignHeight))
{
    setObjectName(QStringLiteral("UniHelpViewer"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Help"));
    setMinimumSize(400, 200);
    setMaximumSize(32000, 32000);
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    resize(DesignWidth, DesignHeight);
    // Moves without a button pressed set the divider's cursor.
    setMouseTracking(true);
    BuildControls();
    HistoryNum = 0;
    IsUHLink = false;
}

UniHelpViewer::~UniHelpViewer() = default;

void UniHelpViewer::BuildControls()
{
    auto add = [this](QWidget* widget, const char* name, QRect rect, int locks, const char* tip = nullptr) {
        widget->setObjectName(QLatin1String(name));
        if (tip)
            widget->setToolTip(QLatin1String(tip));
        m_layout.Add(widget, rect, locks);
    };
    auto button = [this, &add](const char* name, QRect rect, int locks, const char* tip, const QIcon& icon) {
        auto* b = new QToolButton(this);
        b->setAutoRaise(true);
        b->setIcon(icon);
        b->setIconSize(QSize(rect.width() - 4, rect.height() - 4).boundedTo(QSize(22, 22)));
        // Reached with Tab, not taken by a click: the click's target keeps the focus.
        b->setFocusPolicy(Qt::TabFocus);
        add(b, name, rect, locks, tip);
        return b;
    };

    // The backdrops first, so the controls on them stay above.
    TopNavSpacer = new QWidget(this);
    add(TopNavSpacer, "TopNavSpacer", {0, 0, 240, 4}, L::None);
    TopNavBar = new QWidget(this);
    add(TopNavBar, "TopNavBar", {108, 4, 132, 32}, L::Left | L::Top);
    for (QWidget* bar : {TopNavSpacer, TopNavBar}) {
        bar->setAutoFillBackground(true);
        QPalette shade = bar->palette();
        shade.setColor(QPalette::Window, palette().color(QPalette::Button));
        bar->setPalette(shade);
    }
    HelpTabs = new QWidget(this);
    add(HelpTabs, "HelpTabs", {-1, 44, 232, 331}, L::Left | L::Top | L::Bottom);

    BtnBack = button("BtnBack", {117, 5, 21, 27}, L::Left | L::Top, "Go Back in the History",
                     StyleIcon(QStyle::SP_ArrowBack));
    BtnNext = button("BtnNext", {138, 5, 21, 27}, L::Left | L::Top, "Go Forward in the History",
                     StyleIcon(QStyle::SP_ArrowForward));
    BtnHistory = button("BtnHistory", {159, 18, 15, 14}, L::Left | L::Top, "History List",
                        StyleIcon(QStyle::SP_ArrowDown));
    BtnHome = button("BtnHome", {175, 5, 27, 27}, L::Left | L::Top, "Go to the Home Page",
                     StyleIcon(QStyle::SP_DirHomeIcon));
    BtnPrint = button("BtnPrint", {203, 5, 27, 27}, L::Left | L::Top, "Print the Selected Page",
                      ThemeIcon("document-print", QStyle::SP_FileDialogDetailedView));
    BtnPrint->hide();
    BtnPrint->setEnabled(false);
    BtnContents = button("BtnContents", {0, 4, 37, 32}, L::Left | L::Top, "Contents (Alt+C)", StyleIcon(QStyle::SP_DirClosedIcon));
    BtnIndex = button("BtnIndex", {36, 4, 37, 32}, L::Left | L::Top, "Index (Alt+I)", StyleIcon(QStyle::SP_FileDialogListView));
    BtnSearch = button("BtnSearch", {72, 4, 37, 32}, L::Left | L::Top, "Search (Alt+S)",
                       ThemeIcon("edit-find", QStyle::SP_FileDialogContentsView));
    for (QToolButton* tab : {BtnContents, BtnIndex, BtnSearch}) {
        tab->setCheckable(true);
        // A screen reader announces these as the page tabs they are.
        tab->setProperty(HelpTabProperty, true);
    }
    InstallHelpTabAccessibility();

    HelpList = MakeList(this, "HelpList", true);
    add(HelpList, "HelpList", {-1, 44, 231, 326}, L::Left | L::Top | L::Bottom);
    IndexField = new QLineEdit(this);
    add(IndexField, "IndexField", {5, 44, 225, 22}, L::Left | L::Top);
    IndexList = MakeList(this, "IndexList", false);
    add(IndexList, "IndexList", {-1, 72, 231, 298}, L::Left | L::Top | L::Bottom);
    SearchField = new QLineEdit(this);
    add(SearchField, "SearchField", {5, 44, 190, 22}, L::Left | L::Top);
    SearchBtn = button("SearchBtn", {200, 44, 30, 22}, L::None, "Find", ThemeIcon("edit-find", QStyle::SP_FileDialogContentsView));
    SearchList = MakeList(this, "SearchList", false);
    add(SearchList, "SearchList", {-1, 72, 231, 298}, L::Left | L::Top | L::Bottom);

    VertGrabber = new QWidget(this);
    VertGrabber->setCursor(Qt::SizeHorCursor);
    add(VertGrabber, "VertGrabber", {233, 200, 3, 24}, L::Left);
    HelpView = new HtmlHelpView(this);
    add(HelpView, "HelpView", {240, 0, 460, 370}, L::All);
    // Names for screen readers, which have no caption to read beside these.
    HelpList->setAccessibleName(QStringLiteral("Contents"));
    IndexField->setAccessibleName(QStringLiteral("Find in the index"));
    IndexList->setAccessibleName(QStringLiteral("Index"));
    SearchField->setAccessibleName(QStringLiteral("Search for"));
    SearchList->setAccessibleName(QStringLiteral("Search results"));
    HelpView->setAccessibleName(QStringLiteral("Help page"));
    const std::pair<QWidget*, const char*> names[] = {
        {BtnBack, "Back"}, {BtnNext, "Forward"}, {BtnHistory, "History"}, {BtnHome, "Home page"},
        {BtnPrint, "Print page"}, {BtnContents, "Contents"}, {BtnIndex, "Index"}, {BtnSearch, "Search"},
        {SearchBtn, "Find"},
    };
    for (const auto& [widget, name] : names)
        widget->setAccessibleName(QLatin1String(name));
    StatusLabel = new QLabel(this);
    QPalette grey = StatusLabel->palette();
    grey.setColor(QPalette::WindowText, QColor(0x66, 0x66, 0x66));
    StatusLabel->setPalette(grey);
    add(StatusLabel, "StatusLabel", {243, 375, 442, 20}, L::Left | L::Right | L::Bottom);

    BtnUp = button("BtnUp", {10, 376, 16, 18}, L::Left | L::Bottom, "Select the Previous Topic", StyleIcon(QStyle::SP_ArrowUp));
    BtnDown = button("BtnDown", {26, 376, 17, 18}, L::Left | L::Bottom, "Select the Next Topic", StyleIcon(QStyle::SP_ArrowDown));
    BtnSmaller = button("BtnSmaller", {53, 376, 16, 18}, L::Left | L::Bottom, "Make List Text Smaller", {});
    BtnSmaller->setText(QStringLiteral("a"));
    BtnLarger = button("BtnLarger", {69, 376, 17, 18}, L::Left | L::Bottom, "Make List Text Bigger", {});
    BtnLarger->setText(QStringLiteral("A"));
    BtnCollapse = button("BtnCollapse", {96, 376, 16, 18}, L::Left | L::Bottom, "Collapse Contents List",
                         StyleIcon(QStyle::SP_TitleBarShadeButton));
    BtnExpand = button("BtnExpand", {112, 376, 17, 18}, L::Left | L::Bottom, "Expand Contents List",
                       StyleIcon(QStyle::SP_TitleBarUnshadeButton));

    const std::pair<QWidget*, const char*> listButtons[] = {
        {BtnUp, "Previous topic"}, {BtnDown, "Next topic"}, {BtnSmaller, "Smaller list text"},
        {BtnLarger, "Larger list text"}, {BtnCollapse, "Collapse all chapters"}, {BtnExpand, "Expand all chapters"},
    };
    for (const auto& [widget, name] : listButtons)
        widget->setAccessibleName(QLatin1String(name));
    // Tab goes round the tabs, the field and list shown, the page, the toolbar and the list buttons.
    const QList<QWidget*> order{BtnContents, BtnIndex, BtnSearch, IndexField, SearchField, SearchBtn, HelpList, IndexList,
                                SearchList, HelpView, BtnBack, BtnNext, BtnHistory, BtnHome, BtnPrint, BtnUp, BtnDown,
                                BtnSmaller, BtnLarger, BtnCollapse, BtnExpand};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    AddKeys();

    for (QWidget* field : std::initializer_list<QWidget*>{HelpList, IndexList, SearchList, StatusLabel, IndexField, SearchField}) {
        QFont font = field->font();
        font.setPointSize(11);
        field->setFont(font);
    }

    connect(BtnContents, &QToolButton::clicked, this, [this] { TabSelected(0); });
    connect(BtnIndex, &QToolButton::clicked, this, [this] { TabSelected(1); });
    connect(BtnSearch, &QToolButton::clicked, this, [this] { TabSelected(2); });
    connect(BtnUp, &QToolButton::clicked, this, &UniHelpViewer::BtnUp_MouseDown);
    connect(BtnDown, &QToolButton::clicked, this, &UniHelpViewer::BtnDown_MouseDown);
    connect(BtnSmaller, &QToolButton::clicked, this, &UniHelpViewer::BtnSmaller_MouseDown);
    connect(BtnLarger, &QToolButton::clicked, this, &UniHelpViewer::BtnLarger_MouseDown);
    connect(BtnCollapse, &QToolButton::clicked, this, &UniHelpViewer::BtnCollapse_MouseDown);
    connect(BtnExpand, &QToolButton::clicked, this, &UniHelpViewer::BtnExpand_MouseDown);
    connect(BtnHome, &QToolButton::clicked, this, &UniHelpViewer::BtnHome_MouseDown);
    connect(BtnPrint, &QToolButton::clicked, this, &UniHelpViewer::BtnPrint_MouseDown);
    connect(HelpList, &QTreeWidget::itemExpanded, this, &UniHelpViewer::HelpList_ExpandRow);
    connect(HelpList, &QTreeWidget::itemCollapsed, this, &UniHelpViewer::HelpList_CollapseRow);

    HelpView->CancelLoad = [this](const QUrl& url) { return HelpView_CancelLoad(url); };
    HelpView->OpenExternally = [this](const QString& path) { return m_globals.Platform().OpenDocument(path); };
    connect(HelpView, &HtmlHelpView::StatusChanged, this, &UniHelpViewer::HelpView_StatusChanged);
    connect(HelpView, &HtmlHelpView::Error, this,
            [this](int code, const QString& description) {
                // A failed load completes nothing, so the next one starts afresh.
                IsUHLink = false;
                m_globals.UHViewerError(code, description);
            });
    connect(HelpView, &HtmlHelpView::DocumentComplete, this, &UniHelpViewer::HelpView_DocumentComplete);
    connect(BtnBack, &QToolButton::clicked, this, &UniHelpViewer::BtnBack_MouseDown);
    connect(BtnNext, &QToolButton::clicked, this, &UniHelpViewer::BtnNext_MouseDown);
    connect(BtnHistory, &QToolButton::clicked, this, &UniHelpViewer::BtnHistory_MouseDown);
    // The list selects the row before the click is seen here.
    connect(HelpList, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* row) { GetSelectedTopic(row, 0); });
    HelpList->setExpandsOnDoubleClick(false);
    connect(HelpList, &QTreeWidget::itemDoubleClicked, this, &UniHelpViewer::HelpList_DoubleClick);
    connect(IndexList, &QTreeWidget::itemSelectionChanged, this, &UniHelpViewer::IndexList_Change);
    connect(IndexField, &QLineEdit::textChanged, this, &UniHelpViewer::IndexField_TextChange);
    // Return opens: the index entry the typed text matched, a search hit, a contents row.
    connect(IndexField, &QLineEdit::returnPressed, this, [this] {
        if (QTreeWidgetItem* row = IndexList->topLevelItem(m_indexMatch); row && m_indexMatch >= 0)
            IndexList->setCurrentItem(row);
    });
    connect(SearchList, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* row) { GetSelectedTopic(row, 2); });
    HelpList->installEventFilter(this);
    connect(SearchField, &QLineEdit::returnPressed, this, [this] { SearchField_KeyDown(13); });
    connect(SearchBtn, &QToolButton::clicked, this, &UniHelpViewer::SearchBtn_Action);
    connect(SearchList, &QTreeWidget::itemSelectionChanged, this, &UniHelpViewer::SearchList_Change);

    PaintBack();
    PaintNext();
    PaintHistory();
    TabSelected(0);
}

void UniHelpViewer::CustomizeHelp()
{
    StartError = false;
    if (!m_globals.UHViewerStatus(HelpView->Available())) {
        m_globals.UHError(QStringLiteral("The WebKit library required by the HTML Help Viewer is not installed."));
        StartError = true;
        return;
    }
    if (HelpFolder.isEmpty() || !QFileInfo(HelpFolder).isDir()) {
        m_globals.UHError(QStringLiteral("The \"") + QFileInfo(HelpFolder).fileName()
                          + QStringLiteral("\" folder is missing! This folder must remain in the same directory as "
                                           "the application."));
        StartError = true;
        return;
    }
    QRect placed(QPoint(0, 0), size());
    placed.moveCenter(m_globals.Platform().AvailableScreen().center());
    setGeometry(placed);
    SetFontName(FontName);
    SetFontSize(FontSize);
    ConfigureGraphics();
    PaintPrint();
    LoadTOC();
    ListIndex();
}

void UniHelpViewer::ConfigureGraphics()
{
    BtnContents->setIcon(IconCategory);
}

void UniHelpViewer::AddKeys()
{
    const auto key = [this](const QKeySequence& sequence, std::function<void()> action) {
        auto* shortcut = new QShortcut(sequence, this);
        connect(shortcut, &QShortcut::activated, this, std::move(action));
    };
    key(QKeySequence(QStringLiteral("Alt+C")), [this] { TabSelected(0); HelpList->setFocus(); });
    key(QKeySequence(QStringLiteral("Alt+I")), [this] { TabSelected(1); });
    key(QKeySequence(QStringLiteral("Alt+S")), [this] { TabSelected(2); });
    key(QKeySequence::Find, [this] {
        TabSelected(2);
        SearchField->selectAll();
    });
    key(QKeySequence(QStringLiteral("Alt+Left")), [this] { BtnBack->click(); });
    key(QKeySequence(QStringLiteral("Alt+Right")), [this] { BtnNext->click(); });
    key(QKeySequence(QStringLiteral("Alt+Home")), [this] { BtnHome->click(); });
    for (const QKeySequence& larger : {QKeySequence(QKeySequence::ZoomIn), QKeySequence(QStringLiteral("Ctrl+="))})
        key(larger, [this] { HelpView->Zoom(HelpView->ZoomSteps() + 1); });
    key(QKeySequence::ZoomOut, [this] { HelpView->Zoom(HelpView->ZoomSteps() - 1); });
    key(QKeySequence(QStringLiteral("Ctrl+0")), [this] { HelpView->Zoom(0); });
}

bool UniHelpViewer::eventFilter(QObject* watched, QEvent* event)
{
    // Return on a contents row opens it, as a click does.
    if (watched == HelpList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && HelpList->currentItem()) {
            GetSelectedTopic(HelpList->currentItem(), 0);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void UniHelpViewer::TabSelected(int tab)
{
    const int previous = m_panel;
    m_panel = tab;
    for (QWidget* w : std::initializer_list<QWidget*>{HelpList})
        w->setVisible(tab == 0);
    for (QWidget* w : std::initializer_list<QWidget*>{IndexField, IndexList})
        w->setVisible(tab == 1);
    for (QWidget* w : std::initializer_list<QWidget*>{SearchField, SearchBtn, SearchList})
        w->setVisible(tab == 2);
    // Typing works at once in the tab chosen.
    if (tab == 1)
        IndexField->setFocus();
    if (tab == 2)
        SearchField->setFocus();
    PaintTabs();
    BtnCollapse->setVisible(tab == 0);
    BtnCollapse->setEnabled(tab == 0);
    BtnExpand->setVisible(tab == 0);
    BtnExpand->setEnabled(tab == 0);
    if (previous != tab)
        StatusLabel->clear();
}

void UniHelpViewer::PaintTabs()
{
    BtnContents->setChecked(m_panel == 0);
    BtnIndex->setChecked(m_panel == 1);
    BtnSearch->setChecked(m_panel == 2);
}

// A button is "on" (enabled, framed under the mouse) only while it can act.
void UniHelpViewer::PaintBack()
{
    BtnBack->setEnabled(IsBackHistory);
}

void UniHelpViewer::PaintNext()
{
    BtnNext->setEnabled(IsNextHistory);
}

void UniHelpViewer::PaintHistory()
{
    BtnHistory->setEnabled(IsBackHistory || IsNextHistory);
}

void UniHelpViewer::PaintPrint()
{
    BtnPrint->setVisible(ShowPrintButton);
    BtnPrint->setEnabled(ShowPrintButton);
}

void UniHelpViewer::SetFontSize(int size)
{
    const int applied = size >= 9 && size <= 16 ? size : 11;
    for (QWidget* w : std::initializer_list<QWidget*>{HelpList, IndexList, SearchList, StatusLabel, IndexField, SearchField}) {
        QFont font = w->font();
        font.setPointSize(applied);
        w->setFont(font);
    }
}

int UniHelpViewer::CurrentFontSize() const
{
    return StatusLabel->font().pointSize();
}

bool UniHelpViewer::FontCheck(const QString& name)
{
    const QStringList families = QFontDatabase::families();
    return std::any_of(families.begin(), families.end(),
                       [&name](const QString& family) { return family.compare(name, Qt::CaseInsensitive) == 0; });
}

void UniHelpViewer::SetFontName(const QString& name)
{
    // The last fall-back is the desktop's own font for ordinary text.
    const QString family = FontCheck(name)      ? name
        : FontCheck(AltFont)                    ? AltFont
                                                : QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    for (QWidget* w : std::initializer_list<QWidget*>{HelpList, SearchList, SearchField, IndexList, IndexField, StatusLabel}) {
        QFont font = w->font();
        font.setFamily(family);
        w->setFont(font);
    }
}

void UniHelpViewer::BtnSmaller_MouseDown()
{
    if (CurrentFontSize() > 9)
        SetFontSize(CurrentFontSize() - 1);
}

void UniHelpViewer::BtnLarger_MouseDown()
{
    if (CurrentFontSize() < 16)
        SetFontSize(CurrentFontSize() + 1);
}

QTreeWidget* UniHelpViewer::CurrentList() const
{
    return m_panel == 1 ? IndexList : m_panel == 2 ? SearchList : HelpList;
}

void UniHelpViewer::StepSelection(bool down)
{
    QTreeWidget* list = CurrentList();
    QTreeWidgetItem* selected = list->selectedItems().isEmpty() ? nullptr : list->selectedItems().first();
    if (!selected)
        return;
    QTreeWidgetItem* next = down ? list->itemBelow(selected) : list->itemAbove(selected);
    if (!next)
        return;
    selected->setSelected(false);
    list->setCurrentItem(next);
    next->setSelected(true);
    // The index opens its topic on the selection change; the tree has none.
    if (list == HelpList)
        GetSelectedTopic(next, 0);
}

void UniHelpViewer::BtnUp_MouseDown()
{
    StepSelection(false);
}

void UniHelpViewer::BtnDown_MouseDown()
{
    StepSelection(true);
}

void UniHelpViewer::SetChaptersExpanded(bool expanded)
{
    if (m_panel != 0)
        return;
    // Opening a chapter adds its rows below it, and the walk goes on into them.
    for (QTreeWidgetItem* row = HelpList->topLevelItem(0); row; row = HelpList->itemBelow(row))
        if (row->text(2) == QLatin1String("chapter"))
            row->setExpanded(expanded);
}

void UniHelpViewer::BtnCollapse_MouseDown()
{
    SetChaptersExpanded(false);
}

void UniHelpViewer::BtnExpand_MouseDown()
{
    SetChaptersExpanded(true);
}

void UniHelpViewer::BtnHome_MouseDown()
{
    if (!HomePage.isEmpty()) {
        ListTOC(HomePage);
        LoadHelpFile(HomePage, true, false, QString());
    }
}

void UniHelpViewer::BtnPrint_MouseDown()
{
    if (ShowPrintButton)
        m_globals.UHPrint(*HelpView);
}

bool UniHelpViewer::IsCursorGrabbing(int x, int y) const
{
    return x > HelpList->width() - 1 && x < HelpView->x() && y > HelpList->y() && y < height();
}

void UniHelpViewer::Event_MouseMove(int x, int y)
{
    if (IsCursorGrabbing(x, y))
        setCursor(Qt::SizeHorCursor);
    else
        unsetCursor();
}

bool UniHelpViewer::Event_MouseDown(int x, int y)
{
    return IsCursorGrabbing(x, y);
}

void UniHelpViewer::MoveHorizontally(QWidget* widget, int left, int width)
{
    QRect r = widget->geometry();
    r.moveLeft(left);
    r.setWidth(width);
    m_layout.Place(widget, r, size());
}

void UniHelpViewer::Event_MouseDrag(int x, int)
{
    const int w = width();
    int p = 0;
    if (x > SplitMin && x < w - SplitRightMargin)
        p = x;
    else if (x < SplitMin)
        p = SplitMin;
    else if (x > w - SplitRightMargin)
        p = w - SplitRightMargin;
    else
        return;
    for (QTreeWidget* list : {HelpList, SearchList, IndexList})
        MoveHorizontally(list, list->x(), p + 1);
    MoveHorizontally(SearchField, SearchField->x(), p - 40);
    MoveHorizontally(SearchBtn, p - 30, SearchBtn->width());
    MoveHorizontally(IndexField, IndexField->x(), p - 5);
    MoveHorizontally(HelpTabs, HelpTabs->x(), p + 2);
    MoveHorizontally(VertGrabber, p + 3, VertGrabber->width());
    MoveHorizontally(HelpView, p + 10, w - (p + 10));
    MoveHorizontally(TopNavSpacer, TopNavSpacer->x(), p + 10);
    MoveHorizontally(TopNavBar, TopNavBar->x(), p + 10 - TopNavBar->x());
    MoveHorizontally(StatusLabel, p + 13, w - (p + 29));
}

void UniHelpViewer::Event_Resized()
{
    QRect r = VertGrabber->geometry();
    r.moveTop(height() / 2);
    m_layout.Place(VertGrabber, r, size());
}

void UniHelpViewer::CopyGeometry()
{
    const QRect g = geometry();
    m_globals.UHelpLeft = g.left();
    m_globals.UHelpTop = g.top();
    m_globals.UHelpWidth = g.width();
    m_globals.UHelpHeight = g.height();
}

void UniHelpViewer::Event_Deactivate()
{
    CopyGeometry();
}

bool UniHelpViewer::Event_KeyDown(int key, Qt::KeyboardModifiers modifiers)
{
    // Control is the menu-shortcut key here (Qt maps it to Command on a Mac).
    if (key == Qt::Key_W && modifiers.testFlag(Qt::ControlModifier)) {
        close();
        return true;
    }
    return false;
}

void UniHelpViewer::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_layout.Apply(size());
    Event_Resized();
}

void UniHelpViewer::closeEvent(QCloseEvent* event)
{
    CopyGeometry();
    m_globals.UHClosed();
    event->accept();
}

void UniHelpViewer::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        Event_Deactivate();
}

void UniHelpViewer::keyPressEvent(QKeyEvent* event)
{
    if (!Event_KeyDown(event->key(), event->modifiers()))
        QWidget::keyPressEvent(event);
}

void UniHelpViewer::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    m_dragging = event->button() == Qt::LeftButton && Event_MouseDown(at.x(), at.y());
    if (!m_dragging)
        QWidget::mousePressEvent(event);
}

void UniHelpViewer::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (m_dragging)
        Event_MouseDrag(at.x(), at.y());
    else
        Event_MouseMove(at.x(), at.y());
}

void UniHelpViewer::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    QWidget::mouseReleaseEvent(event);
}
