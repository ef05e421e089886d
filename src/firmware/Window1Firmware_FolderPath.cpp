#include "Window1Firmware.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

QString Window1Firmware::StoredForm(const QString& path)
{
    if (path.isEmpty())
        return {};
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    return absolutePath.endsWith(QLatin1Char('/')) ? absolutePath : absolutePath + QLatin1Char('/');
}

QString Window1Firmware::DefaultFolderPath()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty())
        return {};
    return StoredForm(QDir(data).absoluteFilePath(QStringLiteral("Corvane/Vexil Firmware")));
}

void Window1Firmware::DefaultButton_Action()
{
    if (mDeviceBusy)
        return;
    const QString folder = DefaultFolderPath();
    if (!folder.isEmpty()) {
        m_globals.m_FolderPath = folder;
        ShowStoredPath();
    }
    Checklocalfiles();
    VexilRevisionsTimer.SetMode(Timer::ModeSingle);
    NewRevisionsTimer.SetMode(Timer::ModeSingle);
}

void Window1Firmware::BrowseButton_Action()
{
    if (mDeviceBusy)
        return;
    const QString chosen = m_platform.ChooseFolder(QStringLiteral("Select Firmware Folder"), QStringLiteral("Select"),
                                                   m_globals.m_FolderPath);
    if (!chosen.isEmpty()) {
        m_globals.m_FolderPath = StoredForm(chosen);
        ShowStoredPath();
    }
    Checklocalfiles();
    NewRevisionsTimer.SetMode(Timer::ModeSingle);
}

bool Window1Firmware::FolderPath_KeyDown(const QString& key)
{
    const int code = key.isEmpty() ? 0 : key.at(0).unicode();
    const bool enter = code == 13 || code == 3;
    if (!enter && code != 9)
        return false;
    if (!mDeviceBusy) {
        if (FolderPath.Text() != m_globals.m_FolderPath)
            CheckFolderPath();
        else
            Checklocalfiles();
    }
    if (enter)
        emit focusTabPanel();
    return enter;
}

void Window1Firmware::CheckFolderPath()
{
    const QString typed = FolderPath.Text();
    // Only an absolute path names a folder by itself; anything else starts with a volume name.
    const QFileInfo item(typed);
    if (typed.startsWith(QLatin1Char('/')) && item.isDir()) {
        m_globals.m_FolderPath = StoredForm(typed);
        Checklocalfiles();
        return;
    }

    const bool create = m_platform.MyYesWindow(
        QStringLiteral("The folder path entered does not exist\nDo you want to create this folder?"), typed,
        QStringLiteral("Cancel"));
    if (!create) {
        ShowStoredPath();
        Checklocalfiles();
        return;
    }
    if (typed.isEmpty()) {
        ShowStoredPath();
        return;
    }
    const QString created = CreateTypedPath(typed);
    if (created.isEmpty()) {
        ShowStoredPath();
        return;
    }
    m_globals.m_FolderPath = created;
    Checklocalfiles();
}

QString Window1Firmware::CreateTypedPath(const QString& typed)
{
    static const QRegularExpression separators(QStringLiteral("[/\\\\]"));
    const QStringList elements = typed.split(separators);
    const QString volumeName = elements.constFirst();

    // A path that begins with a separator starts on the root; otherwise its
    // first element must name a mounted volume.
    QString root;
    if (volumeName.isEmpty()) {
        root = QStringLiteral("/");
    } else {
        for (const QString& volume : m_platform.MountedVolumes()) {
            const QString name = QFileInfo(QDir::cleanPath(volume)).fileName();
            if (!name.isEmpty() && name.compare(volumeName, Qt::CaseInsensitive) == 0) {
                root = volume;
                break;
            }
        }
    }
    if (root.isEmpty()) {
        MyMsgBox(QStringLiteral("Volume \"") + volumeName + QStringLiteral("\" does not exist. Cannot create folder.."));
        return {};
    }

    QDir current(root);
    for (qsizetype i = 1; i < elements.size(); ++i) {
        const QString& level = elements[i];
        if (level.isEmpty() || level == QLatin1String("."))
            continue;
        // Climbing out of the path being made is not a level of it.
        const bool usable = level != QLatin1String("..") && current.exists();
        const bool ok = usable && (QFileInfo(current.filePath(level)).isDir() || current.mkdir(level)) && current.cd(level);
        if (!ok) {
            MyMsgBox(QStringLiteral("Cannot create folder!\nInvalid Path!"));
            return {};
        }
    }
    return StoredForm(current.absolutePath());
}
