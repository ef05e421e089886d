#pragma once

#include "PlatformServices.h"

#include <QQueue>
#include <QStringList>

// Desktop services for tests: records every call in order, shows nothing,
// and answers questions from a queue (no answer queued: the safe "no").
class ScriptedPlatformServices final : public PlatformServices {
public:
    void MsgBox(const QString& text) override { calls << QStringLiteral("MsgBox: ") + text; }
    void Beep() override { calls << QStringLiteral("Beep"); }
    void MyMsgBox(const QString& text) override { calls << QStringLiteral("MyMsgBox: ") + text; }
    bool MyYesWindow(const QString& text, const QString& text2, const QString& cancelCaption) override
    {
        calls << QStringLiteral("MyYesWindow: %1 | %2 | %3").arg(text, text2, cancelCaption);
        return !yesAnswers.isEmpty() && yesAnswers.dequeue();
    }
    void ShowMessageWindow(const std::function<void()>& viewReleaseNotes) override
    {
        calls << (viewReleaseNotes ? QStringLiteral("MessageWindow") : QStringLiteral("MessageWindow without notes"));
        if (viewNotesInMessageWindow && viewReleaseNotes)
            viewReleaseNotes();
    }
    void ShowAboutWindow(const QString& revisionText) override { calls << QStringLiteral("About: ") + revisionText; }
    void ShowInitWin(int left, const QString& text) override
    {
        calls << QStringLiteral("InitWin: %1 %2").arg(left).arg(text);
    }
    void CloseInitWin() override { calls << QStringLiteral("InitWin closed"); }
    bool OpenDocument(const QString& path) override
    {
        calls << QStringLiteral("OpenDocument: ") + path;
        return documentOpens;
    }
    bool OpenURL(const QUrl& url) override
    {
        calls << QStringLiteral("OpenURL: ") + url.toString();
        return urlOpens;
    }

    QString ChooseFolder(const QString& title, const QString& actionCaption, const QString& initialFolder) override
    {
        calls << QStringLiteral("ChooseFolder: %1 | %2 | %3").arg(title, actionCaption, initialFolder);
        return chosenFolders.isEmpty() ? QString() : chosenFolders.dequeue();
    }
    QString ChooseFile(const QString& title, const QString& initialFolder, const QString& filter) override
    {
        calls << QStringLiteral("ChooseFile: %1 | %2 | %3").arg(title, initialFolder, filter);
        return chosenFiles.isEmpty() ? QString() : chosenFiles.dequeue();
    }
    QStringList MountedVolumes() override { return volumes; }
    QString ClipboardText() override { return clipboard; }
    void SetClipboardText(const QString& text) override { clipboard = text; }
    int PopupMenu(const std::vector<PopupItem>& items) override
    {
        QStringList shown;
        for (const PopupItem& item : items)
            shown << (item.enabled ? item.text : QStringLiteral("(%1)").arg(item.text));
        calls << QStringLiteral("PopupMenu: ") + shown.join(QLatin1Char('|'));
        return popupChoices.isEmpty() ? -1 : popupChoices.dequeue();
    }
    void Quit(int exitCode) override { calls << QStringLiteral("Quit: %1").arg(exitCode); }
    OSVersionRecord OSVersion() override { return osVersion; }
    QRect AvailableScreen() override { return screen; }

    QStringList calls;
    QQueue<QString> chosenFolders;   // empty: the chooser is cancelled
    QQueue<QString> chosenFiles;     // likewise
    QStringList volumes{QStringLiteral("/")};
    QString clipboard;
    QQueue<int> popupChoices;         // empty: the menu closes without a choice
    OSVersionRecord osVersion{6, 1, 0};
    QRect screen{0, 0, 1920, 1080};
    QQueue<bool> yesAnswers;
    // The user presses "View Release Notes" in the new-firmware notice.
    bool viewNotesInMessageWindow = false;
    bool documentOpens = true;        // false: no program on the desktop takes the file
    bool urlOpens = true;             // false: no browser starts
};
