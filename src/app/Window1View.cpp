#include "Window1View.h"

#include "ControlBinding.h"
#include "ProgressWinView.h"
#include "Window1.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenuBar>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

namespace {

const QColor TitleColour(0x00, 0x46, 0xD7);

// The design's sizes are points of 72 to the inch, drawn for a 12-point
// system font: the desktop's own font size stands for 12, so text keeps its
// designed proportions and follows a user who wants it larger.
constexpr double DesignFontPoints = 12.0;

void SetPointSize(QWidget* widget, int points)
{
    const double desktop = QApplication::font().pointSizeF();
    if (desktop <= 0)
        return; // a font sized in pixels: left as the desktop has it
    QFont font = widget->font();
    font.setPointSizeF(desktop * points / DesignFontPoints);
    widget->setFont(font);
}

QLabel* LabelFor(Label& model, QWidget* parent, bool title = false, int points = 12)
{
    auto* label = new QLabel(parent);
    SetPointSize(label, points);
    BindLabel(label, model);
    if (title) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, TitleColour);
        label->setPalette(palette);
    }
    return label;
}

QPushButton* ButtonFor(PushButton& model, QWidget* parent)
{
    auto* button = new QPushButton(parent);
    BindButton(button, model);
    return button;
}

} // namespace

Window1View::Window1View(Window1& controller, QWidget* parent)
    : QMainWindow(parent), m_controller(controller), m_layout(QSize(Window1::DesignWidth, Window1::DesignHeight))
{
    using L = DesignLayout;
    Window1& w = controller;
    setWindowTitle(w.Title());
    connect(&w, &Window1::titleChanged, this, [this] { setWindowTitle(m_controller.Title()); });
    setMinimumSize(Window1::MinimumWidth, Window1::MinimumHeight);
    setMaximumSize(32000, 32000);

    auto* central = new QWidget(this);
    setCentralWidget(central);

    BuildMenuBar();

    auto* tabs = new QTabWidget(central);
    tabs->addTab(new QWidget, QStringLiteral("Firmware"));
    tabs->setAccessibleName(QStringLiteral("Firmware"));
    m_layout.Add(tabs, QRect(8, 0, 583, 540), L::All);
    connect(tabs, &QTabWidget::currentChanged, &w, &Window1::TabPanel1_Change);
    connect(&w, &Window1::tabPanelChanged, tabs, [tabs, &w] { tabs->setCurrentIndex(w.TabPanel1Value()); });

    // The tab's contents, in window coordinates, above the tab panel; group
    // boxes first so that their contents are drawn over them.
    m_layout.Add(new QGroupBox(central), QRect(27, 49, 546, 78), L::Left | L::Right);
    m_layout.Add(new QGroupBox(central), QRect(27, 152, 546, 51), L::Left | L::Right);
    m_layout.Add(new QGroupBox(central), QRect(27, 228, 546, 61), L::Left | L::Right);
    m_layout.Add(new QGroupBox(central), QRect(27, 314, 546, 217), L::All);

    m_layout.Add(LabelFor(w.StaticText1, central, true), QRect(37, 33, 149, 20), L::None);
    QLabel* folderCaption = LabelFor(w.StaticText21, central);
    m_layout.Add(folderCaption, QRect(37, 69, 213, 20), L::None);
    m_layout.Add(ButtonFor(w.DefaultButton, central), QRect(380, 60, 80, 20), L::Left | L::Top);
    m_layout.Add(ButtonFor(w.BrowseButton, central), QRect(482, 60, 80, 20), L::Left | L::Top);

    auto* folderPath = new QLineEdit(central);
    BindTextField(folderPath, w.FolderPath);
    folderCaption->setBuddy(folderPath);
    folderPath->installEventFilter(this);
    m_folderPath = folderPath;
    connect(&w, &Window1::focusTabPanel, tabs, [tabs] { tabs->setFocus(); });
    m_layout.Add(folderPath, QRect(35, 92, 525, 22), L::Left | L::Right);

    m_layout.Add(LabelFor(w.StaticText22, central, true), QRect(37, 136, 149, 20), L::None);
    m_layout.Add(ButtonFor(w.CheckRevisionsNowButton, central), QRect(35, 168, 192, 20), L::Left | L::Top);
    m_layout.Add(ButtonFor(w.CopyNewFilesButton, central), QRect(352, 168, 210, 20), L::Left | L::Top);

    m_layout.Add(LabelFor(w.Firmwareversionstext, central, true), QRect(37, 212, 179, 20), L::None);
    QLabel* installedCaption = LabelFor(w.StaticText5, central);
    QLabel* availableCaption = LabelFor(w.StaticText6, central);
    QLabel* installed = LabelFor(w.MCUinstalledText, central);
    QLabel* available = LabelFor(w.MCUavailableText, central);
    NameAfterCaption(installed, w.MCUinstalledText, installedCaption);
    NameAfterCaption(available, w.MCUavailableText, availableCaption);
    m_layout.Add(installedCaption, QRect(65, 238, 101, 20), L::None);
    m_layout.Add(availableCaption, QRect(188, 238, 70, 20), L::None);
    m_layout.Add(installed, QRect(82, 260, 66, 20), L::None);
    m_layout.Add(available, QRect(193, 260, 55, 20), L::None);
    m_layout.Add(ButtonFor(w.SendVexilButton, central), QRect(352, 248, 210, 20), L::Left | L::Top);

    QLabel* logCaption = LabelFor(w.StaticText23, central, true);
    m_layout.Add(logCaption, QRect(37, 296, 82, 20), L::None);
    m_statusField = new QPlainTextEdit(central);
    logCaption->setBuddy(m_statusField);
    SetPointSize(m_statusField, 12);
    m_statusField->setReadOnly(true);
    m_statusField->setTabChangesFocus(false);
    BindTextArea(m_statusField, w.StatusField,
                 {[&w](const QString& key, Qt::KeyboardModifiers modifiers) {
                      return w.StatusField_KeyDown(key, modifiers);
                  },
                  [&w](int x, int y, bool contextual) { return w.StatusField_MouseDown(x, y, contextual); }});
    m_layout.Add(m_statusField, QRect(34, 323, 532, 200), L::All);
    connect(&w, &Window1::focusStatusField, m_statusField, [this] { m_statusField->setFocus(); });

    m_layout.Add(LabelFor(w.DisplayStatus, central, false, 11), QRect(8, 549, 549, 18), L::Bottom);

    connect(&w, &Window1Base::progressWinCreated, this, &Window1View::ShowProgressWin);
    connect(&w, &Window1::boundsChanged, this, &Window1View::ApplyBounds);
    connect(&w, &Window1::closeRequested, this, &QWidget::close);
    connect(&w, &Window1::minimizeRequested, this, &QWidget::showMinimized);
    connect(&w, &Window1::zoomRequested, this, &QWidget::showMaximized);

    // A larger desktop font grows the window rather than cutting its texts.
    m_layout.FitText();
    setMinimumSize(m_layout.Scaled(QSize(Window1::MinimumWidth, Window1::MinimumHeight)) + QSize(0, MenuBarHeight()));
    ApplyBounds();
}

void Window1View::BuildMenuBar()
{
    Window1& w = m_controller;
    // Alt and a letter open a menu, and a letter chooses in it, as desktop users expect.
    QString menuLetters;
    for (const Window1::Menu& menu : w.MenuBar1()) {
        QMenu* shown = menuBar()->addMenu(WithMnemonic(menu.text, menuLetters));
        shown->setObjectName(menu.name);
        QString itemLetters;
        for (const Window1::MenuEntry& entry : menu.entries) {
            const QString text = entry.item ? WithMnemonic(entry.item->Text(), itemLetters) : QString();
            QAction* action = entry.item ? shown->addAction(text) : shown->addSeparator();
            action->setObjectName(entry.name);
            if (!entry.item)
                continue;
            action->setCheckable(entry.item == &w.ViewTrace);
            if (!entry.shortcut.isEmpty())
                action->setShortcut(QKeySequence(entry.shortcut, QKeySequence::PortableText));
            BindMenuItem(action, *entry.item, text);
        }
    }
    // Where the platform has an application menu, these two belong on it.
    findChild<QAction*>(QStringLiteral("FileQuit"))->setMenuRole(QAction::QuitRole);
    findChild<QAction*>(QStringLiteral("HelpAboutVexilUtil"))->setMenuRole(QAction::AboutRole);
    // The toolkit's quit: every window is asked to close, so the main
    // window's close saves the preferences, and a running load can refuse.
    connect(&w.FileQuit, &MenuItem::Action, this, [] { QApplication::closeAllWindows(); });
}

int Window1View::MenuBarHeight() const
{
    // The design's height is the content's; a menu bar inside the window comes on top of it.
    return menuBar()->isNativeMenuBar() ? 0 : menuBar()->sizeHint().height();
}

QRect Window1View::ContentBounds() const
{
    return QRect(geometry().topLeft(), geometry().size() - QSize(0, MenuBarHeight()));
}

void Window1View::ApplyBounds()
{
    m_applyingBounds = true;
    const QRect bounds = m_controller.Bounds();
    setGeometry(QRect(bounds.topLeft(), bounds.size() + QSize(0, MenuBarHeight())));
    m_applyingBounds = false;
}

void Window1View::keyPressEvent(QKeyEvent* event)
{
    if (event->key() >= Qt::Key_A && event->key() <= Qt::Key_Z)
        m_controller.Event_KeyDown(QString(QChar('a' + (event->key() - Qt::Key_A))), event->modifiers());
    QMainWindow::keyPressEvent(event);
}

void Window1View::ShowProgressWin(ProgressWin* model)
{
    // The view lives exactly as long as its model. A window of its own, but
    // transient for this one, so the desktop keeps it above the main window
    // for the whole load.
    auto* view = new ProgressWinView(*model, this);
    connect(model, &QObject::destroyed, view, &QObject::deleteLater);
    // Closing ends the model's life too; both then go in the same deferred pass.
    connect(model, &ProgressWin::closed, view, &QObject::deleteLater);
}

bool Window1View::eventFilter(QObject* watched, QEvent* event)
{
    // Return, Enter and Tab in the path field go to the controller first; Tab
    // is never consumed, so the focus still moves on.
    if (watched == m_folderPath && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        QString code;
        if (key->key() == Qt::Key_Return)
            code = QChar(13);
        else if (key->key() == Qt::Key_Enter)
            code = QChar(3);
        else if (key->key() == Qt::Key_Tab)
            code = QChar(9);
        if (!code.isEmpty())
            return m_controller.FolderPath_KeyDown(code);
    }
    return QMainWindow::eventFilter(watched, event);
}

void Window1View::closeEvent(QCloseEvent* event)
{
    // A quit request and the desktop's logout come this way too: refusing here cancels them.
    if (m_controller.Event_CancelClose()) {
        event->ignore();
        return;
    }
    m_controller.Event_Close();
    event->accept();
}

void Window1View::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (centralWidget())
        m_layout.Apply(centralWidget()->size());
    if (!m_applyingBounds)
        m_controller.BoundsChangedByUser(ContentBounds());
}

void Window1View::moveEvent(QMoveEvent* event)
{
    QMainWindow::moveEvent(event);
    if (!m_applyingBounds)
        m_controller.BoundsChangedByUser(ContentBounds());
}
