#include "Window1Firmware.h"

#include "RevisionText.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

#include <limits>

namespace {

const QString InvalidFolderMessage =
    QStringLiteral("The firmware folder path is invalid.  It will be set to the default.");
const QString DiskMessage = QStringLiteral(
    "Unable to create default folder.. Something appears to wrong with your hard drive!! You may be out of disk space.");

bool IsFolder(const QString& path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

} // namespace

Window1Firmware::Window1Firmware(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid,
                                 QObject* parent)
    : Window1Device(globals, clock, platform, hid, parent)
{
    m_RevisionedFilename.m_mstrPath = QStringLiteral("-");
    connect(&NewRevisionsTimer, &Timer::Action, this, &Window1Firmware::NewRevisionsTimer_Action);
    connect(&CheckRevisionsNowButton, &PushButton::Action, this, &Window1Firmware::CheckRevisionsNowButton_Action);
    connect(&DefaultButton, &PushButton::Action, this, &Window1Firmware::DefaultButton_Action);
    connect(&BrowseButton, &PushButton::Action, this, &Window1Firmware::BrowseButton_Action);
}

qint64 Window1Firmware::LeadingNumber(const QString& text)
{
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('+') || text[i] == QLatin1Char('-')))
        negative = text[i++] == QLatin1Char('-');
    qint64 value = 0;
    for (; i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        const int digit = text[i].unicode() - '0';
        // Saturate rather than wrap, so a long run of digits still compares as large.
        if (value > (std::numeric_limits<qint64>::max() - digit) / 10)
            value = std::numeric_limits<qint64>::max();
        else
            value = value * 10 + digit;
    }
    return negative ? -value : value;
}

double Window1Firmware::RevisionValue(const QString& text)
{
    static const QRegularExpression leading(QStringLiteral("^[+-]?[0-9]*(\\.[0-9]*)?"));
    return leading.match(text).captured(0).toDouble();
}

QString Window1Firmware::FileRevisionText(const QString& fileName)
{
    int index = 0;
    const QString digits = GetNewestRevision(QStringLiteral("vexil"), {fileName}, index);
    return digits.isEmpty() ? QString() : RevisionText(LeadingNumber(digits));
}

QString Window1Firmware::GetNewestRevision(const QString& prefix, const QStringList& files, int& index)
{
    QString best;
    for (int i = 0; i < files.size(); ++i) {
        const QString& name = files[i];
        if (name.left(prefix.size()).toLower() != prefix)
            continue;
        if (name.right(4).toLower() != QLatin1String(".hex"))
            continue;
        const QString digits = name.mid(prefix.size(), name.size() - prefix.size() - 4);
        if (LeadingNumber(digits) > LeadingNumber(best)) {
            best = digits;
            index = i;
        }
    }
    return best;
}

QString Window1Firmware::MakeDefaultFolder()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    // A fresh account may not have the data folder yet; it is the platform's, so make it.
    if (data.isEmpty() || !QDir().mkpath(data))
        return {};
    QDir dir(data);
    // One level at a time, so an existing level is kept as it is.
    for (const QString& level : {QStringLiteral("Corvane"), QStringLiteral("Vexil Firmware")}) {
        if (!dir.exists(level) && !dir.mkdir(level))
            return {};
        if (!dir.cd(level))
            return {};
    }
    return dir.absolutePath() + QLatin1Char('/');
}

void Window1Firmware::Checklocalfiles()
{
    if (!IsFolder(m_globals.m_FolderPath)) {
        m_platform.Beep();
        m_platform.MsgBox(InvalidFolderMessage);
        const QString folder = MakeDefaultFolder();
        if (!IsFolder(folder)) {
            m_platform.Beep();
            m_platform.MsgBox(DiskMessage);
            return;
        }
        m_globals.m_FolderPath = folder;
    }

    // On this platform the stored path is already the form a user reads.
    FolderPath.SetText(m_globals.m_FolderPath);

    // Files only, by name: the order decides between equal revisions.
    const QStringList names =
        QDir(m_globals.m_FolderPath).entryList(QDir::Files | QDir::Hidden, QDir::Name | QDir::IgnoreCase);
    int index = 0;
    hmcuRevision = GetNewestRevision(QStringLiteral("vexil"), names, index);

    if (!hmcuRevision.isEmpty()) {
        MCUavailableText.SetText(RevisionText(LeadingNumber(hmcuRevision)));
        m_RevisionedFilename.m_mstrPath = names[index];
        return;
    }
    MCUavailableText.SetText(QStringLiteral("missing"));
    m_RevisionedFilename.m_mstrPath = QStringLiteral("-");
    if (!mStartup)
        m_globals.SetStatusText(NoFirmwareHint, false);
    SendVexilButton.SetEnabled(false);
}

bool Window1Firmware::HasRequiredFiles()
{
    m_RevisionedFilename.m_strpath = m_RevisionedFilename.m_mstrPath;
    return m_RevisionedFilename.m_mstrPath != QLatin1String("-");
}

void Window1Firmware::CheckNewRevisions()
{
    const QString installed = MCUinstalledText.Text();
    const bool newer = installed.compare(QLatin1String("N/A"), Qt::CaseInsensitive) != 0
        && RevisionValue(MCUavailableText.Text()) > RevisionValue(installed);
    newMCUavailable = newer;

    const QString& status = m_globals.m_FirmwareStatus;
    if (newer && status.compare(QLatin1String("Unknown"), Qt::CaseInsensitive) != 0) {
        if (status.compare(QLatin1String("Main"), Qt::CaseInsensitive) == 0 && !mStartup) {
            m_platform.Beep();
            // Without a notes file the notice offers no button that can only fail.
            const bool notes = !m_globals.m_FolderPath.isEmpty()
                && QFileInfo(m_globals.m_FolderPath + QLatin1String(ReleaseNotesName)).isFile();
            m_platform.ShowMessageWindow(notes ? std::function<void()>([this] { ShowReleaseNotes(); })
                                               : std::function<void()>());
        }
        m_globals.SetStatusText(QStringLiteral("New firmware is available for your Vexil"), false);
        SendVexilButton.SetEnabled(true);
    }
    CheckRevisionsNowButton.SetEnabled(true);
}

void Window1Firmware::NewRevisionsTimer_Action()
{
    // The labels it compares are in flux during a load, and its notice would
    // stop the load halfway: it runs once the load is over.
    if (mDeviceBusy) {
        NewRevisionsTimer.SetMode(Timer::ModeSingle);
        return;
    }
    CheckNewRevisions();
}

void Window1Firmware::CheckRevisionsNowButton_Action()
{
    if (mDeviceBusy)
        return;
    CheckRevisionsNowButton.SetEnabled(false);
    Checklocalfiles();
    VexilRevisionsTimer.SetMode(Timer::ModeSingle);
}

void Window1Firmware::ShowReleaseNotes()
{
    const QString path = m_globals.m_FolderPath + QLatin1String(ReleaseNotesName);
    if (m_globals.m_FolderPath.isEmpty() || !QFileInfo(path).isFile()) {
        m_platform.MsgBox(QStringLiteral("ERROR: File not found! (vexilfwnotes.rtf)"));
        return;
    }
    if (!m_platform.OpenDocument(path))
        m_platform.MsgBox(QStringLiteral("The release notes cannot be shown: no program on this computer is set to "
                                         "open RTF files.\n\nThey are in ")
                          + path);
}
