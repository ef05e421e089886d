#pragma once

#include <QList>
#include <QRect>
#include <QString>

#include <QStringList>
#include <QUrl>

#include <functional>
#include <vector>

// Major, minor and patch of the running operating system.
struct OSVersionRecord {
    int major = 0;
    int minor = 0;
    int patch = 0;
};

// What the program asks of the desktop. The Qt implementation shows real
// dialogs; tests use a scripted one that records each call and answers from
// a queue, so no test ever blocks on a modal window.
class PlatformServices {
public:
    virtual ~PlatformServices() = default;

    // The platform's modal message box.
    virtual void MsgBox(const QString& text) = 0;
    virtual void Beep() = 0;

    // The one-message window; returns at once, the window stays until OK.
    virtual void MyMsgBox(const QString& text) = 0;
    // The modal two-line question; true only for its Yes button.
    virtual bool MyYesWindow(const QString& text, const QString& text2, const QString& cancelCaption) = 0;
    // The modal new-firmware notice; its "View Release Notes" button calls
    // `viewReleaseNotes`, and is disabled when that is empty (no notes to show).
    virtual void ShowMessageWindow(const std::function<void()>& viewReleaseNotes) = 0;
    virtual void ShowAboutWindow(const QString& revisionText) = 0;
    // The start-up notice, shown without blocking at `left`, and its closing.
    virtual void ShowInitWin(int left, const QString& text) = 0;
    virtual void CloseInitWin() = 0;

    // Hands a document to its default application without waiting for it;
    // false when no program on the desktop takes the file.
    virtual bool OpenDocument(const QString& path) = 0;
    // Hands a URL to the default browser or handler, without waiting for it.
    virtual bool OpenURL(const QUrl& url) = 0;

    // A folder chooser; the chosen folder's absolute path, or empty when cancelled.
    virtual QString ChooseFolder(const QString& title, const QString& actionCaption, const QString& initialFolder) = 0;
    // A chooser of one existing file; its absolute path, or empty when cancelled
    // (and where the platform has no chooser).
    virtual QString ChooseFile(const QString& /*title*/, const QString& /*initialFolder*/, const QString& /*filter*/)
    {
        return {};
    }
    // The roots a typed path may start from, in the platform's order.
    virtual QStringList MountedVolumes() = 0;

    virtual QString ClipboardText() = 0;
    virtual void SetClipboardText(const QString& text) = 0;
    // A pop-up menu at the pointer ("-" is a separator); the index of the
    // chosen item, or -1 when the menu closed without a choice.
    struct PopupItem {
        QString text;
        bool enabled = true;
    };
    virtual int PopupMenu(const std::vector<PopupItem>& items) = 0;

    // Ends the program with this exit code once the event loop regains control.
    virtual void Quit(int exitCode) = 0;

    virtual OSVersionRecord OSVersion() = 0;
    // The main screen's area for windows, in screen coordinates.
    virtual QRect AvailableScreen() = 0;
    // Every screen's whole area, in screen coordinates; the main screen's
    // area for windows where only that is known.
    virtual QList<QRect> ScreenGeometries() { return {AvailableScreen()}; }
};
