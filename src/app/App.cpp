#include "App.h"

#include "Version.h"

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QCoreApplication>

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

bool App::AnswerInTerminal(int argc, char* argv[], const QString& description, const QList<QCommandLineOption>& options)
{
    bool asked = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArrayView word(argv[i]);
        asked = asked || word == "--help" || word == "-h" || word == "--help-all" || word == "--version" || word == "-v";
    }
    if (!asked)
        return false;
    QCoreApplication terminal(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(VEXIL_SHORT_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions(options);
    // Prints the answer and ends the process, or names a wrong option and ends it.
    parser.process(terminal);
    return true;
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
    else {
        // The running copy's window may be hidden behind others or minimised: bring it forward.
        QLocalSocket raise;
        raise.connectToServer(RaiseServerName());
        if (raise.waitForConnected(1000)) {
            raise.write("raise\n");
            raise.waitForBytesWritten(1000);
        }
        platform.MsgBox(QStringLiteral("The Vexil Utility is already running.\n\n"
                                       "Only one copy at a time may use the Vexil and the preferences."));
    }
    return nullptr;
}

QString App::RaiseServerName()
{
    const QByteArray folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toUtf8();
    return QStringLiteral("vexil-utility-") + QString::fromLatin1(QCryptographicHash::hash(folder, QCryptographicHash::Sha1).toHex().left(16));
}

void App::ListenForSecondStarts()
{
    m_raiseServer = std::make_unique<QLocalServer>();
    // This copy holds the lock, so a socket left by a crashed copy is stale.
    QLocalServer::removeServer(RaiseServerName());
    m_raiseServer->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_raiseServer->listen(RaiseServerName()))
        return;
    QObject::connect(m_raiseServer.get(), &QLocalServer::newConnection, m_view.get(), [this] {
        while (QLocalSocket* socket = m_raiseServer->nextPendingConnection())
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        m_view->showNormal();
        m_view->raise();
        m_view->activateWindow();
    });
}

void App::Event_Open()
{
    m_globals.appHelpFolder = HelpFolderFor(QCoreApplication::applicationDirPath());
    m_helpGlobals.UniHelp =
        std::make_unique<UniHelpEngine>(m_helpGlobals, m_globals.appHelpFolder, QCoreApplication::instance());
    // The viewer reopens where the reader left it during this run.
    m_helpGlobals.UniHelp->AutoSet = false;
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
    ListenForSecondStarts();
}
