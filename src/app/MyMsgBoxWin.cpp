#include "MyMsgBoxWin.h"

#include "AppIcon.h"

#include <QLabel>
#include <QPushButton>

MyMsgBoxWin::MyMsgBoxWin(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setFixedSize(382, 137);
    auto* canvas = new QLabel(this);
    canvas->setPixmap(AppIcon(48));
    canvas->setGeometry(20, 41, 48, 48);
    MyMsgBoxText = new QLabel(this);
    MyMsgBoxText->setWordWrap(true);
    MyMsgBoxText->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    MyMsgBoxText->setGeometry(88, 41, 266, 76);
    PushButton1 = new QPushButton(QStringLiteral("OK"), this);
    PushButton1->setGeometry(274, 105, 80, 20);
    PushButton1->setDefault(true);
    connect(PushButton1, &QPushButton::clicked, this, &QDialog::reject);
}
