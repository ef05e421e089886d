#pragma once

#include "DesignLayout.h"

#include <QDialog>

class QLabel;
class QPushButton;

// A one-message window with the program's icon and an OK button.
class MyMsgBoxWin : public QDialog {
    Q_OBJECT
public:
    explicit MyMsgBoxWin(QWidget* parent = nullptr);
    QLabel* MyMsgBoxText;
    QPushButton* PushButton1;

    // After a new message: the window grows when the text needs more room.
    void FitText();

private:
    DesignLayout m_layout{QSize(382, 137)};
};
