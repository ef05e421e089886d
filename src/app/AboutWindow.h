#pragma once

#include "DesignLayout.h"

#include <QDialog>

class QLabel;
class QPushButton;

// The about box; a click anywhere on it closes it.
class AboutWindow : public QDialog {
    Q_OBJECT
public:
    explicit AboutWindow(const QString& revisionText, QWidget* parent = nullptr);
    QLabel* StaticText2;
    QPushButton* PushButton2;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    DesignLayout m_layout{QSize(398, 213)};
};
