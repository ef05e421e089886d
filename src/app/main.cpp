#include "App.h"
#include "FontWarmUp.h"
#include "HidapiBackend.h"
#include "QtPlatformServices.h"
#include "SystemClock.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    if (App::AnswerInTerminal(argc, argv,
                              QStringLiteral("Keeps a Vexil on current firmware: shows its revision and the firmware "
                                             "folder's, copies new firmware from Corvane and sends it to the Vexil.\n"
                                             "The window takes no other options; vexilctl does the same from a "
                                             "terminal.")))
        return 0;
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
