#include "AboutWindow.h"

#include "AppIcon.h"

#include <QGroupBox>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>

AboutWindow::AboutWindow(const QString& revisionText, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("About"));
    using L = DesignLayout;
    m_layout.Add(new QGroupBox(this), QRect(20, 20, 358, 141), L::None);
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(51));
    canvas->setAccessibleName(QStringLiteral("Vexil Utility"));
    m_layout.Add(canvas, QRect(37, 34, 51, 51), L::None);
    m_layout.Add(new QLabel(QStringLiteral("Corvane Vexil Utility"), this), QRect(127, 34, 144, 20), L::None);
    StaticText2 = new QLabel(revisionText, this);
    m_layout.Add(StaticText2, QRect(127, 54, 144, 20), L::None);
    PushButton2 = new QPushButton(QStringLiteral("Close"), this);
    m_layout.Add(PushButton2, QRect(292, 176, 86, 20), L::None);
    PushButton2->setDefault(true);
    m_layout.FitText();
    setFixedSize(m_layout.Size());
    connect(PushButton2, &QPushButton::clicked, this, &QDialog::accept);
}

// Labels and the group box pass their clicks up to here.
void AboutWindow::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void AboutWindow::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    close();
}
