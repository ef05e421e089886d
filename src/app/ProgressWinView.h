#pragma once

#include <QWidget>

class ProgressWin;

// The load's progress window: fixed size, no close button of its own; only
// the model's CloseIt, enabled after the load, closes it.
class ProgressWinView : public QWidget {
    Q_OBJECT
public:
    explicit ProgressWinView(ProgressWin& model, QWidget* parent = nullptr);

private:
    ProgressWin& m_model;
};
