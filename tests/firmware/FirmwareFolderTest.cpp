#include "DeviceFixture.h"
#include "Window1Firmware.h"
#include "XdgHomes.h"

#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

const QString InvalidFolder = QStringLiteral("MsgBox: The firmware folder path is invalid.  It will be set to the default.");

void Touch(const QString& path) { QFile(path).open(QIODevice::WriteOnly); }

// The firmware folder on real folders, with a private application data folder.
class FirmwareFolder : public SimulatedDeviceFixture<Window1Firmware> {
protected:
    XdgHomes homes;
    QTemporaryDir root;
    const QString stored = root.path() + QLatin1Char('/'); // the folder chosen before the test

    void SetUp() override
    {
        globals.m_FolderPath = stored;
        window->mStartup = false;
    }
};

TEST_F(FirmwareFolder, NewestFileIsChosenOrTheFolderSaidToLackOne)
{
    window->Checklocalfiles();
    EXPECT_EQ(StatusLines().join('|'), "Firmware folder does not contain required Vexil firmware file|"
                                       "Click \"\"Copy new files from Corvane\"| or navigate to a folder containing Vexil firmware files");
    // The highest leading number wins, of equals the first by name. Each folder also holds a
    // subfolder "vexil9999.hex", which is not a firmware file.
    const std::pair<QStringList, const char*> rows[] = {
        {{"vexil99999999999999999999999.hex", "vexil9223372036854775807.hex"}, "vexil9223372036854775807.hex"},
        {{"VEXIL0112.HEX", "vexil0111.hex"}, "VEXIL0112.HEX"},
        {{"vexil0112.hex", "Vexil112.hex"}, "vexil0112.hex"},
        {{"vexil0112.txt", "xvexil0112.hex", "vexil0000.hex", "vexil-5.hex", "vexil.hex"}, "-"},
        {{"vexil0111.hex", "vexil112.hex", "vexil0113b.hex", "vexilx999.hex"}, "vexil0113b.hex"},
    };
    for (int i = 0; const auto& [files, chosen] : rows) {
        globals.m_FolderPath = root.path() + QStringLiteral("/%1/").arg(i++);
        QDir().mkpath(globals.m_FolderPath + QStringLiteral("vexil9999.hex"));
        for (const QString& name : files)
            Touch(globals.m_FolderPath + name);
        window->SendVexilButton.SetEnabled(true);
        window->Checklocalfiles();
        // The send button is left as the device check set it unless there is no file.
        EXPECT_EQ(std::pair(window->m_RevisionedFilename.m_mstrPath, window->SendVexilButton.Enabled()),
                  std::pair(QString::fromLatin1(chosen), QLatin1String(chosen) != "-"));
    }
    EXPECT_EQ(window->MCUavailableText.Text(), "01.13");

    // The application data folder is a file: no default folder to fall back on, and the label stays.
    Touch(homes.DataPath());
    globals.m_FolderPath = stored + QStringLiteral("gone/");
    window->Checklocalfiles();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder, "Beep", "MsgBox: Unable to create default folder.. "
                                           "Something appears to wrong with your hard drive!! You may be out of disk space."}));
    EXPECT_EQ(window->MCUavailableText.Text(), "01.13");

    // A newer revision is announced only when it counts; its notes open from the notice.
    const QStringList notice{"Beep", "MessageWindow without notes"};
    const struct { const char *installed, *available, *status; bool startup, announced, notice; } revisions[] = {
        {"01.12", "01.13", "Main", false, true, true}, {"01.12", "01.13", "Main", true, true, false}, {"01.12", "01.12", "Main", false, false, false},
        {"01.13", "01.12", "Main", false, false, false}, {"N/A", "01.13", "Main", false, false, false}, {"01.12", "01.13", "Unknown", false, false, false},
    };
    platform.viewNotesInMessageWindow = true;
    for (const auto& row : revisions) {
        window->StatusField.SetText({});
        platform.calls.clear();
        window->MCUinstalledText.SetText(QString::fromLatin1(row.installed));
        window->MCUavailableText.SetText(QString::fromLatin1(row.available));
        globals.m_FirmwareStatus = QString::fromLatin1(row.status);
        window->mStartup = row.startup;
        window->SendVexilButton.SetEnabled(false);
        window->CheckNewRevisions();
        EXPECT_EQ(StatusLines().join('|'), row.announced ? "New firmware is available for your Vexil" : "") << row.installed << row.available;
        EXPECT_EQ(std::pair(window->SendVexilButton.Enabled(), platform.calls), std::pair(row.announced, row.notice ? notice : QStringList{}));
    }
    // With notes in the folder the notice's button opens them.
    globals.m_FolderPath = root.path() + QLatin1Char('/');
    Touch(root.filePath("vexilfwnotes.rtf"));
    window->MCUinstalledText.SetText("01.12");
    window->MCUavailableText.SetText("01.13");
    globals.m_FirmwareStatus = "Main";
    window->mStartup = false;
    platform.calls.clear();
    window->CheckNewRevisions();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", "MessageWindow", "OpenDocument: " + root.filePath("vexilfwnotes.rtf")}));
}

TEST_F(FirmwareFolder, TypedPathIsTakenByReturnOrEnterCreatedLevelByLevelOnItsVolumeOrRefused)
{
    for (const auto& [key, enter] : {std::pair{13, true}, {3, true}, {9, false}, {'a', false}}) {
        const QString typed = root.path() + QStringLiteral("/k%1").arg(key);
        QDir().mkpath(typed);
        window->FolderPath.SetText(typed);
        QSignalSpy focus(window.get(), &Window1Firmware::focusTabPanel);
        const bool taken = window->FolderPath_KeyDown(QString(QChar(key)));
        EXPECT_EQ(std::tuple(taken, focus.size(), globals.m_FolderPath == typed + "/"), std::tuple(enter, enter ? 1 : 0, key != 'a')) << key;
    }

    Touch(root.path() + QStringLiteral("/plain-file"));
    platform.volumes = {QStringLiteral("/"), root.path() + QStringLiteral("/k9")};
    // Beside the temporary folder, under a name no other run uses.
    const QString escape = QFileInfo(root.path()).fileName() + QStringLiteral("-escape");
    const QString r = root.path(), invalid = QStringLiteral("MyMsgBox: Cannot create folder!\nInvalid Path!");
    const struct { QString typed; bool answer; QString made, message; } rows[] = { // made empty: the stored path stays
        {r + "/k13\\b/c\\d", true, r + "/k13/b/c/d/", {}},
        {"K9/fw", true, r + "/k9/fw/", {}},
        {r + "/new/one", false, {}, {}},
        {"x/y/z", true, {}, "MyMsgBox: Volume \"x\" does not exist. Cannot create folder.."},
        {r + "/plain-file/sub", true, {}, invalid},
        {r + "/k13/../../" + escape, true, {}, invalid},
    };
    for (const auto& row : rows) {
        platform.calls.clear();
        globals.m_FolderPath = stored;
        window->FolderPath.SetText(row.typed);
        platform.yesAnswers.enqueue(row.answer);
        window->CheckFolderPath();
        const QString now = row.made.isEmpty() ? stored : row.made;
        EXPECT_EQ(platform.calls.join('|'), "MyYesWindow: The folder path entered does not exist\nDo you want to create "
                                            "this folder? | " + row.typed + " | Cancel" + (row.message.isEmpty() ? "" : "|" + row.message));
        EXPECT_EQ(std::pair(globals.m_FolderPath, window->FolderPath.Text()), std::pair(now, now));
        EXPECT_TRUE(QFileInfo(now).isDir()) << row.typed.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(r + "/new") || QFileInfo::exists(QFileInfo(r).path() + "/" + escape));

    // The chooser, then the default folder: each reruns the checks.
    platform.calls.clear();
    const QString chosen = r + QStringLiteral("/k3/");
    platform.chosenFolders.enqueue(chosen);
    window->BrowseButton.Push();
    window->BrowseButton.Push(); // cancelled
    EXPECT_EQ(platform.calls.join('|'), "ChooseFolder: Select Firmware Folder | Select | " + stored
                                            + "|ChooseFolder: Select Firmware Folder | Select | " + chosen);
    EXPECT_EQ(globals.m_FolderPath, chosen);
    EXPECT_EQ(window->NewRevisionsTimer.GetMode(), Timer::ModeSingle);
    // The default folder was never made: it is made after the message.
    platform.calls.clear();
    window->DefaultButton.Push();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder}));
    const QString defaultFolder = homes.DataPath() + QStringLiteral("/Corvane/Vexil Firmware/");
    EXPECT_EQ(std::pair(globals.m_FolderPath, window->FolderPath.Text()), std::pair(defaultFolder, defaultFolder));
    EXPECT_EQ(window->VexilRevisionsTimer.GetMode(), Timer::ModeSingle);
}

} // namespace
