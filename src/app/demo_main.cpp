#include "App.h"
#include "AppIcon.h"
#include "QtPlatformServices.h"
#include "SimulatedVexil.h"
#include "SystemClock.h"

#include <QApplication>
#include <QIcon>
#include <QCommandLineParser>
#include <QTimer>

// The real application with a simulated device in place of the USB link.
int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setWindowIcon(QIcon(AppIcon(48)));
    QApplication::setApplicationDisplayName(QStringLiteral("Vexil Utility (simulated device)"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Vexil Utility on a simulated device"));
    parser.addHelpOption();
    const QCommandLineOption absent(QStringLiteral("absent"), QStringLiteral("No device is plugged in."));
    const QCommandLineOption silent(QStringLiteral("silent"), QStringLiteral("The device opens but never answers."));
    const QCommandLineOption revision(QStringLiteral("revision"),
                                      QStringLiteral("Firmware revision the device reports, 0-255 (default 112)."),
                                      QStringLiteral("number"), QStringLiteral("112"));
    const QCommandLineOption latency(QStringLiteral("latency-us"),
                                     QStringLiteral("Answer latency per exchange in microseconds (default 1000)."),
                                     QStringLiteral("us"), QStringLiteral("1000"));
    const QCommandLineOption quitWhenShown(QStringLiteral("quit-when-shown"),
                                           QStringLiteral("Quit as soon as the main window is on screen (for timing)."));
    parser.addOptions({absent, silent, revision, latency, quitWhenShown});
    parser.process(application);

    SystemClock clock;
    SimulatedVexil device(clock);
    device.SetPresent(!parser.isSet(absent));
    device.SetAppRevision(static_cast<std::uint8_t>(std::clamp(parser.value(revision).toInt(), 0, 255)));
    device.SetLatencyMicroseconds(std::max(0, parser.value(latency).toInt()));
    device.SetEraseMicroseconds(1'500'000);
    if (parser.isSet(silent))
        for (char cmd : {'U', 'V', 'G', '=', 'E', '!'})
            device.SetCommandFault(cmd, SimulatedVexil::Fault::Silent, -1);

    QtPlatformServices platform;
    App app(clock, device, platform);
    app.Event_Open();
    if (parser.isSet(quitWhenShown))
        QTimer::singleShot(0, &application, [] { QApplication::quit(); });
    return QApplication::exec();
}
