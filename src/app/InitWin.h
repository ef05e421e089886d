#pragma once

#include <QDialog>

class QLabel;

// The start-up notice shown while the main window does its first checks.
class InitWin : public QDialog {
    Q_OBJECT
public:
    explicit InitWin(QWidget* parent = nullptr);
    QLabel* StaticText1;
};
