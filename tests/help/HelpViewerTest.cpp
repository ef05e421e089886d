#include "HelpFolder.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpViewer.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QTextCursor>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProcess>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

class HelpViewerTest : public ::testing::Test {
protected:
    void TearDown() override { CloseViewersNow(); }
    UniHelpViewer* RunStartPage()
    {
        engine.Run(QFileInfo());
        return OpenViewer();
    }

    ScriptedHelpPlatform platform;
    TestHelpGlobals globals{platform};
    HelpFolder folder;
    UniHelpEngine engine{globals, folder.path};
};

QString Refusal(const QString& text)
{
    return QStringLiteral("Caution: The Help System encounted a problem. | ") + text;
}

TEST_F(HelpViewerTest, EachStartUpRefusalTellsWhyAndOpensNoWindow)
{
    const QString tocMissing = QStringLiteral("UniHelp cannot read the uhtoc.xml file. Please make sure that it is "
                                              "located in the help folder and that it is compatible with UniHelp.");
    const QString indexInvalid =
        QStringLiteral("UniHelp cannot read the uhindex.xml file. Please make sure that it is a valid XML file that "
                       "is compatible with UniHelp's Index format.");
    struct Case {
        const char* name;
        std::function<void()> breakIt;
        QStringList expected;
    } cases[] = {
        {"view refused", [this] { globals.viewAvailable = false; },
         {QStringLiteral("Beep"),
          Refusal(QStringLiteral("The WebKit library required by the HTML Help Viewer is not installed."))}},
        {"folder missing", [this] { QDir(folder.path).removeRecursively(); },
         {QStringLiteral("Beep"),
          Refusal(QStringLiteral("The \"Help\" folder is missing! This folder must remain in the same directory as "
                                 "the application."))}},
        {"contents missing", [this] { folder.Remove(QStringLiteral("uhtoc.xml")); },
         {QStringLiteral("Beep"), Refusal(tocMissing)}},
        {"contents invalid", [this] { folder.Write(QStringLiteral("uhtoc.xml"), "<helpbook><page></helpbook>"); },
         {QStringLiteral("Beep"),
          Refusal(QStringLiteral("UniHelp cannot read the uhtoc.xml file. Please make sure that it is a valid XML "
                                 "file that is compatible with UniHelp's TOC format."))}},
        {"index missing", [this] { folder.Remove(QStringLiteral("uhindex.xml")); },
         {QStringLiteral("Beep"),
          Refusal(QStringLiteral("UniHelp cannot read the uhindex.xml file. Please make sure that it is located in "
                                 "the help folder and that it is compatible with UniHelp."))}},
        {"index invalid", [this] { folder.Write(QStringLiteral("uhindex.xml"), "no xml at all"); },
         {QStringLiteral("Beep"), Refusal(indexInvalid)}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        HelpFolder fresh;
        folder.path = fresh.path;
        engine.HelpFolder = fresh.path;
        globals.viewAvailable = true;
        platform.calls.clear();
        c.breakIt();
        engine.Run(QFileInfo());
        EXPECT_EQ(platform.calls, c.expected);
        EXPECT_EQ(OpenViewer(), nullptr);
        EXPECT_EQ(globals.closed, 0);
    }
}

TEST_F(HelpViewerTest, ASecondRunClosesTheFirstViewer)
{
    QPointer<UniHelpViewer> first = RunStartPage();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Vexil Utility Help"));
    EXPECT_EQ(first->HelpView->source(), QUrl::fromLocalFile(folder.File(QStringLiteral("VexilUtility.htm"))));
    EXPECT_EQ(first->IndexList->topLevelItemCount(), 1);
    EXPECT_EQ(first->HelpList->topLevelItemCount(), 2);

    engine.Run(QFileInfo(folder.File(QStringLiteral("other.htm"))));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    // Exactly one on screen, the new one.
    ASSERT_NE(OpenViewer(), nullptr);
    EXPECT_EQ(OpenViewer()->HelpView->source(), QUrl::fromLocalFile(folder.File(QStringLiteral("other.htm"))));
    EXPECT_EQ(globals.closed, 1);
    EXPECT_TRUE(platform.calls.isEmpty()) << platform.calls.join(QLatin1Char('\n')).toStdString();
}

TEST_F(HelpViewerTest, FontSizeOutsideNineToSixteenFallsBackToElevenAndTheButtonsStopAtTheLimits)
{
    UniHelpViewer* viewer = RunStartPage();
    ASSERT_TRUE(viewer);
    const struct {
        int asked, applied;
    } sizes[] = {{8, 11}, {9, 9}, {16, 16}, {17, 11}, {0, 11}};
    for (const auto& s : sizes) {
        viewer->SetFontSize(s.asked);
        EXPECT_EQ(viewer->IndexList->font().pointSize(), s.applied) << s.asked;
        EXPECT_EQ(viewer->CurrentFontSize(), s.applied) << s.asked;
    }
    viewer->SetFontSize(9);
    viewer->BtnSmaller->click();
    EXPECT_EQ(viewer->CurrentFontSize(), 9);
    viewer->BtnLarger->click();
    EXPECT_EQ(viewer->SearchField->font().pointSize(), 10);
    viewer->SetFontSize(16);
    viewer->BtnLarger->click();
    EXPECT_EQ(viewer->CurrentFontSize(), 16);
    viewer->BtnSmaller->click();
    EXPECT_EQ(viewer->HelpList->font().pointSize(), 15);
}

TEST_F(HelpViewerTest, AFontNotInstalledFallsBackToTheAlternativeThenToTheDesktopFont)
{
    ASSERT_FALSE(QFontDatabase::families().isEmpty());
    const QString installed = QFontDatabase::families().last();
    engine.FontName = QStringLiteral("No Such Font 4711");
    engine.AltFont = installed.toUpper();
    UniHelpViewer* viewer = RunStartPage();
    ASSERT_TRUE(viewer);
    EXPECT_EQ(viewer->StatusLabel->font().family(), installed.toUpper());
    viewer->AltFont = QStringLiteral("Nor This One");
    viewer->SetFontName(viewer->FontName);
    EXPECT_EQ(viewer->HelpList->font().family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
}

TEST_F(HelpViewerTest, TheDividerStaysBetweenItsLimitsOnWideAndNarrowWindows)
{
    UniHelpViewer* viewer = RunStartPage();
    ASSERT_TRUE(viewer);
    // p is the divider position used; 0: the drag changes nothing.
    const struct {
        int width, x, p;
    } drags[] = {
        {900, 500, 500}, {900, 100, 230}, {900, 850, 680}, {900, 230, 0}, {900, 680, 0},
        // Narrower than 450 the limits cross: left of 230 gives 230, all else W - 220.
        {420, 100, 230}, {420, 210, 230}, {420, 300, 200}, {420, 230, 200},
    };
    for (const auto& d : drags) {
        SCOPED_TRACE(testing::Message() << d.width << " " << d.x);
        viewer->resize(d.width, 500);
        viewer->Event_MouseDrag(300, 100);
        const int before = viewer->HelpView->x() - 10;
        viewer->Event_MouseDrag(d.x, 100);
        const int p = d.p ? d.p : before;
        EXPECT_EQ(viewer->HelpList->width(), p + 1);
        EXPECT_EQ(viewer->IndexField->width(), p - 5);
        EXPECT_EQ(viewer->HelpView->geometry(), QRect(p + 10, 0, d.width - (p + 10), 470));
        EXPECT_EQ(viewer->StatusLabel->geometry(), QRect(p + 13, 475, d.width - (p + 29), 20));
        EXPECT_EQ(viewer->VertGrabber->x(), p + 3);
        EXPECT_EQ(viewer->VertGrabber->y(), 250);
    }
    // A resize keeps the divider where it was dragged.
    viewer->resize(900, 400);
    viewer->Event_MouseDrag(400, 100);
    viewer->resize(1000, 600);
    EXPECT_EQ(viewer->HelpView->geometry(), QRect(410, 0, 590, 570));
    EXPECT_EQ(viewer->SearchBtn->x(), 370);
    EXPECT_TRUE(viewer->IsCursorGrabbing(405, 300));
    EXPECT_FALSE(viewer->IsCursorGrabbing(395, 300));
}

TEST_F(HelpViewerTest, TheRememberedPlacementIsUsedOnlyWithoutAutoSet)
{
    globals.UHelpLeft = 50;
    globals.UHelpTop = 60;
    globals.UHelpWidth = 500;
    globals.UHelpHeight = 300;
    UniHelpViewer* viewer = RunStartPage();
    ASSERT_TRUE(viewer);
    EXPECT_EQ(viewer->size(), QSize(700, 400));
    // Centred on the screen the platform reports.
    EXPECT_EQ(viewer->geometry().center(), QRect(0, 0, 1600, 1000).center());

    // Closing it stores its own placement, which the next Run would use.
    viewer->close();
    engine.AutoSet = false;
    globals.UHelpLeft = 50;
    globals.UHelpTop = 60;
    globals.UHelpWidth = 500;
    globals.UHelpHeight = 300;
    viewer = RunStartPage();
    ASSERT_TRUE(viewer);
    EXPECT_EQ(viewer->geometry(), QRect(50, 60, 500, 300));
    viewer->setGeometry(70, 90, 640, 380);
    viewer->close();
    EXPECT_EQ(QRect(globals.UHelpLeft, globals.UHelpTop, globals.UHelpWidth, globals.UHelpHeight),
              QRect(70, 90, 640, 380));
}

} // namespace

namespace {

TEST_F(HelpViewerTest, AVolumeUnpacksIntoANewTemporaryHelpFolder)
{
    QDir(folder.path).mkpath(QStringLiteral("sub"));
    folder.Write(QStringLiteral("sub/deeper.htm"), "<p>deep</p>");
    folder.Write(QStringLiteral("volume.qrc"),
                 "<RCC><qresource><file>uhtoc.xml</file><file>sub/deeper.htm</file></qresource></RCC>");
    const QString volume = folder.root.filePath(QStringLiteral("guide.vv"));
    QProcess rcc;
    rcc.setWorkingDirectory(folder.path);
    rcc.start(QStringLiteral(RCC_EXECUTABLE), {QStringLiteral("-binary"), QStringLiteral("volume.qrc"),
                                               QStringLiteral("-o"), volume});
    ASSERT_TRUE(rcc.waitForFinished(30000) && rcc.exitCode() == 0);

    engine.VVInitialize(folder.File(QStringLiteral("other.htm")));
    EXPECT_TRUE(engine.HelpFolder.isEmpty());

    engine.VVInitialize(volume);
    ASSERT_FALSE(engine.HelpFolder.isEmpty());
    const QDir unpacked(engine.HelpFolder);
    EXPECT_TRUE(unpacked.dirName().startsWith(QStringLiteral("Help")));
    EXPECT_EQ(unpacked.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({"sub", "uhtoc.xml"}));
    QFile deeper(unpacked.filePath(QStringLiteral("sub/deeper.htm")));
    ASSERT_TRUE(deeper.open(QIODevice::ReadOnly));
    EXPECT_EQ(deeper.readAll(), "<p>deep</p>");
    EXPECT_TRUE(platform.calls.isEmpty()) << platform.calls.join(QLatin1Char('\n')).toStdString();
    QDir(engine.HelpFolder).removeRecursively();
}

void WriteSearchPages(const HelpFolder& folder)
{
    folder.Write("uhtoc.xml", "<helpbook><page name='Welcome' source='VexilUtility.htm'/><chapter name='Device'>"
                              "<page name='Keyed' key='Firmware' source='k.htm'/><page name='Described' "
                              "desc='firmware files' source='d.htm'/></chapter><page name='Text' source='t.htm'/>"
                              "<page name='Head' source='h.htm'/></helpbook>");
    folder.Write("k.htm", "<body><p>keyed page</p></body>");
    folder.Write("t.htm", "<body><p>Run a firmware update, then <a href='update.htm'>update</a> again.</p></body>");
}

TEST_F(HelpViewerTest, TypingScrollsTheIndexToTheFirstEntryThatStartsWithTheText)
{
    QByteArray index = "<helpindex><topic name='Alpha'/><topic name='Cable' source='other.htm'/><topic name='Call'/>";
    for (int i = 0; i < 60; ++i)
        index += "<topic name='Delta " + QByteArray::number(i) + "'/>";
    folder.Write("uhindex.xml", index + "</helpindex>");
    UniHelpViewer* viewer = nullptr;
    ASSERT_NE(viewer = RunStartPage(), nullptr);
    viewer->TabSelected(1);
    // Each step types on from the position the one before left; nothing opens.
    for (const auto& [typed, top] : std::initializer_list<std::pair<const char*, int>>{
             {"ca", 1}, {"CA", 1}, {"cal", 2}, {"calx", 2}, {"delta 3", 6}, {"nothing", 6}, {"", 0}}) {
        viewer->IndexField->setText(typed);
        EXPECT_EQ(viewer->IndexList->indexOfTopLevelItem(viewer->IndexList->itemAt(2, 2)), top) << typed;
    }
    EXPECT_TRUE(viewer->IndexList->selectedItems().isEmpty());
    EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File("VexilUtility.htm"));
    viewer->IndexList->setCurrentItem(viewer->IndexList->topLevelItem(1));
    EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File("other.htm"));

    UniHelpEngine::CloseViewers();
    folder.Write("uhindex.xml", "<helpindex><other name='x'/></helpindex>");
    ASSERT_NE(viewer = RunStartPage(), nullptr);
    EXPECT_EQ(viewer->IndexList->topLevelItemCount(), 0);
    viewer->IndexField->setText("a");
}

TEST_F(HelpViewerTest, SearchListsHitsInContentsOrderAndRunOpensTheFirstMarked)
{
    WriteSearchPages(folder);
    const struct { const char* term; bool fullText; QStringList rows, calls; } cases[] = {
        {"FIRMWARE", true, {"Keyed", "Described", "Text"}, {}},
        {"firmware", false, {"Keyed", "Described"}, {}},
        {"href", true, {}, {"Beep"}},
        {"  ", true, {}, {"Beep", Refusal("Please enter a keyword or phrase that you wish to search for.")}},
        {"   ", true, {"Welcome"}, {}}, // three tags in a row leave three blanks
        {"UniHelp CREDITS", true, {}, {"Credits: Vexil Utility Help"}},
    };
    UniHelpViewer* viewer = nullptr;
    ASSERT_NE(viewer = RunStartPage(), nullptr);
    for (const auto& c : cases) {
        platform.calls.clear();
        viewer->UseFullTextSearch = c.fullText;
        viewer->SearchField->setText(c.term);
        viewer->SearchBtn->click();
        QStringList rows;
        for (int i = 0; i < viewer->SearchList->topLevelItemCount(); ++i)
            rows << viewer->SearchList->topLevelItem(i)->text(0);
        EXPECT_EQ(rows, c.rows) << c.term;
        EXPECT_EQ(platform.calls, c.calls) << c.term;
        EXPECT_EQ(viewer->StatusLabel->text(), c.calls == QStringList{"Beep"} ? "Sorry, No Matches Were Found." : "");
    }
    // Run(term): the first hit opens with every occurrence in capitals, unless
    // a switch is off or only an attribute matched.
    const struct { const char* term; bool highlights, fullText; const char *shown, *marked; } runs[] = {{"update", true, true, "t.htm", "Run a firmware UPDATE, then UPDATE again."},
                {"update", false, true, "t.htm", ""}, {"a", true, false, "k.htm", ""},
                {"Firm", true, true, "k.htm", ""}, {"zzz", true, true, "VexilUtility.htm", ""}};
    for (const auto& c : runs) {
        UniHelpEngine::CloseViewers();
        engine.ShowSearchHighlights = c.highlights;
        engine.UseFullTextSearch = c.fullText;
        engine.Run(QString(c.term));
        ASSERT_NE(viewer = OpenViewer(), nullptr);
        EXPECT_EQ(viewer->HelpTabsValue(), 2);
        EXPECT_EQ(viewer->HelpView->CurrentUrl().toLocalFile(), folder.File(c.shown)) << c.term;
        const QString text = viewer->HelpView->toPlainText();
        EXPECT_EQ(text.contains(*c.marked ? c.marked : QString(c.term).toUpper()), *c.marked != 0) << c.term;
        EXPECT_TRUE(viewer->SearchList->selectedItems().isEmpty());
    }
}

TEST_F(HelpViewerTest, EverythingWorksFromTheKeyboardAndEveryControlIsNamed)
{
    folder.Write("uhindex.xml", "<helpindex><topic name='Other' source='other.htm'/><topic name='Welcome' source='VexilUtility.htm'/></helpindex>");
    folder.Write("VexilUtility.htm", "<html><body><h1>Welcome</h1><p>See <a href='other.htm'>other</a> or <a href='other.htm#x'>there</a>.</p></body></html>");
    UniHelpViewer* viewer = nullptr;
    ASSERT_NE(viewer = RunStartPage(), nullptr);
    viewer->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(viewer));
    const auto focused = [] { return QApplication::focusWidget(); };
    const auto shown = [&] { return viewer->HelpView->CurrentUrl().toLocalFile(); };

    // Tab goes round every control shown and out of the page; Shift+Tab comes back.
    viewer->BtnContents->setFocus();
    QList<QWidget*> round;
    for (int i = 0; i < 30 && (round.isEmpty() || focused() != viewer->BtnContents); ++i) {
        round << focused();
        QTest::keyClick(focused(), Qt::Key_Tab);
    }
    EXPECT_EQ(focused(), viewer->BtnContents);
    EXPECT_EQ(round.count(viewer->HelpView), 1) << "the page is one stop, not one per link";
    for (QWidget* control : QList<QWidget*>{viewer->BtnIndex, viewer->HelpList, viewer->HelpView, viewer->BtnHome, viewer->BtnLarger})
        EXPECT_TRUE(round.contains(control)) << control->objectName().toStdString();
    viewer->HelpView->setFocus();
    QTest::keyClick(viewer->HelpView, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(focused(), viewer->HelpView) << "Ctrl+Down steps to a link and stays in the page";
    QTest::keyClick(viewer->HelpView, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focused(), viewer->HelpList);

    // Each tab's key puts the cursor in its field; Return opens the match and the hit.
    QTest::keyClick(viewer, Qt::Key_I, Qt::AltModifier);
    EXPECT_EQ(std::pair(viewer->HelpTabsValue(), focused()), std::pair(1, static_cast<QWidget*>(viewer->IndexField)));
    QTest::keyClicks(viewer->IndexField, "oth");
    QTest::keyClick(viewer->IndexField, Qt::Key_Return);
    EXPECT_EQ(shown(), folder.File("other.htm"));
    QTest::keyClick(viewer, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(std::pair(viewer->HelpTabsValue(), focused()), std::pair(2, static_cast<QWidget*>(viewer->SearchField)));
    QTest::keyClicks(viewer->SearchField, "Welcome");
    QTest::keyClick(viewer->SearchField, Qt::Key_Return);
    ASSERT_EQ(viewer->SearchList->topLevelItemCount(), 1);
    viewer->SearchList->setCurrentItem(viewer->SearchList->topLevelItem(0));
    QTest::keyClick(viewer, Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(shown(), folder.File("other.htm")) << "Alt+Left goes back";
    viewer->SearchList->setFocus();
    QTest::keyClick(viewer->SearchList, Qt::Key_Return);
    EXPECT_EQ(shown(), folder.File("VexilUtility.htm"));

    // Page zoom, kept for the next page; Ctrl+0 goes back to the page's own size.
    const auto size = [&] { return QTextCursor(viewer->HelpView->document()).charFormat().fontPointSize(); };
    const double plain = size();
    QTest::keyClick(viewer, Qt::Key_Plus, Qt::ControlModifier);
    viewer->LoadHelpFile(folder.File("other.htm"), false, false, QString());
    EXPECT_GT(size(), plain);
    QTest::keyClick(viewer, Qt::Key_0, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(size(), plain);

    viewer->BtnPrint->click();
    EXPECT_EQ(globals.printed, QStringList{"other.htm"}) << "Print prints the page shown";

    // A screen reader hears every button by what it does, and the tabs as page tabs.
    for (QToolButton* button : viewer->findChildren<QToolButton*>())
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name).isEmpty()) << button->objectName().toStdString();
    for (QToolButton* tab : {viewer->BtnContents, viewer->BtnIndex, viewer->BtnSearch})
        EXPECT_EQ(QAccessible::queryAccessibleInterface(tab)->role(), QAccessible::PageTab);
}

} // namespace
