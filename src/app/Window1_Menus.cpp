#include "Window1.h"

#include "Version.h"

#include <QDir>
#include <QUrl>

namespace {

const QString StartPage = QStringLiteral("VexilUtility.htm");

} // namespace

MenuItem* Window1::MenuItemNamed(const QString& name) const
{
    for (const Menu& menu : m_menuBar)
        for (const MenuEntry& entry : menu.entries)
            if (entry.item && entry.name == name)
                return entry.item;
    return nullptr;
}

void Window1::AddMenuHandlers()
{
    // Quit has no handler here: the toolkit's quit closes the windows, and the
    // main window's close saves the preferences on the way out.
    using Handler = bool (Window1::*)();
    const std::pair<const char*, Handler> handlers[] = {
        {"FileSendFirmwareFile", &Window1::_FileSendFirmwareFile_Action},
        {"ViewTrace", &Window1::_ViewTrace_Action},
        {"WindowMinimize", &Window1::_WindowMinimize_Action},
        {"WindowZoom", &Window1::_WindowZoom_Action},
        {"WindowSettodefaultposition", &Window1::_WindowSettodefaultposition_Action},
        {"HelpVexilUtilHelp", &Window1::_HelpVexilUtilHelp_Action},
        {"HelpReleaseNotes", &Window1::_HelpReleaseNotes_Action},
        {"HelpAboutVexilUtil", &Window1::_HelpAboutVexilUtil_Action},
        {"BrowserHelp", &Window1::_BrowserHelp_Action},
    };
    for (const auto& [name, handler] : handlers)
        if (MenuItem* item = MenuItemNamed(QLatin1String(name)))
            connect(item, &MenuItem::Action, this, [this, handler = handler] { (this->*handler)(); });
}

bool Window1::Event_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers)
{
    // Select all, copy and cut act on the status log wherever the focus is;
    // paste does not, so nothing lands in the log unseen.
    const QString k = key.toLower();
    if (modifiers.testFlag(MenuShortcutModifier)
        && (k == QLatin1String("a") || k == QLatin1String("c") || k == QLatin1String("x")))
        StatusField_KeyDown(k, modifiers);
    return false;
}

bool Window1::_ViewTrace_Action()
{
    const bool on = !ViewTrace.Checked();
    ViewTrace.SetChecked(on);
    m_globals.m_TraceMode = on;
    m_globals.m_Verbose = on;
    return true;
}

bool Window1::_WindowMinimize_Action()
{
    emit minimizeRequested();
    return true;
}

bool Window1::_WindowZoom_Action()
{
    emit zoomRequested();
    return true;
}

bool Window1::_WindowSettodefaultposition_Action()
{
    // The top is a third of the window's own height below the screen's top,
    // whatever the screen's height.
    const QRect screen = m_platform.AvailableScreen();
    SetBounds(QRect((screen.width() - m_bounds.width()) / 2, screen.top() + m_bounds.height() / 3, m_bounds.width(),
                    m_bounds.height()));
    return true;
}

bool Window1::_HelpVexilUtilHelp_Action()
{
    if (m_runHelp)
        m_runHelp(QDir(m_globals.appHelpFolder).filePath(StartPage));
    return true;
}

bool Window1::_HelpReleaseNotes_Action()
{
    ShowReleaseNotes();
    return true;
}

bool Window1::_HelpAboutVexilUtil_Action()
{
    m_platform.ShowAboutWindow(QStringLiteral("Revision " VEXIL_SHORT_VERSION));
    for (const Menu& menu : m_menuBar)
        for (const MenuEntry& entry : menu.entries)
            if (entry.item)
                entry.item->SetEnabled(true);
    return true;
}

bool Window1::_BrowserHelp_Action()
{
    const QString page = QDir(m_globals.appHelpFolder).filePath(StartPage);
    if (!m_platform.OpenURL(QUrl::fromLocalFile(page)))
        m_platform.MsgBox(QStringLiteral("No web browser could be started to show the help.\n\nThe manual's start page "
                                         "is %1: open it in a browser, or choose Vexil Utility Help (F1).")
                              .arg(page));
    return true;
}
