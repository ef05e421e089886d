#include "App.h"
#include "HidapiBackend.h"
#include "QtPlatformServices.h"
#include "SystemClock.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Vexil Utility"));

    SystemClock clock;
    HidapiBackend backend;
    QtPlatformServices platform;
    App app(clock, backend, platform);
    app.Event_Open();
    return QApplication::exec();
}
