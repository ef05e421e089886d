#include "QuitOnceShown.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

// What Qt alone costs to put up a window of the main window's size showing one
// line of text (which brings in the fonts): the floor under the program's own
// start-up figure, measured beside it.
int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.setCentralWidget(new QLabel(QStringLiteral("Vexil Utility")));
    window.resize(600, 609);
    QuitOnceShown(window);
    window.show();
    return QApplication::exec();
}
