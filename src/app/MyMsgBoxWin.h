#pragma once

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
};
