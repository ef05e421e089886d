#pragma once

#include "TextField.h"
#include "Timer.h"
#include "Window1Device.h"

#include <QString>
#include <QStringList>

// The main window's operations on the folder of firmware files.
class Window1Firmware : public Window1Device {
    Q_OBJECT
public:
    static constexpr const char* ReleaseNotesName = "vexilfwnotes.rtf";

    Window1Firmware(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid,
                    QObject* parent = nullptr);

    TextField FolderPath;
    PushButton DefaultButton{QStringLiteral("Default")};
    PushButton BrowseButton{QStringLiteral("Browse")};
    Timer NewRevisionsTimer{250};
    // Revision digits of the newest local file; empty when there is none.
    QString hmcuRevision;
    bool newMCUavailable = false;
    // Told when the folder holds no firmware file; a program without the
    // window's button names its own way to fetch one.
    QString NoFirmwareHint = QStringLiteral("Firmware folder does not contain required Vexil firmware file\n"
                                            "Click \"\"Copy new files from Corvane\"\n"
                                            " or navigate to a folder containing Vexil firmware files");

    // Finds the newest firmware file of the folder, repairing a missing folder.
    void Checklocalfiles();
    bool HasRequiredFiles();
    // Tells the user when the folder holds a newer revision than the device.
    void CheckNewRevisions();
    void NewRevisionsTimer_Action();
    void CheckRevisionsNowButton_Action();
    void ShowReleaseNotes();

    void DefaultButton_Action();
    void BrowseButton_Action();
    // Return and Enter take the typed path over and move the focus on (true:
    // the key is dealt with); Tab takes it over and lets the focus move as usual.
    bool FolderPath_KeyDown(const QString& key);
    // Takes over the typed path, offering to create a folder that does not exist.
    void CheckFolderPath();

    // The revision digits of the newest "<prefix><digits>.hex" in `files`, or ""
    // when none has a number above 0; `index` is set to its place only when found.
    static QString GetNewestRevision(const QString& prefix, const QStringList& files, int& index);
    // The display revision a file named "vexil<digits>.hex" carries ("01.13"); "" for any other name.
    static QString FileRevisionText(const QString& fileName);

    // The longest numeric beginning of `text` as a number; 0 when there is none.
    static qint64 LeadingNumber(const QString& text);
    // The leading decimal number of a revision text ("01.12" is 1.12; "--" is 0).
    static double RevisionValue(const QString& text);

    // The default firmware folder below the application data folder, created
    // level by level; empty when it cannot be had.
    static QString MakeDefaultFolder();
    // Where the default folder is, whether or not it exists; empty without a data folder.
    static QString DefaultFolderPath();
    // The stored form of a folder path: absolute and ending in "/", so that a
    // file name appends directly; empty stays empty.
    static QString StoredForm(const QString& path);

signals:
    void focusTabPanel();

private:
    // Creates the missing levels of a typed path from its volume down; the
    // stored form of the last folder, or empty after telling the user why not.
    QString CreateTypedPath(const QString& typed);
    void ShowStoredPath() { FolderPath.SetText(m_globals.m_FolderPath); }
};
