#include "MessageWindow.h"

#include "DesignLayout.h"

#include <QLabel>
#include <QPushButton>

MessageWindow::MessageWindow(std::function<void()> viewReleaseNotes, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Vexil New Firmware"));
    DesignLayout layout(QSize(333, 120));
    layout.Add(new QLabel(QStringLiteral("New firmware is available for your Vexil."), this), QRect(36, 35, 261, 20),
               DesignLayout::None);
    PushButton1 = new QPushButton(QStringLiteral("View Release Notes"), this);
    layout.Add(PushButton1, QRect(20, 86, 163, 20), DesignLayout::None);
    PushButton2 = new QPushButton(QStringLiteral("Close"), this);
    layout.Add(PushButton2, QRect(244, 86, 69, 20), DesignLayout::None);
    layout.FitText();
    setFixedSize(layout.Size());
    if (!viewReleaseNotes) {
        // Nothing to read: Close is the button Return presses.
        PushButton1->setEnabled(false);
        PushButton1->setToolTip(QStringLiteral("The firmware folder holds no release notes (vexilfwnotes.rtf)"));
        PushButton2->setDefault(true);
        PushButton2->setFocus();
    }
    // The notice stays open while the notes are read.
    connect(PushButton1, &QPushButton::clicked, this, [viewReleaseNotes = std::move(viewReleaseNotes)] {
        if (viewReleaseNotes)
            viewReleaseNotes();
    });
    connect(PushButton2, &QPushButton::clicked, this, &QDialog::accept);
}
