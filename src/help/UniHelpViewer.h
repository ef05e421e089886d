#pragma once

#include "DesignLayout.h"
#include "UniHelpHistory.h"

#include <QIcon>
#include <QWidget>

#include <memory>
#include <vector>

class HtmlHelpView;
class QLabel;
class QLineEdit;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;
class UniHelpGlobals;
namespace pugi {
class xml_document;
class xml_node;
}

// The help window: contents, index and search lists on the left, the page
// on the right, a toolbar above, list buttons and a status line below, and a
// divider between the halves that the reader can drag. The engine creates it
// hidden, copies its settings in and calls CustomizeHelp before showing it.
class UniHelpViewer : public QWidget {
    Q_OBJECT
public:
    static constexpr int DesignWidth = 700;
    static constexpr int DesignHeight = 400;
    // The divider's left limit and its distance from the right edge.
    static constexpr int SplitMin = 230;
    static constexpr int SplitRightMargin = 220;

    explicit UniHelpViewer(UniHelpGlobals& globals, QWidget* parent = nullptr);
    ~UniHelpViewer() override;

    // Settings copied in by the engine before CustomizeHelp.
    bool UseFullTextSearch = true;
    bool ShowSearchHighlights = true;
    bool ShowPrintButton = true;
    QIcon IconCategory;
    QIcon IconCategoryOpen;
    QIcon IconPage;
    QString FontName;
    QString AltFont;
    QString PrintSettings;
    int FontSize = 11;
    QString HelpFolder;   // empty: none
    QString HomePage;     // the start page's path; empty: none

    // Set by CustomizeHelp when the window must not open.
    bool StartError = false;
    bool IsBackHistory = false;
    bool IsNextHistory = false;
    bool IsUHLink = false;
    // Visited files and their titles, index 0 the newest; the empty entry at
    // the end stays there for good.
    QStringList HistoryFile{QString()};
    QStringList HistoryTitle{QString()};
    int HistoryNum = 0;
    // The rows of HelpList the way down is looking at (first and last).
    int FirstRow = 0;
    int RowsAdded = 0;
    std::vector<UniHelpHistory> UHistoryMenu;

    // Start-up checks: the view, the folder, both XML files.
    void CustomizeHelp();
    void OpenPage(const QString& file);
    void OpenSearch(const QString& term);
    void LoadHelpFile(const QString& file, bool addHistory, bool highlight, const QString& term);

    // 0 contents, 1 index, 2 search.
    void TabSelected(int tab);
    int HelpTabsValue() const { return m_panel; }
    void SetFontSize(int size);
    // The one current size of the lists and fields.
    int CurrentFontSize() const;
    void SetFontName(const QString& name);
    static bool FontCheck(const QString& name);
    void ConfigureGraphics();

    bool IsCursorGrabbing(int x, int y) const;
    void Event_MouseMove(int x, int y);
    bool Event_MouseDown(int x, int y);
    void Event_MouseDrag(int x, int y);
    void Event_Resized();
    void Event_Deactivate();
    // True when the key was used up.
    bool Event_KeyDown(int key, Qt::KeyboardModifiers modifiers);

    void PaintBack();
    void PaintNext();
    void PaintHistory();
    void PaintPrint();
    void PaintTabs();

    void BtnUp_MouseDown();
    void BtnDown_MouseDown();
    void BtnSmaller_MouseDown();
    void BtnLarger_MouseDown();
    void BtnCollapse_MouseDown();
    void BtnExpand_MouseDown();
    void BtnHome_MouseDown();
    void BtnPrint_MouseDown();
    void BtnBack_MouseDown();
    void BtnNext_MouseDown();
    void BtnHistory_MouseDown();

    // Opens what a row of a list stands for: 0 HelpList, 1 IndexList, 2 SearchList.
    void GetSelectedTopic(QTreeWidgetItem* row, int listKind);
    void AddToHistory(const QString& file);
    void ShowUHistoryMenu();
    void AddUHistoryMenu(const QString& title, const QString& file, int index);
    void LoadHistoryTopic(const QString& title, const QString& file);
    // A file's path below the help folder, with "/" between the parts.
    QString RelativeToHelpFolder(const QString& file) const;

    bool LoadTOC();
    void ListTOC(const QString& page);
    int ListTOCFolder(const pugi::xml_node& node, const QString& path, QTreeWidgetItem* parent);
    void ListIndex();
    void IndexField_TextChange();
    void IndexList_Change();
    void StartSearch();
    void SearchTOC(const QString& term);
    // Always false: the key still reaches the field.
    bool SearchField_KeyDown(int key);
    void SearchBtn_Action();
    void SearchList_Change();
    void HelpList_ExpandRow(QTreeWidgetItem* row);
    void HelpList_CollapseRow(QTreeWidgetItem* row);
    void HelpList_DoubleClick();
    void SelectListTopic(const QString& page);
    void SelectListDig(const QString& name);

    bool HelpView_CancelLoad(const QUrl& url);
    void HelpView_StatusChanged(const QString& text);
    void HelpView_DocumentComplete(const QUrl& url);

    QWidget* TopNavSpacer;
    QWidget* TopNavBar;
    QToolButton* BtnBack;
    QToolButton* BtnNext;
    QToolButton* BtnHistory;
    QToolButton* BtnHome;
    QToolButton* BtnPrint;
    QToolButton* BtnContents;
    QToolButton* BtnIndex;
    QToolButton* BtnSearch;
    QWidget* HelpTabs;
    QTreeWidget* HelpList;
    QLineEdit* IndexField;
    QTreeWidget* IndexList;
    QLineEdit* SearchField;
    QToolButton* SearchBtn;
    QTreeWidget* SearchList;
    QWidget* VertGrabber;
    HtmlHelpView* HelpView;
    QLabel* StatusLabel;
    QToolButton* BtnUp;
    QToolButton* BtnDown;
    QToolButton* BtnSmaller;
    QToolButton* BtnLarger;
    QToolButton* BtnCollapse;
    QToolButton* BtnExpand;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void BuildControls();
    // The keys of a browser: tabs, back and forward, home, find, page zoom.
    void AddKeys();
    void CopyGeometry();
    void MoveHorizontally(QWidget* widget, int left, int width);
    QTreeWidget* CurrentList() const;
    void StepSelection(bool down);
    void SetChaptersExpanded(bool expanded);
    // A `source` value's file below the help folder. Empty with `nil` false
    // when it is not there (or would lie outside the folder); `nil` when a
    // folder on its way is missing.
    QString ResolveSource(const QString& source, bool& nil) const;
    bool InsideHelpFolder(const QString& file) const;
    void RunSourceScript(const QString& value);
    void ShowStartPage();
    QTreeWidgetItem* AddTocRow(const pugi::xml_node& node, const QString& address, QTreeWidgetItem* parent);

    UniHelpGlobals& m_globals;
    DesignLayout m_layout;
    int m_panel = 0;
    // The index row the typed text matched last; -1: none.
    int m_indexMatch = -1;
    bool m_dragging = false;
    std::unique_ptr<pugi::xml_document> tocxml;
    std::unique_ptr<pugi::xml_document> indexml;
};
