#include "VexilCtl.h"

#include "FlashImageCheck.h"
#include "SampleFirmware.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <climits>
#include <cstdio>
#include <unistd.h>

namespace {

void Print(std::FILE* to, const QString& text)
{
    std::fprintf(to, "%s\n", text.toLocal8Bit().constData());
    std::fflush(to);
}

constexpr std::uint32_t WindowStart = Window1Device::FLASH_WINDOW_START;
constexpr std::uint32_t WindowEnd = Window1Device::FLASH_WINDOW_END;

} // namespace

VexilCtl::VexilCtl(const Options& options)
    : m_options(options),
      m_sim(options.simulate ? std::make_unique<SimulatedVexil>(m_clock) : nullptr),
      m_hid(m_sim ? static_cast<HidBackend&>(*m_sim) : m_hardware),
      m_window(m_globals, m_clock, m_platform, m_hid),
      m_progress(stdout, ::isatty(STDOUT_FILENO) == 1)
{
    m_platform.quiet = options.quiet;
    m_download.Holder = QStringLiteral("vexilctl fetch");
    m_download.CheckDeviceAfterRun = false;
    m_window.NoFirmwareHint = QStringLiteral("Firmware folder does not contain required Vexil firmware file\n"
                                             "Run \"vexilctl fetch\" to copy the newest firmware from Corvane,\n"
                                             " or name a folder containing Vexil firmware files with --folder");
    // The window layer made itself the log; here the log is the terminal.
    m_globals.AttachSink(this);
    m_window.LoadMayGoOn = [this](bool flashErased) { return LoadMayGoOn(flashErased); };
    connect(&m_interrupts, &InterruptWatch::interrupted, this, &VexilCtl::OnInterrupt);
}

VexilCtl::~VexilCtl()
{
    m_hid.Close();
    m_globals.AttachSink(nullptr);
}

void VexilCtl::StatusPosted(const QString& text, bool shown)
{
    if (!shown || text.isEmpty() || m_options.quiet)
        return;
    m_progress.Break();
    Print(stderr, text);
}

void VexilCtl::Error(const QString& text)
{
    m_progress.Break();
    Print(stderr, QStringLiteral("vexilctl: ") + text);
}

int VexilCtl::Finish(QJsonObject result, const QStringList& lines, int code)
{
    m_progress.Break();
    if (m_options.json) {
        result.insert(QStringLiteral("exitCode"), code);
        Print(stdout, QString::fromUtf8(QJsonDocument(result).toJson(QJsonDocument::Compact)));
    } else {
        for (const QString& line : lines)
            Print(stdout, line);
    }
    return code;
}

int VexilCtl::Run(const QString& command, const QStringList& arguments)
{
    const bool takesFile = command == QLatin1String("verify") || command == QLatin1String("load");
    const qsizetype most = takesFile ? 1 : 0;
    const qsizetype least = command == QLatin1String("verify") ? 1 : 0;
    if (!takesFile && command != QLatin1String("status") && command != QLatin1String("fetch")) {
        Error(QStringLiteral("unknown command \"%1\"; try --help").arg(command));
        return Usage;
    }
    if (arguments.size() < least || arguments.size() > most) {
        Error(QStringLiteral("%1 takes %2").arg(command, least ? QStringLiteral("one FILE")
                                                       : most ? QStringLiteral("at most one FILE")
                                                              : QStringLiteral("no arguments")));
        return Usage;
    }
    if (!ShapeSimulation())
        return Usage;
    const QString file = arguments.value(0);
    if (command == QLatin1String("verify"))
        return Verify(file);
    if (!ChooseFolder())
        return Usage;
    if (command != QLatin1String("fetch") && !ClaimDevice(command))
        return DeviceFailed;
    m_window.mStartup = false;
    const int code = command == QLatin1String("status") ? Status() : command == QLatin1String("load") ? Load(file) : Fetch();
    if (m_sim && !m_flashOut.isEmpty() && m_sim->Erased()) {
        QFile out(m_flashOut);
        if (out.open(QIODevice::WriteOnly))
            out.write(reinterpret_cast<const char*>(m_sim->Flash().data()), static_cast<qint64>(m_sim->Flash().size()));
    }
    return code;
}

bool VexilCtl::ShapeSimulation()
{
    if (!m_sim) {
        if (!m_options.sim.isEmpty())
            Error(QStringLiteral("--sim needs --simulate"));
        return m_options.sim.isEmpty();
    }
    SimulatedVexil& sim = *m_sim;
    // As the demo: a device answering within a millisecond, erasing in 1.5 s,
    // and running afterwards the revision of the file it was sent.
    sim.SetLatencyMicroseconds(1000);
    sim.SetEraseMicroseconds(1'500'000);
    sim.SetRevisionAfterLoad([this]() -> std::uint8_t {
        int index = 0;
        const QString digits = Window1Firmware::GetNewestRevision(
            QStringLiteral("vexil"), {m_window.m_RevisionedFilename.m_strpath}, index);
        return static_cast<std::uint8_t>(std::clamp<qint64>(Window1Firmware::LeadingNumber(digits), 0, 255));
    });
    for (const QString& item : m_options.sim.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString key = item.section(QLatin1Char('='), 0, 0).trimmed();
        const QString value = item.section(QLatin1Char('='), 1);
        bool number = false;
        const qint64 n = value.toLongLong(&number);
        if (key == QLatin1String("absent"))
            sim.SetPresent(false);
        else if (key == QLatin1String("silent"))
            for (char cmd : {'U', 'V', 'G', '=', 'E', '!'})
                sim.SetCommandFault(cmd, SimulatedVexil::Fault::Silent, -1);
        else if (key == QLatin1String("stale"))
            sim.SetRevisionUnchangedAfterLoad(true);
        else if (key == QLatin1String("unplug") && number && n > 0 && n <= INT_MAX)
            sim.UnplugAfterReports(static_cast<int>(n));
        else if (key == QLatin1String("missed-syncs") && number && n >= 0 && n <= 100)
            sim.SetMissedSyncsAfterLoad(static_cast<int>(n));
        else if (key == QLatin1String("flash") && !value.isEmpty())
            m_flashOut = value;
        else if (key == QLatin1String("revision") && number && n >= 0 && n <= 255)
            sim.SetAppRevision(static_cast<std::uint8_t>(n));
        else if (key == QLatin1String("latency-us") && number && n >= 0)
            sim.SetLatencyMicroseconds(n);
        else if (key == QLatin1String("erase-ms") && number && n >= 0)
            sim.SetEraseMicroseconds(n * 1000);
        else {
            Error(QStringLiteral("--sim: \"%1\" is not one of absent, silent, stale, revision=0..255, latency-us=N, "
                                 "erase-ms=N, unplug=N, missed-syncs=N, flash=PATH")
                      .arg(item));
            return false;
        }
    }
    return true;
}

bool VexilCtl::ChooseFolder()
{
    // Read only: the preferences belong to the window program, which writes them.
    QFile file(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
               + QStringLiteral("/VexilUtilPrefs"));
    if (file.open(QIODevice::ReadOnly))
        m_prefs.ReadFrom(file.readAll());
    if (!m_options.folder.isEmpty()) {
        if (!QFileInfo(m_options.folder).isDir()) {
            Error(QStringLiteral("--folder: \"%1\" is not a folder").arg(m_options.folder));
            return false;
        }
        m_globals.m_FolderPath = Window1Firmware::StoredForm(m_options.folder);
        return true;
    }
    if (m_sim) {
        // As the demo: its own firmware folder, with a sample to load on the first run.
        const QString demo = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/vexil-utility-demo/data/Corvane/Vexil Firmware");
        if (QDir().mkpath(demo) && QDir(demo).entryList({QStringLiteral("vexil*.hex")}, QDir::Files).isEmpty())
            SampleFirmware::WriteTo(demo, 113);
        m_globals.m_FolderPath = Window1Firmware::StoredForm(demo);
        return true;
    }
    m_globals.m_FolderPath =
        Window1Firmware::StoredForm(m_prefs.GetPrefString(QStringLiteral("FolderPath"), QString()));
    if (m_globals.m_FolderPath.isEmpty())
        m_globals.m_FolderPath = Window1Firmware::MakeDefaultFolder();
    return true;
}

bool VexilCtl::ClaimDevice(const QString& command)
{
    if (m_sim)
        return true;
    // The same lock as the window program's.
    if (m_lock.TryClaim(QStringLiteral("vexilctl ") + command))
        return true;
    if (m_lock.Holder().startsWith(QLatin1String("vexilctl")))
        Error(QStringLiteral("the Vexil is in use by %1; try again when it is done").arg(m_lock.Holder()));
    else
        Error(QStringLiteral("the Vexil Utility is running and owns the Vexil; close it first"));
    return false;
}

QString VexilCtl::FirstBadRecord(const QByteArray& bytes)
{
    // Each line on its own, followed by an end record, through a quiet reader:
    // the first line the reader refuses is the bad record. The last line gets
    // no end record after it, so a file cut inside its last record is told as
    // the reader tells it, not as a bad character.
    const QList<QByteArray> lines = bytes.split('\n');
    qsizetype last = lines.size() - 1;
    while (last > 0 && lines[last].trimmed().isEmpty())
        --last;
    for (qsizetype i = 0; i <= last; ++i) {
        const QByteArray line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        Globals scratch;
        TerminalPlatform listener;
        listener.quiet = true;
        MCULoader reader(&scratch, &listener);
        reader.bs.OpenBytes(line + (i < last ? "\n:00000001FF\n" : "\n"));
        reader.m_fIsReadOK = true;
        if (!reader.ReadNext())
            return QStringLiteral("line %1: %2")
                .arg(i + 1)
                .arg(listener.lastMessage.isEmpty() ? scratch.m_StatusMsg : listener.lastMessage);
    }
    return QStringLiteral("every record reads, but End File record was not found");
}

bool VexilCtl::CheckFile(const FirmwareImage& file, const QString& path, QJsonObject& result)
{
    // The reader keeps its offsets from this pass, as the load's own check does.
    MCULoader& reader = m_window.m_MCULoader;
    result.insert(QStringLiteral("file"), path);
    QString verdict;
    bool sound = false;
    if (!file.read) {
        verdict = QStringLiteral("cannot be read");
    } else if (!reader.VerifyBytes(file.bytes)) {
        verdict = FirstBadRecord(file.bytes);
    } else {
        const FlashImageCheck::Result image = FlashImageCheck::Run(reader, file.bytes, WindowStart, WindowEnd);
        sound = image.Sound();
        verdict = image.Describe();
        result.insert(QStringLiteral("packets"), image.packets);
    }
    result.insert(QStringLiteral("sound"), sound);
    result.insert(QStringLiteral("verdict"), verdict);
    return sound;
}

int VexilCtl::Verify(const QString& file)
{
    QJsonObject result{{QStringLiteral("command"), QStringLiteral("verify")}};
    const bool sound = CheckFile(FirmwareImage::FromFile(file, QFileInfo(file).fileName(), {}), file, result);
    if (m_cancelled)
        return Finish(result, {QStringLiteral("Interrupted")}, Interrupted);
    return Finish(result, {file + QStringLiteral(": ") + result.value(QStringLiteral("verdict")).toString()},
                  sound ? Success : FileUnsound);
}

int VexilCtl::Status()
{
    QJsonObject result{{QStringLiteral("command"), QStringLiteral("status")}};
    m_window.Checklocalfiles();
    const bool answering = m_window.CheckVexilRevisions();
    const bool found = m_globals.m_FirmwareStatus == QLatin1String("Main");
    m_window.CheckNewRevisions();
    const bool newer = answering && m_window.newMCUavailable;

    const QString file = m_window.m_RevisionedFilename.m_mstrPath;
    const bool hasFile = file != QLatin1String("-");
    const QString device = answering ? m_globals.m_strMcuRevision
        : found                      ? QStringLiteral("found, but not answering")
                                     : QStringLiteral("not found (Unable to open Vexil device)");
    result.insert(QStringLiteral("device"), QJsonObject{{QStringLiteral("found"), found},
                                                        {QStringLiteral("answering"), answering},
                                                        {QStringLiteral("revision"), answering ? QJsonValue(device) : QJsonValue()}});
    result.insert(QStringLiteral("folder"), m_globals.m_FolderPath);
    result.insert(QStringLiteral("newest"), hasFile ? QJsonValue(m_window.MCUavailableText.Text()) : QJsonValue());
    result.insert(QStringLiteral("file"), hasFile ? QJsonValue(file) : QJsonValue());
    result.insert(QStringLiteral("newFirmware"), newer);

    QStringList lines{QStringLiteral("Vexil:  ") + device, QStringLiteral("Folder: ") + m_globals.m_FolderPath,
                      QStringLiteral("Newest: ")
                          + (hasFile ? m_window.MCUavailableText.Text() + QStringLiteral(" (") + file + QLatin1Char(')')
                                     : QStringLiteral("no firmware file"))};
    if (newer)
        lines << QStringLiteral("New firmware is available for your Vexil");
    else if (answering)
        lines << (hasFile ? QStringLiteral("Nothing to load: the Vexil runs the newest firmware in the folder")
                          : QStringLiteral("Nothing to load: the folder holds no firmware file"));
    const int code = m_cancelled ? Interrupted
        : !found                 ? DeviceAbsent
        : !answering             ? DeviceFailed
        : newer                  ? Success
                                 : NothingToDo;
    return Finish(result, lines, code);
}

int VexilCtl::Load(const QString& file)
{
    QJsonObject result{{QStringLiteral("command"), QStringLiteral("load")}};
    RevisionedFilename& chosen = m_window.m_RevisionedFilename;
    if (file.isEmpty()) {
        m_window.Checklocalfiles();
        if (!m_window.HasRequiredFiles()) {
            m_globals.SetStatusText(QStringLiteral("One or more required firmware files is missing."), false);
            return Finish(result, {QStringLiteral("No firmware file in ") + m_globals.m_FolderPath}, FileUnsound);
        }
    } else {
        // The revision in the name is what the device must report afterwards.
        const QFileInfo info(file);
        const QString revision = Window1Firmware::FileRevisionText(info.fileName());
        if (revision.isEmpty()) {
            result.insert(QStringLiteral("file"), file);
            return Finish(result,
                          {file + QStringLiteral(": the name carries no revision (vexil<revision>.hex), so the "
                                                 "load could not be checked")},
                          FileUnsound);
        }
        m_globals.m_FolderPath = Window1Firmware::StoredForm(info.absolutePath());
        chosen.m_mstrPath = info.fileName();
        m_window.MCUavailableText.SetText(revision);
    }
    // The file is read once; those bytes are checked, before the device is even
    // opened, and they are what the load sends.
    const QString path = m_globals.m_FolderPath + chosen.m_mstrPath;
    const FirmwareImage firmware = FirmwareImage::FromFile(path, chosen.m_mstrPath, m_window.MCUavailableText.Text());
    if (!CheckFile(firmware, path, result))
        return Finish(result, {path + QStringLiteral(": ") + result.value(QStringLiteral("verdict")).toString()},
                      FileUnsound);
    if (!m_window.CheckVexilRevisions()) {
        const bool found = m_globals.m_FirmwareStatus == QLatin1String("Main");
        return Finish(result,
                      {found ? QStringLiteral("The Vexil does not answer, so nothing was sent to it: unplug it, plug it "
                                              "in again and run the load again")
                             : QStringLiteral("No Vexil found")},
                      m_cancelled ? Interrupted : found ? DeviceFailed : DeviceAbsent);
    }
    if (m_cancelled)
        return Finish(result, {QStringLiteral("Cancelled: the Vexil keeps its firmware")}, Interrupted);
    // Going back, or writing the same again, only when asked for by name.
    const QString running = m_globals.m_strMcuRevision;
    const double offered = Window1Firmware::RevisionValue(firmware.revision);
    const double have = Window1Firmware::RevisionValue(running);
    if ((offered < have && !m_options.allowOlder) || (offered == have && !m_options.allowReinstall)) {
        result.insert(QStringLiteral("revision"), running);
        const bool older = offered < have;
        return Finish(result,
                      {QStringLiteral("Not loaded: the Vexil runs %1, and %2 is %3; nothing was sent (use %4 to load it)")
                           .arg(running, firmware.revision,
                                older ? QStringLiteral("older") : QStringLiteral("the same revision"),
                                older ? QStringLiteral("--allow-older") : QStringLiteral("--allow-reinstall"))},
                      NotNewer);
    }

    m_window.mDeviceBusy = true;
    ProgressBar& bar = m_window.GetProgressWin().ProgressBar1;
    if (!m_options.json && !m_options.quiet)
        connect(&bar, &ProgressBar::changed, this, [this, &bar] { m_progress.Show(bar.Value(), bar.Maximum()); });
    m_globals.m_ProgressWinOpen = true;
    chosen.m_strpath = chosen.m_mstrPath;
    bar.SetValue(0);
    const bool loaded = m_window.VexilLoadImage(firmware);
    m_globals.m_ProgressWinOpen = false;
    m_window.mDeviceBusy = false;

    result.insert(QStringLiteral("loaded"), loaded);
    result.insert(QStringLiteral("revision"), m_globals.m_strMcuRevision);
    result.insert(QStringLiteral("state"), m_window.m_LastLoad.Word());
    // A second Ctrl+C after the last packet came too late to stop anything.
    if (m_stopped && !loaded)
        return Finish(result, {QStringLiteral("Stopped: the Vexil is left without firmware; load it again")},
                      Interrupted);
    if (m_cancelled && m_phase == Phase::Idle)
        return Finish(result, {QStringLiteral("Cancelled before the erase: the Vexil keeps its firmware")},
                      Interrupted);
    if (!loaded) {
        m_globals.SetStatusText(QStringLiteral("Vexil firmware load failed"), false);
        return Finish(result, {QStringLiteral("Vexil firmware load failed"), m_window.m_LastLoad.Describe()},
                      DeviceFailed);
    }
    return Finish(result, {QStringLiteral("Vexil now runs firmware revision ") + m_globals.m_strMcuRevision}, Success);
}

int VexilCtl::Fetch()
{
    QJsonObject result{{QStringLiteral("command"), QStringLiteral("fetch")}};
    m_download.SetServer(m_prefs.GetPrefString(QStringLiteral("FTPServer"), QString()),
                         m_prefs.GetPrefNumber(QStringLiteral("FTPPort"), FirmwareServer::kPort));
    m_download.CopyNewFilesButton_Action();
    const FirmwareDownload::Outcome outcome = m_download.DoMacDownload();
    result.insert(QStringLiteral("folder"), m_globals.m_FolderPath);
    result.insert(QStringLiteral("copied"), QJsonArray::fromStringList(m_download.Copied));
    if (m_cancelled)
        return Finish(result, {QStringLiteral("Interrupted")}, Interrupted);
    switch (outcome) {
    case FirmwareDownload::Outcome::Copied:
        return Finish(result,
                      {QStringLiteral("Copied %1 to %2").arg(m_download.Copied.join(QStringLiteral(", ")),
                                                           m_globals.m_FolderPath)},
                      Success);
    case FirmwareDownload::Outcome::UpToDate:
        return Finish(result, {QStringLiteral("Nothing to fetch: the folder has the newest firmware on the server")},
                      NothingToDo);
    case FirmwareDownload::Outcome::Unsound:
        return Finish(result, {QStringLiteral("The newest firmware on the server failed its check")}, FileUnsound);
    case FirmwareDownload::Outcome::FolderBusy:
        return Finish(result, {QStringLiteral("Not fetched: another download into the folder is running")}, DeviceFailed);
    case FirmwareDownload::Outcome::Unreachable:
    case FirmwareDownload::Outcome::FetchFailed:
        break;
    }
    return Finish(result, {QStringLiteral("The firmware could not be fetched from the server")}, NetworkFailure);
}

void VexilCtl::OnInterrupt()
{
    if (m_phase == Phase::Idle) {
        // Nothing is erased: the command ends at its next step, and a download at once.
        m_cancelled = true;
        m_download.Ftp.Abandon();
        Error(QStringLiteral("cancelling"));
        return;
    }
    if (!m_warned) {
        m_warned = true;
        Error(QStringLiteral("the flash is being erased or written: stopping now leaves the Vexil without firmware. "
                             "Press Ctrl+C again to stop anyway."));
        return;
    }
    m_stopped = true;
}

bool VexilCtl::LoadMayGoOn(bool flashErased)
{
    if (flashErased)
        return !m_stopped;
    if (m_cancelled)
        return false;
    m_phase = Phase::Erasing;
    return true;
}
