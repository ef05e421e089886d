#include "App.h"
#include "AppIcon.h"
#include "HidapiBackend.h"
#include "QtPlatformServices.h"
#include "SystemClock.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setWindowIcon(QIcon(AppIcon(48)));
    QApplication::setApplicationDisplayName(QStringLiteral("Vexil Utility"));

    SystemClock clock;
    HidapiBackend backend;
    QtPlatformServices platform;
    App app(clock, backend, platform);
    app.Event_Open();
    return QApplication::exec();
}
