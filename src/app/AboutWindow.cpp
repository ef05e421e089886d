#include "AboutWindow.h"

#include "AppIcon.h"

#include <QGroupBox>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>

AboutWindow::AboutWindow(const QString& revisionText, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("About"));
    setFixedSize(398, 213);
    auto* group = new QGroupBox(this);
    group->setGeometry(20, 20, 358, 141);
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(51));
    canvas->setGeometry(37, 34, 51, 51);
    auto* name = new QLabel(QStringLiteral("Corvane Vexil Utility"), this);
    name->setGeometry(127, 34, 144, 20);
    StaticText2 = new QLabel(revisionText, this);
    StaticText2->setGeometry(127, 54, 144, 20);
    PushButton2 = new QPushButton(QStringLiteral("Close"), this);
    PushButton2->setGeometry(292, 176, 86, 20);
    PushButton2->setDefault(true);
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
