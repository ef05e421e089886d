#include "MyYesWindow.h"

#include "AppIcon.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>

MyYesWindow::MyYesWindow(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setFixedSize(509, 185);
    auto* group = new QGroupBox(this);
    group->setGeometry(7, 24, 495, 121);
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(48));
    canvas->setGeometry(14, 39, 48, 48);
    LabelText = new QLabel(this);
    LabelText->setWordWrap(true);
    LabelText->setGeometry(80, 39, 410, 48);
    LabelText2 = new QLabel(this);
    LabelText2->setWordWrap(true);
    LabelText2->setGeometry(80, 89, 410, 48);
    YesButton = new QPushButton(QStringLiteral("Yes"), this);
    YesButton->setGeometry(318, 157, 80, 20);
    // Return answers whichever button has the focus; the focus starts on Cancel.
    YesButton->setAutoDefault(true);
    CancelButton = new QPushButton(QStringLiteral("Cancel"), this);
    CancelButton->setGeometry(410, 157, 80, 20);
    CancelButton->setAutoDefault(true);
    CancelButton->setDefault(true);
    connect(YesButton, &QPushButton::clicked, this, [this] {
        m_response = true;
        accept();
    });
    connect(CancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

bool MyYesWindow::Ask(const QString& text, const QString& text2, const QString& cancelCaption)
{
    m_response = false;
    LabelText->setText(text);
    LabelText2->setText(text2);
    CancelButton->setText(cancelCaption);
    exec();
    return m_response;
}

void MyYesWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    CancelButton->setFocus(Qt::ActiveWindowFocusReason);
}
