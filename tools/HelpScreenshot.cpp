// Opens the help viewer on a help folder, as the program would, and writes a
// picture of the window, so the manual's screenshot can be made again.
#include "HelpPlatform.h"
#include "UniHelpEngine.h"
#include "UniHelpGlobals.h"
#include "UniHelpViewer.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPixmap>

#include <cstdio>

namespace {

// Messages go to the terminal; nothing here opens another program.
class TerminalHelpPlatform final : public HelpPlatform {
public:
    void CautionBox(const QString& text, const QString& explanation) override
    {
        std::fprintf(stderr, "%s\n%s\n", qPrintable(text), qPrintable(explanation));
    }
    void Beep() override {}
    bool CreditsBox(const QString& text, const QString& explanation) override
    {
        std::fprintf(stderr, "%s\n%s\n", qPrintable(text), qPrintable(explanation));
        return false;
    }
    bool OpenDocument(const QString&) override { return false; }
    bool OpenUrl(const QString&) override { return false; }
    int HistoryMenu(const QStringList&, int) override { return -1; }
    QRect AvailableScreen() override { return {0, 0, 1280, 800}; }
};

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Saves a picture of the help viewer"));
    parser.addHelpOption();
    const QCommandLineOption page(QStringLiteral("page"), QStringLiteral("Page to open, relative to the folder."),
                                  QStringLiteral("file"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Window size (default 900x600)."),
                                  QStringLiteral("WxH"), QStringLiteral("900x600"));
    const QCommandLineOption search(QStringLiteral("search"), QStringLiteral("Open on the search tab with this term."),
                                    QStringLiteral("term"));
    const QCommandLineOption index(QStringLiteral("index"), QStringLiteral("Show the index tab with this text typed."),
                                   QStringLiteral("text"));
    parser.addOptions({page, size, search, index});
    parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("The help folder."));
    parser.addPositionalArgument(QStringLiteral("picture"), QStringLiteral("The PNG file to write."));
    parser.process(application);
    if (parser.positionalArguments().size() != 2)
        parser.showHelp(2);
    const QString folder = QDir(parser.positionalArguments().at(0)).absolutePath();

    TerminalHelpPlatform platform;
    UniHelpGlobals globals(platform);
    globals.UniHelp = std::make_unique<UniHelpEngine>(globals, folder);
    const QStringList wh = parser.value(size).split(QLatin1Char('x'));
    globals.UniHelp->AutoSet = false;
    globals.UHelpLeft = 0;
    globals.UHelpTop = 0;
    globals.UHelpWidth = wh.value(0).toInt() > 0 ? wh.value(0).toInt() : 900;
    globals.UHelpHeight = wh.value(1).toInt() > 0 ? wh.value(1).toInt() : 600;
    if (parser.isSet(search))
        globals.UniHelp->Run(parser.value(search));
    else
        globals.UniHelp->Run(parser.isSet(page) ? QFileInfo(QDir(folder).filePath(parser.value(page))) : QFileInfo());

    UniHelpViewer* viewer = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* v = qobject_cast<UniHelpViewer*>(widget); v && v->isVisible())
            viewer = v;
    if (!viewer)
        return 1;
    if (parser.isSet(index)) {
        viewer->TabSelected(1);
        viewer->IndexField->setText(parser.value(index));
    }
    // Pictures and layout settle within a few passes of the event loop.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 300)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    const bool saved = viewer->grab().save(parser.positionalArguments().at(1), "PNG");
    viewer->close();
    return saved ? 0 : 1;
}
