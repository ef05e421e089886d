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
        calls << QStringLiteral("MessageWindow");
        if (viewNotesInMessageWindow)
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
        return true;
    }

    OSVersionRecord OSVersion() override { return osVersion; }
    QRect AvailableScreen() override { return screen; }

    QStringList calls;
    OSVersionRecord osVersion{6, 1, 0};
    QRect screen{0, 0, 1920, 1080};
    QQueue<bool> yesAnswers;
    // The user presses "View Release Notes" in the new-firmware notice.
    bool viewNotesInMessageWindow = false;
};
