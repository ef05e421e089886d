#include "MyYesWindow.h"

#include "AppIcon.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>

MyYesWindow::MyYesWindow(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    // A sheet has no title of its own; as a window of its own it carries the program's name.
    setWindowTitle(QStringLiteral("Vexil Utility"));
    using L = DesignLayout;
    m_layout.Add(new QGroupBox(this), QRect(7, 24, 495, 121), L::None);
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(48));
    canvas->setAccessibleName(QStringLiteral("Vexil Utility"));
    m_layout.Add(canvas, QRect(14, 39, 48, 48), L::None);
    LabelText = new QLabel(this);
    LabelText->setWordWrap(true);
    m_layout.Add(LabelText, QRect(80, 39, 410, 48), L::None);
    LabelText2 = new QLabel(this);
    LabelText2->setWordWrap(true);
    m_layout.Add(LabelText2, QRect(80, 89, 410, 48), L::None);
    YesButton = new QPushButton(QStringLiteral("Yes"), this);
    m_layout.Add(YesButton, QRect(318, 157, 80, 20), L::None);
    // Return answers whichever button has the focus; the focus starts on Cancel.
    YesButton->setAutoDefault(true);
    CancelButton = new QPushButton(QStringLiteral("Cancel"), this);
    m_layout.Add(CancelButton, QRect(410, 157, 80, 20), L::None);
    CancelButton->setAutoDefault(true);
    CancelButton->setDefault(true);
    connect(YesButton, &QPushButton::clicked, this, [this] {
        m_response = true;
        accept();
    });
    connect(CancelButton, &QPushButton::clicked, this, &QDialog::reject);
    m_layout.FitText();
    setFixedSize(m_layout.Size());
}

bool MyYesWindow::Ask(const QString& text, const QString& text2, const QString& cancelCaption)
{
    m_response = false;
    LabelText->setText(text);
    LabelText2->setText(text2);
    CancelButton->setText(cancelCaption);
    m_layout.FitText();
    setFixedSize(m_layout.Size());
    exec();
    return m_response;
}

void MyYesWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    CancelButton->setFocus(Qt::ActiveWindowFocusReason);
}
