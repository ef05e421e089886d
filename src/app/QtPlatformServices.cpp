#include "QtPlatformServices.h"

#include <QApplication>
#include <QMessageBox>

void QtPlatformServices::MsgBox(const QString& text)
{
    QMessageBox box(QMessageBox::NoIcon, QApplication::applicationDisplayName(), text, QMessageBox::Ok);
    box.exec();
}

void QtPlatformServices::Beep()
{
    QApplication::beep();
}
