#pragma once

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

signals:
    void shown();
    void closed();
    void refreshRequested();

private:
    bool m_visible = false;
};
