#include "InitWin.h"

#include "DesignLayout.h"

#include <QLabel>

InitWin::InitWin(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setWindowTitle(QStringLiteral("Vexil Utility"));
    DesignLayout layout(QSize(249, 64));
    StaticText1 = new QLabel(QStringLiteral("Initializing..."), this);
    layout.Add(StaticText1, QRect(10, 15, 219, 29), DesignLayout::None);
    layout.FitText();
    setFixedSize(layout.Size());
}
