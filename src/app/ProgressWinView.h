#pragma once

#include <QPointer>
#include <QWidget>

class ProgressWin;

// The load's progress window: fixed size, no close button of its own; only
// the model's CloseIt, enabled after the load, closes it.
class ProgressWinView : public QWidget {
    Q_OBJECT
public:
    explicit ProgressWinView(ProgressWin& model, QWidget* parent = nullptr);

protected:
    // A close from outside (a quit request, the desktop) is the Close button:
    // refused while it is disabled, that is while a load runs.
    void closeEvent(QCloseEvent* event) override;
    // Return and Escape work the Close button once it is enabled, as in a dialog.
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPointer<ProgressWin> m_model;
};
