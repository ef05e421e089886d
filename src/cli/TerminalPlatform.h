#pragma once

#include "PlatformServices.h"

#include <QString>

// The desktop services as a terminal program has them: a message box is a line
// on standard error, every question is answered "no", and there is nothing to
// show a window, a menu or a document on.
class TerminalPlatform final : public PlatformServices {
public:
    // Lines for the user go to standard error unless quiet.
    bool quiet = false;
    // The last message box's text, for a caller that reports it itself.
    QString lastMessage;

    void MsgBox(const QString& text) override;
    void Beep() override {}
    void MyMsgBox(const QString& text) override { MsgBox(text); }
    bool MyYesWindow(const QString&, const QString&, const QString&) override { return false; }
    void ShowMessageWindow(const std::function<void()>&) override {}
    void ShowAboutWindow(const QString&) override {}
    void ShowInitWin(int, const QString&) override {}
    void CloseInitWin() override {}
    bool OpenDocument(const QString&) override { return false; }
    bool OpenURL(const QUrl&) override { return false; }
    QString ChooseFolder(const QString&, const QString&, const QString&) override { return {}; }
    QStringList MountedVolumes() override { return {QStringLiteral("/")}; }
    QString ClipboardText() override { return {}; }
    void SetClipboardText(const QString&) override {}
    int PopupMenu(const std::vector<PopupItem>&) override { return -1; }
    void Quit(int) override {}
    OSVersionRecord OSVersion() override { return {}; }
    QRect AvailableScreen() override { return {}; }
};
