#pragma once

#include "DesignLayout.h"

#include <QMainWindow>

class Window1;
class ProgressWin;
class QPlainTextEdit;

// Draws Window1's controls at their designed places; holds no state of its own.
class Window1View : public QMainWindow {
    Q_OBJECT
public:
    explicit Window1View(Window1& controller, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    // Keys no control took: the status log's edit shortcuts work from anywhere.
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    void ShowProgressWin(ProgressWin* model);
    void ApplyBounds();
    void BuildMenuBar();
    int MenuBarHeight() const;
    // The window without its menu bar: what the controller calls its bounds.
    QRect ContentBounds() const;

    Window1& m_controller;
    DesignLayout m_layout;
    QPlainTextEdit* m_statusField = nullptr;
    QWidget* m_folderPath = nullptr;
    bool m_applyingBounds = false;
};
