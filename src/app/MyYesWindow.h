#pragma once

#include "DesignLayout.h"

#include <QDialog>

class QLabel;
class QPushButton;

// A two-line question. The focus starts on the cancelling button, so Return
// answers no until the user moves the focus to Yes; Escape always answers no.
class MyYesWindow : public QDialog {
    Q_OBJECT
public:
    explicit MyYesWindow(QWidget* parent = nullptr);

    // Shows the window modally; true only when Yes was pressed.
    bool Ask(const QString& text, const QString& text2, const QString& cancelCaption);

    QLabel* LabelText;
    QLabel* LabelText2;
    QPushButton* YesButton;
    QPushButton* CancelButton;

protected:
    void showEvent(QShowEvent* event) override;

private:
    bool m_response = false;
    DesignLayout m_layout{QSize(509, 185)};
};
