#include "Window1View.h"

#include "ControlBinding.h"
#include "ProgressWinView.h"
#include "Window1.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

namespace {

QLabel* TitleLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(0x00, 0x46, 0xD7));
    label->setPalette(palette);
    return label;
}

} // namespace

Window1View::Window1View(Window1& controller, QWidget* parent)
    : QMainWindow(parent), m_controller(controller), m_layout(QSize(Window1::DesignWidth, Window1::DesignHeight))
{
    using L = DesignLayout;
    setWindowTitle(controller.Title());
    connect(&controller, &Window1::titleChanged, this, [this] { setWindowTitle(m_controller.Title()); });
    resize(Window1::DesignWidth, Window1::DesignHeight);
    setMinimumSize(600, 590);
    setMaximumSize(32000, 32000);

    auto* central = new QWidget(this);
    setCentralWidget(central);

    auto* tabs = new QTabWidget(central);
    tabs->addTab(new QWidget, QStringLiteral("Firmware"));
    m_layout.Add(tabs, QRect(8, 0, 583, 540), L::All);

    // The tab's contents sit above the tab panel in window coordinates.
    auto* revisionsGroup = new QGroupBox(central);
    m_layout.Add(revisionsGroup, QRect(27, 228, 546, 61), L::Left | L::Right);
    m_layout.Add(TitleLabel(QStringLiteral("Firmware Revisions"), central), QRect(37, 212, 179, 20), L::None);
    m_layout.Add(new QLabel(QStringLiteral("Installed in Vexil"), central), QRect(65, 238, 101, 20), L::None);

    auto* installed = new QLabel(central);
    BindLabel(installed, controller.MCUinstalledText);
    m_layout.Add(installed, QRect(82, 260, 66, 20), L::None);

    m_layout.Add(new QLabel(QStringLiteral("Available"), central), QRect(188, 238, 70, 20), L::None);
    auto* available = new QLabel(central);
    BindLabel(available, controller.MCUavailableText);
    m_layout.Add(available, QRect(193, 260, 55, 20), L::None);

    auto* checkGroup = new QGroupBox(central);
    m_layout.Add(checkGroup, QRect(27, 152, 546, 51), L::Left | L::Right);
    m_layout.Add(TitleLabel(QStringLiteral("Check for New Files"), central), QRect(37, 136, 149, 20), L::None);

    auto* checkNow = new QPushButton(central);
    BindButton(checkNow, controller.CheckRevisionsNowButton);
    m_layout.Add(checkNow, QRect(35, 168, 192, 20), L::Left | L::Top);

    auto* send = new QPushButton(central);
    BindButton(send, controller.SendVexilButton);
    m_layout.Add(send, QRect(352, 248, 210, 20), L::Left | L::Top);

    auto* logGroup = new QGroupBox(central);
    m_layout.Add(logGroup, QRect(27, 314, 546, 217), L::All);
    m_layout.Add(TitleLabel(QStringLiteral("Activity Log"), central), QRect(37, 296, 82, 20), L::None);

    auto* status = new QPlainTextEdit(central);
    status->setReadOnly(true);
    status->setTabChangesFocus(false);
    BindTextArea(status, controller.StatusField);
    m_layout.Add(status, QRect(34, 323, 532, 200), L::All);

    connect(&controller, &Window1Base::progressWinCreated, this, &Window1View::ShowProgressWin);
}

void Window1View::ShowProgressWin(ProgressWin* model)
{
    // The view lives exactly as long as its model.
    auto* view = new ProgressWinView(*model);
    connect(model, &QObject::destroyed, view, &QObject::deleteLater);
    // Closing ends the model's life too; both then go in the same deferred pass.
    connect(model, &ProgressWin::closed, view, &QObject::deleteLater);
}

void Window1View::closeEvent(QCloseEvent* event)
{
    m_controller.Event_Close();
    event->accept();
}

void Window1View::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (centralWidget())
        m_layout.Apply(centralWidget()->size());
}
