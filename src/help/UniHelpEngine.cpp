#include "UniHelpEngine.h"

#include "UniHelpGlobals.h"
#include "UniHelpViewer.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QResource>
#include <QStyle>

UniHelpEngine::UniHelpEngine(UniHelpGlobals& globals, const QString& appHelpFolder, QObject* scriptObject)
    : m_globals(globals)
{
    AutoSet = true;
    m_globals.UHelpWidth = 900;
    m_globals.UHelpHeight = 600;
    m_globals.UHelpTop = 80;
    m_globals.UHelpLeft = 80;

    FontName = QStringLiteral("Arial");
    AltFont = QStringLiteral("Helvetica");
    FontSize = 11;
    UseFullTextSearch = true;
    ShowSearchHighlights = true;
    ShowPrintButton = true;
    ScriptObject = scriptObject;

    UseVirtualVolume = false;
    if (UseVirtualVolume)
        VVInitialize(QStringLiteral("UniHelpGuide.vv"));
    else
        HelpFolder = appHelpFolder;

    HomePage = QStringLiteral("VexilUtility.htm");
    HelpTitle = QStringLiteral("Vexil Utility Help");
}

void UniHelpEngine::CloseViewers()
{
    // Closing may change the list of windows, so it is read again each time.
    for (int i = 0; i < QApplication::topLevelWidgets().size(); ++i)
        if (auto* viewer = qobject_cast<UniHelpViewer*>(QApplication::topLevelWidgets().at(i)); viewer && viewer->isVisible())
            viewer->close();
}

UniHelpViewer* UniHelpEngine::StartViewer()
{
    CloseViewers();
    auto* viewer = new UniHelpViewer(m_globals);
    viewer->UseFullTextSearch = UseFullTextSearch;
    viewer->ShowSearchHighlights = ShowSearchHighlights;
    viewer->ShowPrintButton = ShowPrintButton;
    // Icons left unset are the style's own folder and document pictures. They
    // are read only now: reading them loads the picture decoders, which would
    // cost the program's start several milliseconds.
    const auto orStyle = [](const QIcon& icon, QStyle::StandardPixmap standard) {
        return icon.isNull() ? QApplication::style()->standardIcon(standard) : icon;
    };
    viewer->IconCategory = orStyle(IconCategory, QStyle::SP_DirClosedIcon);
    viewer->IconCategoryOpen = orStyle(IconCategoryOpen, QStyle::SP_DirOpenIcon);
    viewer->IconPage = orStyle(IconPage, QStyle::SP_FileIcon);
    viewer->FontName = FontName;
    viewer->AltFont = AltFont;
    viewer->FontSize = FontSize;
    if (!PrintSettings.isEmpty())
        viewer->PrintSettings = PrintSettings;
    viewer->HelpFolder = HelpFolder;
    viewer->setWindowTitle(HelpTitle);
    viewer->HomePage = HelpFolder.isEmpty() ? QString() : QDir(HelpFolder).filePath(HomePage);
    viewer->CustomizeHelp();
    if (viewer->StartError) {
        // It never showed: there is no placement to remember, so no close event.
        delete viewer;
        return nullptr;
    }
    viewer->show();
    return viewer;
}

void UniHelpEngine::PlaceViewer(UniHelpViewer& viewer) const
{
    if (AutoSet)
        return;
    viewer.setGeometry(m_globals.UHelpLeft, m_globals.UHelpTop, m_globals.UHelpWidth, m_globals.UHelpHeight);
}

void UniHelpEngine::Run(const QFileInfo& page)
{
    if (UniHelpViewer* viewer = StartViewer()) {
        viewer->OpenPage(page.filePath());
        PlaceViewer(*viewer);
    }
}

void UniHelpEngine::Run(const QString& term)
{
    if (UniHelpViewer* viewer = StartViewer()) {
        viewer->OpenSearch(term);
        PlaceViewer(*viewer);
    }
}

void UniHelpEngine::RunScript(const QString&) {}

namespace {

QString VolumeFolderText()
{
    return QStringLiteral("A temporary help folder for extracting the VirtualVolume files could not be created.");
}

QString VolumeFileText()
{
    return QStringLiteral("One or more VirtualVolume files could not be copied to the temporary help folder.");
}

// Where a volume's tree appears while it is registered; one per engine run.
QString VolumeRoot()
{
    return QStringLiteral("/uhvolume%1").arg(QDateTime::currentMSecsSinceEpoch());
}

} // namespace

// A volume is a Qt binary resource file: one file holding a folder tree that
// Qt can read without a further library.
void UniHelpEngine::VVInitialize(const QString& path)
{
    const QString root = VolumeRoot();
    if (!QResource::registerResource(path, root)) {
        CloseViewers();
        HelpFolder.clear();
        return;
    }
    const QDateTime now = QDateTime::currentDateTime();
    const QString name = QStringLiteral("Help%1%2%3%4")
                             .arg(now.date().dayOfYear())
                             .arg(now.time().hour())
                             .arg(now.time().minute())
                             .arg(now.time().second());
    QDir temp(QDir::tempPath());
    temp.mkdir(name);
    if (!temp.exists(name)) {
        m_globals.UHError(VolumeFolderText());
    } else {
        HelpFolder = temp.filePath(name);
        const QDir volume(QLatin1Char(':') + root);
        for (const QFileInfo& item : volume.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name))
            VVExtract(item, QFileInfo(QDir(HelpFolder).filePath(item.fileName())));
    }
    QResource::unregisterResource(path, root);
}

void UniHelpEngine::VVExtract(const QFileInfo& source, const QFileInfo& target)
{
    if (source.filePath().isEmpty() || !source.exists()) {
        m_globals.UHError(VolumeFileText());
        return;
    }
    if (source.isDir()) {
        QDir().mkdir(target.filePath());
        if (!QFileInfo::exists(target.filePath())) {
            m_globals.UHError(VolumeFolderText());
            return;
        }
        const QDir folder(source.filePath());
        for (const QFileInfo& item : folder.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name))
            VVExtract(item, QFileInfo(QDir(target.filePath()).filePath(item.fileName())));
        return;
    }
    if (!target.dir().exists() || !QFile::copy(source.filePath(), target.filePath())) {
        m_globals.UHError(VolumeFileText());
        return;
    }
    // Files inside a resource are read-only; the copy need not be.
    QFile::setPermissions(target.filePath(), QFile::permissions(target.filePath()) | QFile::WriteOwner);
}
