#include "App.h"

#include "AppIcon.h"
#include "PlatformServices.h"
#include "UniHelpEngine.h"
#include "Window1View.h"

#include <QApplication>
#include <QIcon>
#include <QSessionManager>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

App::App(Clock& clock, HidBackend& backend, PlatformServices& platform, HelpPlatform& helpPlatform)
    : m_hid(backend), m_helpGlobals(helpPlatform), m_window1(std::make_unique<Window1>(m_globals, clock, platform, m_hid, m_prefs))
{
}

App::~App()
{
    // A viewer reports its close to the help state, which goes with the App.
    UniHelpEngine::CloseViewers();
    m_view.reset();
    m_window1.reset();
    m_hid.Close();
}

QString App::HelpFolderFor(const QString& executableDir)
{
    QDir dir(executableDir);
    dir.cdUp();
    const QString built = dir.absoluteFilePath(QStringLiteral("Resources/Help"));
    const QString installed = dir.absoluteFilePath(QStringLiteral("share/vexil-utility/Help"));
    // With neither, the folder the help reports missing is the build tree's.
    return !QFileInfo(built).isDir() && QFileInfo(installed).isDir() ? installed : built;
}

void App::ConfigureApplication()
{
    QApplication::setWindowIcon(QIcon(AppIcon(48)));
}

std::unique_ptr<OnlyCopyLock> App::ClaimOnlyCopy(PlatformServices& platform)
{
    // Beside the preferences: the folder that is the user's, and the demo's own.
    auto lock = std::make_unique<OnlyCopyLock>();
    if (lock->TryClaim(QStringLiteral("the Vexil Utility")))
        return lock;
    // The holder may be vexilctl at work, not a window the user forgot.
    if (lock->Holder().startsWith(QLatin1String("vexilctl")))
        platform.MsgBox(QStringLiteral("The Vexil is in use by %1.\n\nOnly one program at a time may use the Vexil and "
                                       "the preferences: start the Vexil Utility again when it is done.")
                            .arg(lock->Holder()));
    else
        platform.MsgBox(QStringLiteral("The Vexil Utility is already running.\n\n"
                                       "Only one copy at a time may use the Vexil and the preferences."));
    return nullptr;
}

void App::Event_Open()
{
    m_globals.appHelpFolder = HelpFolderFor(QCoreApplication::applicationDirPath());
    m_helpGlobals.UniHelp =
        std::make_unique<UniHelpEngine>(m_helpGlobals, m_globals.appHelpFolder, QCoreApplication::instance());
    // The help menu names the start page; it is opened from the engine's own folder.
    m_window1->SetHelpRunner([this](const QString& file) {
        UniHelpEngine& help = *m_helpGlobals.UniHelp;
        help.Run(QFileInfo(QDir(help.HelpFolder).filePath(QFileInfo(file).fileName())));
    });
    QGuiApplication::setQuitOnLastWindowClosed(true);
    m_view = std::make_unique<Window1View>(*m_window1);
    // The desktop's logout asks first; during a load the answer is no, as for any close.
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, m_view.get(), [this](QSessionManager& manager) {
        if (m_window1->Event_CancelClose() && manager.allowsInteraction())
            manager.cancel();
    });
    m_window1->Event_Open();
    m_view->show();
}
