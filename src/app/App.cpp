#include "App.h"

#include "Window1View.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>

App::App(Clock& clock, HidBackend& backend, PlatformServices& platform)
    : m_hid(backend), m_window1(std::make_unique<Window1>(m_globals, clock, platform, m_hid, m_prefs))
{
}

App::~App()
{
    m_view.reset();
    m_window1.reset();
    m_hid.Close();
}

QString App::HelpFolderFor(const QString& executableDir)
{
    QDir dir(executableDir);
    dir.cdUp();
    return dir.absoluteFilePath(QStringLiteral("Resources/Help"));
}

void App::Event_Open()
{
    m_globals.appHelpFolder = HelpFolderFor(QCoreApplication::applicationDirPath());
    QGuiApplication::setQuitOnLastWindowClosed(true);
    m_view = std::make_unique<Window1View>(*m_window1);
    m_window1->Event_Open();
    m_view->show();
}
