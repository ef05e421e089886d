#include "InitWin.h"

#include <QLabel>

InitWin::InitWin(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setWindowTitle(QStringLiteral("Vexil Utility"));
    setFixedSize(249, 64);
    StaticText1 = new QLabel(QStringLiteral("Initializing..."), this);
    StaticText1->setGeometry(10, 15, 219, 29);
}
