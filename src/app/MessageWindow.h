#pragma once

#include <QDialog>

#include <functional>

class QPushButton;

// The notice that the folder holds newer firmware than the device runs.
class MessageWindow : public QDialog {
    Q_OBJECT
public:
    explicit MessageWindow(std::function<void()> viewReleaseNotes, QWidget* parent = nullptr);
    QPushButton* PushButton1;
    QPushButton* PushButton2;
};
