#include "App.h"
#include "FontWarmUp.h"
#include "QtPlatformServices.h"
#include "QuitOnceShown.h"
#include "SampleFirmware.h"
#include "SimulatedVexil.h"
#include "SystemClock.h"
#include "Window1View.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

// The real application with a simulated device in place of the USB link.
int main(int argc, char* argv[])
{
    const QString description = QStringLiteral("Vexil Utility on a simulated device");
    const QCommandLineOption absent(QStringLiteral("absent"), QStringLiteral("No device is plugged in."));
    const QCommandLineOption silent(QStringLiteral("silent"), QStringLiteral("The device opens but never answers."));
    const QCommandLineOption revision(QStringLiteral("revision"),
                                      QStringLiteral("Firmware revision the device reports, 0-255 (default 112)."),
                                      QStringLiteral("number"), QStringLiteral("112"));
    const QCommandLineOption latency(QStringLiteral("latency-us"),
                                     QStringLiteral("Answer latency per exchange in microseconds (default 1000)."),
                                     QStringLiteral("us"), QStringLiteral("1000"));
    const QCommandLineOption quitWhenShown(QStringLiteral("quit-when-shown"),
                                           QStringLiteral("Quit once the main window is first painted, saying "
                                                          "\"shown\" on standard output (for timing)."));
    const QCommandLineOption sample(QStringLiteral("sample"),
                                    QStringLiteral("Put a sample firmware file of this revision (e.g. 114) into the "
                                                   "demo's firmware folder."),
                                    QStringLiteral("revision"));
    const QList<QCommandLineOption> options{absent, silent, revision, latency, quitWhenShown, sample};
    if (App::AnswerInTerminal(argc, argv, description, options))
        return 0;

    const FontWarmUp fonts;
    QApplication application(argc, argv);
    App::ConfigureApplication();

    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions(options);
    parser.process(application);

    // The demo keeps its own firmware folder and preferences, apart from the real ones.
    const QString sandbox = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/vexil-utility-demo");
    qputenv("XDG_DATA_HOME", QString(sandbox + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CONFIG_HOME", QString(sandbox + QStringLiteral("/config")).toUtf8());
    const QString firmwareFolder = Window1Firmware::MakeDefaultFolder();
    if (!firmwareFolder.isEmpty()) {
        // Something to load on the first run, and more on request.
        if (QDir(firmwareFolder).entryList({QStringLiteral("vexil*.hex")}, QDir::Files).isEmpty())
            SampleFirmware::WriteTo(firmwareFolder, 113);
        if (parser.isSet(sample))
            SampleFirmware::WriteTo(firmwareFolder, std::clamp(parser.value(sample).toInt(), 1, 9999));
    }

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
    const auto onlyCopy = App::ClaimOnlyCopy(platform);
    if (!onlyCopy)
        return 0;
    App app(clock, device, platform, platform);
    // After a load the device runs the revision of the file it was sent (one byte's worth).
    device.SetRevisionAfterLoad([&app]() -> std::uint8_t {
        int index = 0;
        const QString digits =
            Window1Firmware::GetNewestRevision(QStringLiteral("vexil"), {app.window1().m_RevisionedFilename.m_strpath}, index);
        return static_cast<std::uint8_t>(std::clamp<qint64>(Window1Firmware::LeadingNumber(digits), 0, 255));
    });
    app.Event_Open();
    if (parser.isSet(quitWhenShown))
        QuitOnceShown(*app.view());
    return QApplication::exec();
}
