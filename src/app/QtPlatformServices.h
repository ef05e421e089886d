#pragma once

#include "HelpPlatform.h"
#include "PlatformServices.h"

#include <QPointer>

class AboutWindow;
class InitWin;
class MyMsgBoxWin;
class MyYesWindow;

// The desktop's own dialogs and sounds, for the program and for its help.
// Each small window is one instance, made when first needed and reused while
// it is open.
class QtPlatformServices final : public PlatformServices, public HelpPlatform {
public:
    ~QtPlatformServices() override;

    void MsgBox(const QString& text) override;
    void Beep() override;
    void MyMsgBox(const QString& text) override;
    bool MyYesWindow(const QString& text, const QString& text2, const QString& cancelCaption) override;
    void ShowMessageWindow(const std::function<void()>& viewReleaseNotes) override;
    void ShowAboutWindow(const QString& revisionText) override;
    void ShowInitWin(int left, const QString& text) override;
    void CloseInitWin() override;
    bool OpenDocument(const QString& path) override;
    bool OpenURL(const QUrl& url) override;
    QString ChooseFolder(const QString& title, const QString& actionCaption, const QString& initialFolder) override;
    QString ChooseFile(const QString& title, const QString& initialFolder, const QString& filter) override;
    QStringList MountedVolumes() override;
    QString ClipboardText() override;
    void SetClipboardText(const QString& text) override;
    int PopupMenu(const std::vector<PopupItem>& items) override;
    void Quit(int exitCode) override;
    OSVersionRecord OSVersion() override;
    QRect AvailableScreen() override;
    QList<QRect> ScreenGeometries() override;
    void CautionBox(const QString& text, const QString& explanation) override;
    bool CreditsBox(const QString& text, const QString& explanation) override;
    bool OpenUrl(const QString& url) override;
    int HistoryMenu(const QStringList& titles, int checked) override;

private:
    QPointer<InitWin> m_initWin;
    QPointer<AboutWindow> m_about;
    QPointer<MyMsgBoxWin> m_msgBox;
    QPointer<::MyYesWindow> m_yesWindow;
};
