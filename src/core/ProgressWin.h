#pragma once

#include "PlatformServices.h"
#include "ProgressBar.h"
#include "PushButton.h"
#include "TextArea.h"

#include <QObject>
#include <QString>

// The window that shows a firmware load: a plain activity log without time
// stamps, a progress bar and a Close button that stays disabled while loading.
class ProgressWin : public QObject {
    Q_OBJECT
public:
    explicit ProgressWin(QObject* parent = nullptr);

    static constexpr int DesignWidth = 500;
    static constexpr int DesignHeight = 317;

    QString Title() const { return QStringLiteral("Loading Vexil Firmware"); }
    int Left = 0;
    int Top = 0;

    TextArea ActivityLog;
    ProgressBar ProgressBar1{100};
    PushButton CloseIt{QStringLiteral("Close"), false};

    bool Visible() const { return m_visible; }
    void Show();
    void Close();
    void Refresh() { emit refreshRequested(); }

    void SetActivityLog(const QString& text);
    void CloseIt_Action();

    // The log takes no typing, but the user may select, copy, cut and delete.
    void ActivityLog_TextChange();
    // True when the key was a shortcut and is used up here.
    bool ActivityLog_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers);
    // True when the click was contextual and its menu has been shown.
    bool ActivityLog_MouseDown(int x, int y, bool contextual);

    // The desktop's clipboard and pop-up menu; without them the log only selects.
    void SetPlatform(PlatformServices* platform) { m_platform = platform; }

signals:
    void shown();
    void closed();
    void refreshRequested();

private:
    void CopySelection();

    bool m_visible = false;
    PlatformServices* m_platform = nullptr;
};
