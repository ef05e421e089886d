#include "MyMsgBoxWin.h"

#include "AppIcon.h"

#include <QLabel>
#include <QPushButton>

MyMsgBoxWin::MyMsgBoxWin(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    // A sheet has no title of its own; as a window of its own it carries the program's name.
    setWindowTitle(QStringLiteral("Vexil Utility"));
    using L = DesignLayout;
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(48));
    canvas->setAccessibleName(QStringLiteral("Vexil Utility"));
    m_layout.Add(canvas, QRect(20, 41, 48, 48), L::None);
    MyMsgBoxText = new QLabel(this);
    MyMsgBoxText->setWordWrap(true);
    MyMsgBoxText->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_layout.Add(MyMsgBoxText, QRect(88, 41, 266, 76), L::None);
    PushButton1 = new QPushButton(QStringLiteral("OK"), this);
    m_layout.Add(PushButton1, QRect(274, 105, 80, 20), L::None);
    PushButton1->setDefault(true);
    connect(PushButton1, &QPushButton::clicked, this, &QDialog::reject);
    FitText();
}

void MyMsgBoxWin::FitText()
{
    m_layout.FitText();
    setFixedSize(m_layout.Size());
}
