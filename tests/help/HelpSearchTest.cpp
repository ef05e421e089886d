#include "HelpFolder.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpViewer.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

class HelpSearchTest : public ::testing::Test {
protected:
    HelpSearchTest()
    {
        folder.Write(QStringLiteral("uhtoc.xml"),
                     "<helpbook><page name='Welcome' source='VexilUtility.htm'/>"
                     "<chapter name='Device'><page name='Keyed' key='Firmware' source='k.htm'/>"
                     "<page name='Described' desc='about firmware files' source='d.htm'/></chapter>"
                     "<page name='Text' source='t.htm'/><page name='Head' source='h.htm'/></helpbook>");
        folder.Write(QStringLiteral("k.htm"), "<html><body><p>keyed page</p></body></html>");
        folder.Write(QStringLiteral("d.htm"), "<html><body><p>described page</p></body></html>");
        folder.Write(QStringLiteral("t.htm"),
                     "<html><body><p>Run a firmware update, then <a href='update.htm'>update</a> again.</p></body></html>");
        folder.Write(QStringLiteral("h.htm"), "<html><head><title>firmware update</title></head><body>x</body></html>");
    }
    ~HelpSearchTest() override
    {
        UniHelpEngine::CloseViewers();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    UniHelpViewer* Viewer() const
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* viewer = qobject_cast<UniHelpViewer*>(widget); viewer && viewer->isVisible())
                return viewer;
        return nullptr;
    }
    static QStringList Rows(QTreeWidget* list)
    {
        QStringList names;
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            names << list->topLevelItem(i)->text(0);
        return names;
    }
    static int TopRow(QTreeWidget* list)
    {
        return list->indexOfTopLevelItem(list->itemAt(2, 2));
    }

    ScriptedHelpPlatform platform;
    TestHelpGlobals globals{platform};
    HelpFolder folder;
    UniHelpEngine engine{globals, folder.path};
};

TEST_F(HelpSearchTest, TypingScrollsTheIndexToTheFirstEntryThatStartsWithTheText)
{
    QByteArray index = "<helpindex><topic name='Alpha' source='k.htm'/><topic name='Cable' source='k.htm'/>"
                       "<topic name='Call' source='k.htm'/>";
    for (int i = 0; i < 60; ++i)
        index += "<topic name='Delta " + QByteArray::number(i) + "' source='k.htm'/>";
    folder.Write(QStringLiteral("uhindex.xml"), index + "<topic name='Zulu' source='k.htm'/></helpindex>");
    engine.Run(QFileInfo());
    UniHelpViewer* viewer = Viewer();
    ASSERT_NE(viewer, nullptr);
    viewer->TabSelected(1);
    const QUrl shown = viewer->HelpView->CurrentUrl();
    // Each step types on from the position the one before left.
    const struct {
        const char* typed;
        int top;
    } steps[] = {{"ca", 1}, {"CA", 1}, {"cal", 2}, {"calx", 2}, {"delta 3", 6}, {"nothing", 6}, {"", 0}};
    for (const auto& step : steps) {
        viewer->IndexField->setText(QLatin1String(step.typed));
        EXPECT_EQ(TopRow(viewer->IndexList), step.top) << step.typed;
    }
    viewer->IndexField->setText(QStringLiteral("zu"));
    QTreeWidgetItem* last = viewer->IndexList->topLevelItem(viewer->IndexList->topLevelItemCount() - 1);
    EXPECT_TRUE(viewer->IndexList->viewport()->rect().contains(viewer->IndexList->visualItemRect(last)));
    EXPECT_TRUE(viewer->IndexList->selectedItems().isEmpty());
    EXPECT_EQ(viewer->HelpView->CurrentUrl(), shown);

    viewer->IndexList->setCurrentItem(viewer->IndexList->topLevelItem(1));
    EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File(QStringLiteral("k.htm")));
}

TEST_F(HelpSearchTest, AnIndexWithNoTopicsOpensEmptyAndTypingDoesNothing)
{
    folder.Write(QStringLiteral("uhindex.xml"), "<helpindex><other name='x' source='k.htm'/></helpindex>");
    engine.Run(QFileInfo());
    UniHelpViewer* viewer = Viewer();
    ASSERT_NE(viewer, nullptr);
    EXPECT_EQ(viewer->IndexList->topLevelItemCount(), 0);
    viewer->IndexField->setText(QStringLiteral("a"));
    EXPECT_TRUE(platform.calls.isEmpty()) << platform.calls.join(QLatin1Char('\n')).toStdString();
}

TEST_F(HelpSearchTest, SearchFromTheFieldListsHitsInContentsOrder)
{
    const struct {
        const char* term;
        bool fullText;
        QStringList rows;
        QStringList calls;
        const char* status;
    } cases[] = {
        {"FIRMWARE", true, {"Keyed", "Described", "Text"}, {}, ""},
        {"firmware", false, {"Keyed", "Described"}, {}, ""},
        {"ware upd", true, {"Text"}, {}, ""},
        {"href", true, {}, {"Beep"}, "Sorry, No Matches Were Found."},
        {"  ", true, {}, {"Beep", "Caution: The Help System encounted a problem. | Please enter a keyword or phrase that you wish to search for."}, ""},
        // Three blanks are a term: three tags in a row leave three blanks.
        {"   ", true, {"Welcome", "Keyed", "Described", "Text"}, {}, ""},
        {"UniHelp CREDITS", true, {}, {"Credits: Vexil Utility Help"}, ""},
    };
    engine.Run(QFileInfo());
    UniHelpViewer* viewer = Viewer();
    ASSERT_NE(viewer, nullptr);
    for (const auto& c : cases) {
        platform.calls.clear();
        viewer->UseFullTextSearch = c.fullText;
        viewer->SearchField->setText(QLatin1String(c.term));
        viewer->SearchBtn->click();
        EXPECT_EQ(Rows(viewer->SearchList), c.rows) << c.term;
        EXPECT_EQ(platform.calls, c.calls) << c.term;
        EXPECT_EQ(viewer->StatusLabel->text(), QLatin1String(c.status)) << c.term;
    }
    // A hit found only by its key opens with nothing marked.
    viewer->SearchField->setText(QStringLiteral("firmware"));
    viewer->SearchField_KeyDown(13);
    viewer->SearchList->setCurrentItem(viewer->SearchList->topLevelItem(0));
    EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File(QStringLiteral("k.htm")));
    EXPECT_FALSE(viewer->HelpView->toPlainText().contains(QStringLiteral("FIRMWARE")));
}

TEST_F(HelpSearchTest, RunWithATermOpensTheFirstHitOnTheSearchTab)
{
    const struct {
        const char* term;
        bool highlights;
        bool fullText;
        const char* shown;
        const char* marked; // in the shown text; empty: nothing marked
    } cases[] = {
        {"update", true, true, "t.htm", "Run a firmware UPDATE, then UPDATE again."},
        {"update", false, true, "t.htm", ""},
        {"a", true, false, "k.htm", ""},
        {"Firm", true, true, "k.htm", ""},
        {"zzz", true, true, "VexilUtility.htm", ""},
    };
    for (const auto& c : cases) {
        engine.ShowSearchHighlights = c.highlights;
        engine.UseFullTextSearch = c.fullText;
        engine.Run(QString::fromLatin1(c.term));
        UniHelpViewer* viewer = Viewer();
        ASSERT_NE(viewer, nullptr);
        EXPECT_EQ(viewer->HelpTabsValue(), 2) << c.term;
        EXPECT_EQ(viewer->SearchField->text(), QLatin1String(c.term));
        EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File(QLatin1String(c.shown))) << c.term;
        const QString text = viewer->HelpView->toPlainText();
        if (*c.marked)
            EXPECT_TRUE(text.contains(QLatin1String(c.marked))) << text.toStdString();
        else
            EXPECT_FALSE(text.contains(QString::fromLatin1(c.term).toUpper())) << text.toStdString();
        EXPECT_TRUE(viewer->SearchList->selectedItems().isEmpty());
        UniHelpEngine::CloseViewers();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace
