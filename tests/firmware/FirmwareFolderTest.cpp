#include "DeviceFixture.h"
#include "Window1Firmware.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

const QString InvalidFolder = QStringLiteral("MsgBox: The firmware folder path is invalid.  It will be set to the default.");

void Touch(const QString& path)
{
    QFile(path).open(QIODevice::WriteOnly);
}

} // namespace

// The firmware folder on real folders, with a private application data folder.
class FirmwareFolder : public SimulatedDeviceFixture<Window1Firmware> {
protected:
    QTemporaryDir home, root;
    const QString stored = root.path() + QStringLiteral("/current/"); // the folder chosen before the test
    const QString defaultFolder = home.path() + QStringLiteral("/Corvane/Vexil Firmware/");

    void SetUp() override
    {
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        QDir().mkpath(stored);
        globals.m_FolderPath = stored;
        window->FolderPath.SetText(stored);
        window->mStartup = false;
    }
    void TearDown() override { qunsetenv("XDG_DATA_HOME"); }
};

TEST_F(FirmwareFolder, NewestFileIsChosenOrTheFolderSaidToLackOne)
{
    for (const bool startup : {true, false}) {
        window->mStartup = startup;
        window->Checklocalfiles();
        EXPECT_EQ(StatusLines().join('|'), startup ? "" : "Firmware folder does not contain required Vexil firmware file|"
                                                          "Click \"\"Copy new files from Corvane\"| or navigate to a folder "
                                                          "containing Vexil firmware files");
    }
    EXPECT_EQ(window->MCUavailableText.Text(), "missing");

    // The highest leading number wins, of equals the first by name. Each folder also holds a
    // subfolder "vexil9999.hex", which is not a firmware file.
    const std::pair<QStringList, const char*> rows[] = {
        {{"vexil99999999999999999999999.hex", "vexil9223372036854775807.hex"}, "vexil9223372036854775807.hex"},
        {{"VEXIL0112.HEX", "vexil0111.hex"}, "VEXIL0112.HEX"},
        {{"vexil0112.hex", "Vexil112.hex"}, "vexil0112.hex"},
        {{"vexil0112.txt", "xvexil0112.hex", "vexil0000.hex", "vexil-5.hex", "vexil.hex"}, "-"},
        {{"vexil0110.hex", "vexil0112.hex", "vexil0111.hex", "vexilfwnotes.rtf"}, "vexil0112.hex"},
        {{"vexil0111.hex", "vexil112.hex", "vexil0113b.hex", "vexilx999.hex"}, "vexil0113b.hex"},
    };
    for (int i = 0; const auto& [files, chosen] : rows) {
        globals.m_FolderPath = root.path() + QStringLiteral("/%1/").arg(i++);
        QDir().mkpath(globals.m_FolderPath + QStringLiteral("vexil9999.hex"));
        for (const QString& name : files)
            Touch(globals.m_FolderPath + name);
        window->SendVexilButton.SetEnabled(true);
        window->Checklocalfiles();
        EXPECT_EQ(window->m_RevisionedFilename.m_mstrPath, QString::fromLatin1(chosen));
        EXPECT_EQ(window->SendVexilButton.Enabled(), QLatin1String(chosen) != "-") << "left as the device check set it";
    }
    EXPECT_EQ(window->MCUavailableText.Text(), "01.13");
    EXPECT_EQ(platform.calls, QStringList{});
}

TEST_F(FirmwareFolder, NoDefaultFolderToFallBackOnGivesTheDiskMessageAndLeavesTheLabels)
{
    // The application data folder is a file: nothing can be created below it.
    Touch(home.filePath(QStringLiteral("data")));
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toUtf8());
    globals.m_FolderPath = stored + QStringLiteral("gone/");
    window->MCUavailableText.SetText(QStringLiteral("01.05"));
    window->Checklocalfiles();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder, "Beep", "MsgBox: Unable to create default folder.. "
                                           "Something appears to wrong with your hard drive!! You may be out of disk space."}));
    EXPECT_EQ(window->MCUavailableText.Text(), "01.05");
}

TEST_F(FirmwareFolder, NewerRevisionIsAnnouncedOnlyWhenItCountsAndItsNotesOpenFromTheNotice)
{
    const QStringList notice{"Beep", "MessageWindow", "MsgBox: ERROR: File not found! (vexilfwnotes.rtf)"};
    struct Row { const char *installed, *available, *status; bool startup, announced, notice; };
    const Row rows[] = {
        {"01.12", "01.13", "Main", false, true, true}, {"01.12", "01.13", "Main", true, true, false},
        {"01.12", "01.12", "Main", false, false, false}, {"01.13", "01.12", "Main", false, false, false},
        {"N/A", "01.13", "Main", false, false, false}, {"--", "00.01", "Main", false, true, true},
        {"01.12", "01.13", "Unknown", false, false, false},
    };
    platform.viewNotesInMessageWindow = true;
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.installed << " " << row.available << " " << row.status << row.startup);
        window->StatusField.SetText({});
        platform.calls.clear();
        window->MCUinstalledText.SetText(QString::fromLatin1(row.installed));
        window->MCUavailableText.SetText(QString::fromLatin1(row.available));
        globals.m_FirmwareStatus = QString::fromLatin1(row.status);
        window->mStartup = row.startup;
        window->SendVexilButton.SetEnabled(false);
        window->CheckNewRevisions();
        EXPECT_EQ(StatusLines().join('|'), row.announced ? "New firmware is available for your Vexil" : "");
        EXPECT_EQ(window->SendVexilButton.Enabled(), row.announced);
        EXPECT_EQ(platform.calls, row.notice ? notice : QStringList{});
    }
    Touch(stored + QStringLiteral("vexilfwnotes.rtf"));
    platform.calls.clear();
    window->ShowReleaseNotes();
    EXPECT_EQ(platform.calls, QStringList{"OpenDocument: " + stored + "vexilfwnotes.rtf"});
}

TEST_F(FirmwareFolder, ReturnAndEnterTakeThePathAndMoveTheFocusTabOnlyTakesIt)
{
    for (const auto& [key, enter] : {std::pair{13, true}, {3, true}, {9, false}, {'a', false}}) {
        const QString typed = root.path() + QStringLiteral("/k%1").arg(key);
        QDir().mkpath(typed);
        window->FolderPath.SetText(typed);
        QSignalSpy focus(window.get(), &Window1Firmware::focusTabPanel);
        EXPECT_EQ(window->FolderPath_KeyDown(QString(QChar(key))), enter);
        EXPECT_EQ(focus.size(), enter ? 1 : 0);
        EXPECT_EQ(globals.m_FolderPath == typed + "/", key != 'a') << key;
    }
}

TEST_F(FirmwareFolder, TypedPathIsCreatedLevelByLevelOnItsVolumeOrRefused)
{
    QDir().mkpath(root.path() + QStringLiteral("/a"));
    QDir().mkpath(root.path() + QStringLiteral("/Stick"));
    Touch(root.path() + QStringLiteral("/plain-file"));
    platform.volumes = {QStringLiteral("/"), root.path() + QStringLiteral("/Stick")};
    // Beside the temporary folder, under a name no other run uses.
    const QString escape = QFileInfo(root.path()).fileName() + QStringLiteral("-escape");
    const QString r = root.path(), invalid = QStringLiteral("MyMsgBox: Cannot create folder!\nInvalid Path!");
    struct Row { QString typed; bool answer; QString made, message; }; // made empty: the stored path stays
    const Row rows[] = {
        {r + "/a\\b/c\\d", true, r + "/a/b/c/d/", {}},
        {"stick/fw", true, r + "/Stick/fw/", {}},
        {r + "/new/one", false, {}, {}},
        {QString(), true, {}, {}},
        {"x/y/z", true, {}, "MyMsgBox: Volume \"x\" does not exist. Cannot create folder.."},
        {r + "/plain-file/sub", true, {}, invalid},
        {r + "/a/../../" + escape, true, {}, invalid},
    };
    for (const Row& row : rows) {
        platform.calls.clear();
        globals.m_FolderPath = stored;
        window->FolderPath.SetText(row.typed);
        platform.yesAnswers.enqueue(row.answer);
        window->CheckFolderPath();
        const QString now = row.made.isEmpty() ? stored : row.made;
        EXPECT_EQ(platform.calls.join('|'), "MyYesWindow: The folder path entered does not exist\nDo you want to create "
                                            "this folder? | " + row.typed + " | Cancel" + (row.message.isEmpty() ? "" : "|" + row.message));
        EXPECT_EQ(globals.m_FolderPath, now);
        EXPECT_EQ(window->FolderPath.Text(), now);
        EXPECT_TRUE(QFileInfo(now).isDir()) << row.typed.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(r + "/new") || QFileInfo::exists(QFileInfo(r).path() + "/" + escape));
}

TEST_F(FirmwareFolder, ButtonsRerunTheChecks)
{
    const QString chosen = root.path() + QStringLiteral("/chosen/");
    QDir().mkpath(chosen);
    platform.chosenFolders.enqueue(chosen);
    window->BrowseButton.Push();
    window->BrowseButton.Push(); // cancelled
    EXPECT_EQ(platform.calls.join('|'), "ChooseFolder: Select Firmware Folder | Select | " + stored
                                            + "|ChooseFolder: Select Firmware Folder | Select | " + chosen);
    EXPECT_EQ(globals.m_FolderPath, chosen);
    EXPECT_EQ(window->NewRevisionsTimer.GetMode(), Timer::ModeSingle);

    // Check Now looks at the folder at once and at the device when the timer fires.
    Touch(chosen + QStringLiteral("vexil0113.hex"));
    QSignalSpy fired(&window->VexilRevisionsTimer, &Timer::Action);
    window->CheckRevisionsNowButton.Push();
    EXPECT_FALSE(window->CheckRevisionsNowButton.Enabled());
    EXPECT_EQ(window->MCUavailableText.Text(), "01.13");
    ASSERT_TRUE(fired.wait(2000));
    EXPECT_TRUE(window->CheckRevisionsNowButton.Enabled());
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");

    // A folder that was deleted, here the default one never made, is replaced by the default after the message.
    platform.calls.clear();
    window->DefaultButton.Push();
    EXPECT_EQ(platform.calls, (QStringList{"Beep", InvalidFolder}));
    EXPECT_EQ(globals.m_FolderPath, defaultFolder);
    EXPECT_EQ(window->FolderPath.Text(), defaultFolder);
    EXPECT_EQ(window->VexilRevisionsTimer.GetMode(), Timer::ModeSingle);
}
