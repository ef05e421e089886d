#include "App.h"
#include "FontWarmUp.h"
#include "HidapiBackend.h"
#include "QtPlatformServices.h"
#include "SystemClock.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    const FontWarmUp fonts;
    QApplication application(argc, argv);
    App::ConfigureApplication();

    QtPlatformServices platform;
    const auto onlyCopy = App::ClaimOnlyCopy(platform);
    if (!onlyCopy)
        return 0;
    SystemClock clock;
    HidapiBackend backend;
    App app(clock, backend, platform, platform);
    app.Event_Open();
    return QApplication::exec();
}
