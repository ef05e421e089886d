#include "MessageWindow.h"

#include <QLabel>
#include <QPushButton>

MessageWindow::MessageWindow(std::function<void()> viewReleaseNotes, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Vexil New Firmware"));
    setFixedSize(333, 120);
    auto* text = new QLabel(QStringLiteral("New firmware is available for your Vexil."), this);
    text->setGeometry(36, 35, 261, 20);
    PushButton1 = new QPushButton(QStringLiteral("View Release Notes"), this);
    PushButton1->setGeometry(20, 86, 163, 20);
    PushButton2 = new QPushButton(QStringLiteral("Close"), this);
    PushButton2->setGeometry(244, 86, 69, 20);
    // The notice stays open while the notes are read.
    connect(PushButton1, &QPushButton::clicked, this, [viewReleaseNotes = std::move(viewReleaseNotes)] {
        if (viewReleaseNotes)
            viewReleaseNotes();
    });
    connect(PushButton2, &QPushButton::clicked, this, &QDialog::accept);
}
