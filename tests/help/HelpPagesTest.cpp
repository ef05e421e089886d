#include "HelpFolder.h"
#include "HtmlHelpView.h"
#include "QtPrinters.h"
#include "UniHelpEngine.h"
#include "UniHelpViewer.h"

#include <QApplication>
#include <QLabel>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

class RecordingEngine : public UniHelpEngine {
public:
    using UniHelpEngine::UniHelpEngine;
    void RunScript(const QString& script) override { scripts << script; }
    QStringList scripts;
};

class HelpPagesTest : public ::testing::Test {
protected:
    HelpPagesTest()
    {
        folder.Write(QStringLiteral("uhtoc.xml"),
                     "<helpbook><page name='Welcome' source='VexilUtility.htm'/>"
                     "<chapter name='A/B'><page name='Slash' source='slash.htm'/><page name='Twice' source='twice.htm'/></chapter>"
                     "<chapter name='Same'><chapter name='Two'><chapter name='Three'>"
                     "<page name='Deep' source='sub/deep.htm'/></chapter></chapter></chapter>"
                     "<page name='Same' source='samepage.htm'/>"
                     "<CHAPTER name='Later'><page name='Twice again' source='twice.htm'/></CHAPTER>"
                     "<page name='Quote' source=\"it's.htm\"/><PAGE name='Upper' source='upper.htm'/></helpbook>");
        folder.Write(QStringLiteral("uhindex.xml"),
                     "<helpindex><topic name='anchor' source='#top'/><topic name='web' source='http://example.org/x'/>"
                     "<topic name='blank' source='a b://c.htm'/><topic name='script' source=\"UHScript:say%20'hi'\"/>"
                     "<topic name='escape' source='../escape.htm'/><topic name='missing' source='missing.htm'/>"
                     "<topic name='nofolder' source='nofolder/x.htm'/><topic name='picture' source='pic.png'/><topic name='sound' source='tone.wav'/>"
                     "<topic name='other' source='other.htm'/><topic name='slash' source='slash.htm'/></helpindex>");
        QDir(folder.path).mkpath(QStringLiteral("sub"));
        for (const char* page : {"slash.htm", "twice.htm", "sub/deep.htm", "samepage.htm", "notintoc.htm", "it's.htm",
                                 "pic.png", "tone.wav", "../escape.htm", "upper.htm"})
            folder.Write(QLatin1String(page), "<p>page</p>");
        globals.UniHelp = std::make_unique<RecordingEngine>(globals, folder.path);
    }
    ~HelpPagesTest() override { CloseViewersNow(); }
    UniHelpViewer* Open(const QString& page)
    {
        globals.UniHelp->Run(QFileInfo(page.isEmpty() ? QString() : folder.File(page)));
        return OpenViewer();
    }
    QString Shown(UniHelpViewer* viewer) const { return viewer->HelpView->CurrentUrl().toLocalFile(); }
    void SelectTopic(UniHelpViewer* viewer, const QString& name) const
    {
        viewer->IndexList->setCurrentItem(viewer->IndexList->findItems(name, Qt::MatchExactly).value(0));
    }

    ScriptedHelpPlatform platform;
    TestHelpGlobals globals{platform};
    HelpFolder folder;
};

TEST_F(HelpPagesTest, TheTreeOpensDownToThePageShown)
{
    const struct {
        const char* page;
        const char* selected;   // address of the selected row; empty: none
        int expanded;
    } cases[] = {
        {"VexilUtility.htm", "helpbook/page[1]", 0},
        {"slash.htm", "helpbook/chapter[1]/page[1]", 1},
        {"twice.htm", "helpbook/chapter[1]/page[2]", 1},     // the first of two in document order
        {"sub/deep.htm", "helpbook/chapter[2]/chapter[1]/chapter[1]/page[1]", 3},
        {"samepage.htm", "", 1},                              // the chapter of that name comes first
        {"notintoc.htm", "", 0},
        {"upper.htm", "helpbook/page[4]", 0},                  // element names count in any case
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.page);
        UniHelpViewer* viewer = Open(QLatin1String(c.page));
        ASSERT_TRUE(viewer);
        EXPECT_EQ(Shown(viewer), folder.File(QLatin1String(c.page)));
        const QList<QTreeWidgetItem*> selected = viewer->HelpList->selectedItems();
        EXPECT_EQ(selected.isEmpty() ? QString() : selected.first()->text(1), QLatin1String(c.selected));
        int expanded = 0;
        for (QTreeWidgetItem* row = viewer->HelpList->topLevelItem(0); row; row = viewer->HelpList->itemBelow(row))
            expanded += row->isExpanded();
        EXPECT_EQ(expanded, c.expanded);
        EXPECT_EQ(viewer->HelpList->topLevelItemCount(), 7);
    }
    EXPECT_TRUE(platform.calls.isEmpty()) << platform.calls.join(QLatin1Char('\n')).toStdString();
}

TEST_F(HelpPagesTest, AQuoteInTheFileNameIsAnXmlErrorYetThePageLoads)
{
    UniHelpViewer* viewer = Open(QStringLiteral("it's.htm"));
    ASSERT_TRUE(viewer);
    EXPECT_EQ(Shown(viewer), folder.File(QStringLiteral("it's.htm")));
    EXPECT_TRUE(platform.calls.contains(
        QStringLiteral("Caution: The Help System encounted a problem. | UniHelp cannot read the uhtoc.xml file. Please "
                       "make sure that it is a valid XML file that is compatible with UniHelp's TOC format.")))
        << platform.calls.join(QLatin1Char('\n')).toStdString();
}

TEST_F(HelpPagesTest, EachKindOfSourceDoesItsOwnThing)
{
    UniHelpViewer* viewer = Open(QString());
    ASSERT_TRUE(viewer);
    const QString start = folder.File(QStringLiteral("VexilUtility.htm"));
    const QString nilText = QStringLiteral("Caution: The Help System encounted a problem. | The requested file is either "
                                           "invalid or could not be found or there is not enough memory to open it.");
    const struct {
        const char* topic;
        QStringList calls;
        const char* shown;      // empty: the start page stays
        int history;            // entries besides the permanent empty one
    } cases[] = {
        {"anchor", {}, "", 1},
        {"web", {QStringLiteral("OpenUrl: http://example.org/x")}, "", 1},
        {"blank", {QStringLiteral("Beep"), nilText}, "", 1},
        {"script", {}, "", 1},
        {"escape", {}, "", 1},
        {"missing", {}, "", 1},
        {"nofolder", {QStringLiteral("Beep"), nilText}, "", 1},
        {"picture", {}, "pic.png", 1},
        {"sound", {QStringLiteral("OpenDocument: ") + folder.File(QStringLiteral("tone.wav"))}, "pic.png", 1},
        {"other", {}, "other.htm", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.topic);
        platform.calls.clear();
        SelectTopic(viewer, QLatin1String(c.topic));
        EXPECT_EQ(platform.calls, c.calls);
        EXPECT_EQ(Shown(viewer), *c.shown ? folder.File(QLatin1String(c.shown)) : start);
        EXPECT_EQ(viewer->HistoryFile.size() - 1, c.history);
    }
    EXPECT_EQ(static_cast<RecordingEngine&>(*globals.UniHelp).scripts, QStringList({QStringLiteral("say \"hi\"")}));

    // Qt hands a script link's scheme over in lower case.
    viewer->HelpView_StatusChanged(QStringLiteral("Link: \"uhscript:say\""));
    EXPECT_EQ(viewer->StatusLabel->text(), QStringLiteral("Click to Run Script"));
    // From a search hit only a page is marked: a picture stays a picture, a text file keeps its lines.
    folder.Write(QStringLiteral("notes.txt"), "page one\npage two");
    viewer->LoadHelpFile(folder.File(QStringLiteral("pic.png")), false, true, QStringLiteral("page"));
    EXPECT_TRUE(viewer->HelpView->toHtml().contains(QStringLiteral("<img")));
    viewer->LoadHelpFile(folder.File(QStringLiteral("notes.txt")), false, true, QStringLiteral("page"));
    EXPECT_EQ(viewer->HelpView->toPlainText(), QStringLiteral("page one\npage two"));
}

TEST_F(HelpPagesTest, BackNextAndTheHistoryMenuWalkTheVisitedPages)
{
    UniHelpViewer* viewer = Open(QString());
    ASSERT_TRUE(viewer);
    EXPECT_FALSE(viewer->BtnBack->isEnabled() || viewer->BtnNext->isEnabled() || viewer->BtnHistory->isEnabled());
    viewer->BtnHistory_MouseDown();
    EXPECT_TRUE(platform.calls.isEmpty());

    SelectTopic(viewer, QStringLiteral("other"));
    EXPECT_TRUE(viewer->BtnBack->isEnabled());
    viewer->BtnBack_MouseDown();
    EXPECT_EQ(Shown(viewer), folder.File(QStringLiteral("VexilUtility.htm")));
    EXPECT_TRUE(viewer->BtnNext->isEnabled());
    EXPECT_FALSE(viewer->BtnBack->isEnabled());
    EXPECT_EQ(viewer->HistoryTitle, QStringList({"other.htm", "Welcome", ""}));

    // A new page goes in at the current place; the newer one stays reachable.
    SelectTopic(viewer, QStringLiteral("slash"));
    EXPECT_EQ(viewer->HistoryTitle, QStringList({"other.htm", "Slash", "Welcome", ""}));
    viewer->BtnNext_MouseDown();
    EXPECT_EQ(Shown(viewer), folder.File(QStringLiteral("other.htm")));
    EXPECT_EQ(viewer->HistoryNum, 0);

    // A link followed in the page enters the history once it has loaded.
    viewer->HelpView->anchorClicked(QUrl(QStringLiteral("twice.htm")));
    EXPECT_EQ(viewer->HistoryTitle.first(), QStringLiteral("Twice"));
    viewer->HelpView->anchorClicked(QUrl(QStringLiteral("https://example.org/")));
    EXPECT_EQ(Shown(viewer), folder.File(QStringLiteral("twice.htm")));

    platform.historyChoice = 3;
    viewer->BtnHistory_MouseDown();
    EXPECT_EQ(platform.calls.last(), QStringLiteral("HistoryMenu: Twice|other.htm|Slash|Welcome (0)"));
    EXPECT_EQ(Shown(viewer), folder.File(QStringLiteral("VexilUtility.htm")));
    EXPECT_EQ(viewer->HistoryTitle, QStringList({"Welcome", "Twice", "other.htm", "Slash", "Welcome", ""}));
}

} // namespace
