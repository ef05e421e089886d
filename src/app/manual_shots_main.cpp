// Photographs the program's windows on the simulated device for the manual:
//   QT_QPA_PLATFORM=offscreen build/default/src/app/vexil-manual-shots resources/Help/images
// Runs the real application in a scratch home, so nothing of the user's is touched.
#include "App.h"
#include "MessageWindow.h"
#include "MyYesWindow.h"
#include "QtPlatformServices.h"
#include "SampleFirmware.h"
#include "SimulatedVexil.h"
#include "SystemClock.h"
#include "Window1.h"
#include "Window1View.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <functional>

namespace {

const QString TypicalFolder = QStringLiteral("/home/user/.local/share/Corvane/Vexil Firmware/");
QString g_outFolder;
int g_failures = 0;

void Settle()
{
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
}

void Save(QWidget& widget, const QString& name, const QRect& crop = {})
{
    Settle();
    const QPixmap picture = crop.isNull() ? widget.grab() : widget.grab(crop);
    const QString path = QDir(g_outFolder).filePath(name);
    if (!picture.save(path, "PNG", 9)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        ++g_failures;
        return;
    }
    std::printf("%s %dx%d\n", qPrintable(name), picture.width(), picture.height());
}

// The desktop, except that every modal window is photographed and answered
// "no" at once instead of waiting for a click.
class ShootingPlatform final : public PlatformServices {
public:
    QString nextQuestion;             // file name for the next question window
    std::function<void()> afterQuestion;

    void MsgBox(const QString& text) override { std::fprintf(stderr, "message box: %s\n", qPrintable(text)); }
    void Beep() override {}
    void MyMsgBox(const QString& text) override { m_real.MyMsgBox(text); }
    bool MyYesWindow(const QString& text, const QString& text2, const QString& cancelCaption) override
    {
        ::MyYesWindow window;
        window.LabelText->setText(text);
        window.LabelText2->setText(text2);
        window.CancelButton->setText(cancelCaption);
        window.show();
        Save(window, nextQuestion);
        window.close();
        if (afterQuestion)
            afterQuestion();
        return false;
    }
    void ShowMessageWindow(const std::function<void()>& viewReleaseNotes) override
    {
        MessageWindow window(viewReleaseNotes);
        window.show();
        Save(window, QStringLiteral("new-firmware.png"));
    }
    void ShowAboutWindow(const QString& revisionText) override { m_real.ShowAboutWindow(revisionText); }
    void ShowInitWin(int, const QString&) override {}
    void CloseInitWin() override {}
    bool OpenDocument(const QString&) override { return false; }
    QString ChooseFolder(const QString&, const QString&, const QString&) override { return {}; }
    QStringList MountedVolumes() override { return m_real.MountedVolumes(); }
    QString ClipboardText() override { return {}; }
    void SetClipboardText(const QString&) override {}
    int PopupMenu(const std::vector<PopupItem>&) override { return -1; }
    void Quit(int) override {}
    OSVersionRecord OSVersion() override { return m_real.OSVersion(); }
    QRect AvailableScreen() override { return m_real.AvailableScreen(); }
    QList<QRect> ScreenGeometries() override { return m_real.ScreenGeometries(); }
    // Help messages go to the real desktop: no help window is photographed.
    HelpPlatform& Help() { return m_real; }

private:
    QtPlatformServices m_real;
};

QWidget* TopLevelTitled(const QString& title)
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible() && widget->windowTitle() == title)
            return widget;
    return nullptr;
}

// A device running 01.12 and a folder holding 01.13: the notice, a whole load
// with the progress window caught halfway, the closing question, the log after it.
void ShootLoad(ShootingPlatform& platform)
{
    SystemClock clock;
    SimulatedVexil device(clock);
    device.SetAppRevision(112);
    device.SetRevisionAfterLoad(113);
    device.SetLatencyMicroseconds(150);
    device.SetEraseMicroseconds(300'000);
    App app(clock, device, platform, platform.Help());
    app.Event_Open();
    Window1& window = app.window1();
    Window1View& view = *app.view();
    Settle();
    window.CheckNewRevisions();
    // The field shows where a user's folder lies rather than the scratch home.
    const QString folder = window.FolderPath.Text();
    window.FolderPath.SetText(TypicalFolder);
    Save(view, QStringLiteral("main-window.png"));
    window.FolderPath.SetText(folder);

    // The folder question, on a path that does not exist; answered no.
    platform.nextQuestion = QStringLiteral("create-folder.png");
    window.FolderPath.SetText(QStringLiteral("/home/user/Vexil Files"));
    window.CheckFolderPath();
    window.FolderPath.SetText(folder);

    QEventLoop loop;
    bool caught = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        QWidget* progress = TopLevelTitled(QStringLiteral("Loading Vexil Firmware"));
        auto* bar = progress ? progress->findChild<QProgressBar*>() : nullptr;
        if (!caught && bar && bar->maximum() > 0 && bar->value() * 5 >= bar->maximum() * 2) {
            caught = true;
            Save(*progress, QStringLiteral("progress-window.png"));
        }
    });
    watch.start(20);
    platform.nextQuestion = QStringLiteral("load-complete.png");
    platform.afterQuestion = [&loop] { loop.quit(); };
    QTimer::singleShot(120'000, &loop, [&loop] {
        std::fprintf(stderr, "the load did not end within two minutes\n");
        ++g_failures;
        loop.quit();
    });
    window.SendVexilButton_Action();
    loop.exec();
    watch.stop();
    platform.afterQuestion = nullptr;
    if (!caught) {
        std::fprintf(stderr, "the progress window was never seen halfway\n");
        ++g_failures;
    }
    Settle();
    // The revisions and the activity log, below the folder controls.
    Save(view, QStringLiteral("log-after-load.png"), QRect(0, 206, view.width(), 328));
}

// No device plugged in: what the first start says.
void ShootNoDevice(ShootingPlatform& platform)
{
    SystemClock clock;
    SimulatedVexil device(clock);
    device.SetPresent(false);
    App app(clock, device, platform, platform.Help());
    app.Event_Open();
    Window1View& view = *app.view();
    Save(view, QStringLiteral("no-device.png"), QRect(0, 206, view.width(), 328));
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    App::ConfigureApplication();
    if (argc != 2) {
        std::fprintf(stderr, "usage: vexil-manual-shots OUTPUT-FOLDER\n");
        return 2;
    }
    g_outFolder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(g_outFolder);

    QTemporaryDir home;
    qputenv("XDG_DATA_HOME", QDir(home.path()).filePath(QStringLiteral("data")).toUtf8());
    qputenv("XDG_CONFIG_HOME", QDir(home.path()).filePath(QStringLiteral("config")).toUtf8());
    const QString firmware = Window1Firmware::MakeDefaultFolder();
    if (firmware.isEmpty() || !SampleFirmware::WriteTo(firmware, 113)) {
        std::fprintf(stderr, "cannot prepare the firmware folder\n");
        return 1;
    }

    ShootingPlatform platform;
    ShootNoDevice(platform);
    ShootLoad(platform);
    return g_failures == 0 ? 0 : 1;
}
