#pragma once

#include "FirmwareDownload.h"
#include "Globals.h"
#include "HidapiBackend.h"
#include "InterruptWatch.h"
#include "OnlyCopyLock.h"
#include "ProgressLine.h"
#include "PushButton.h"
#include "REALEasyPrefs.h"
#include "SimulatedVexil.h"
#include "StatusSink.h"
#include "SystemClock.h"
#include "TerminalPlatform.h"
#include "VexilHid.h"
#include "Window1Firmware.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <memory>

// The commands of vexilctl, run on the program's own logic: the firmware layer
// of the main window (no window is ever made), the download run, the reader
// and the image check. Status lines go to standard error as the main window's
// log would show them; each command's result goes to standard output.
class VexilCtl : public QObject, public StatusSink {
    Q_OBJECT
public:
    enum ExitCode {
        Success = 0,
        Usage = 2,
        DeviceAbsent = 3,
        DeviceFailed = 4,
        FileUnsound = 5,
        NetworkFailure = 6,
        NothingToDo = 7,
        NotNewer = 8,
        Interrupted = 130,
    };

    struct Options {
        QString folder;
        bool json = false;
        bool quiet = false;
        bool simulate = false;
        // A load of an older, or the same, revision than the Vexil runs goes ahead only when allowed.
        bool allowOlder = false;
        bool allowReinstall = false;
        // key[=value] pairs, comma-separated, that shape the simulated device.
        QString sim;
    };

    explicit VexilCtl(const Options& options);
    ~VexilCtl() override;

    // Runs one command ("status", "verify", "load", "fetch") with its arguments.
    int Run(const QString& command, const QStringList& arguments);

    void StatusPosted(const QString& text, bool shown) override;

private:
    int Status();
    int Verify(const QString& file);
    int Load(const QString& file);
    int Fetch();

    // The simulated device as --sim describes it; false after naming a bad key.
    bool ShapeSimulation();
    // The firmware folder: --folder, else the preferences', else the default.
    bool ChooseFolder();
    // The device is the window program's too: while it runs, it owns it. A
    // fetch never opens the device and takes only the download's lock.
    bool ClaimDevice(const QString& command);
    // The reader's pass and the image check the load makes before any erase,
    // over the file's bytes as read once.
    bool CheckFile(const FirmwareImage& file, const QString& path, QJsonObject& result);
    // The line and the reader's complaint for the first record it refuses.
    static QString FirstBadRecord(const QByteArray& bytes);
    void OnInterrupt();
    bool LoadMayGoOn(bool flashErased);

    // The result: JSON object or its text lines, and the exit code.
    int Finish(QJsonObject result, const QStringList& lines, int code);
    void Error(const QString& text);

    Options m_options;
    SystemClock m_clock;
    HidapiBackend m_hardware;
    std::unique_ptr<SimulatedVexil> m_sim;
    VexilHid m_hid;
    Globals m_globals;
    TerminalPlatform m_platform;
    REALEasyPrefs m_prefs;
    Window1Firmware m_window;
    PushButton m_fetchButton;
    FirmwareDownload m_download{m_window, m_fetchButton};
    InterruptWatch m_interrupts;
    ProgressLine m_progress;
    OnlyCopyLock m_lock;
    QString m_flashOut;

    enum class Phase { Idle, Erasing };
    Phase m_phase = Phase::Idle;
    bool m_cancelled = false;
    bool m_warned = false;
    bool m_stopped = false;
};
