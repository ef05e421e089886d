#include "ProgressWinView.h"

#include "ControlBinding.h"
#include "DesignLayout.h"
#include "ProgressWin.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

ProgressWinView::ProgressWinView(ProgressWin& model, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_model(&model)
{
    setWindowTitle(model.Title());
    using L = DesignLayout;
    DesignLayout layout(QSize(ProgressWin::DesignWidth, ProgressWin::DesignHeight));
    layout.Add(new QGroupBox(this), QRect(12, 19, 476, 242), L::None);

    auto* log = new QPlainTextEdit(this);
    log->setReadOnly(true);
    log->setLineWrapMode(QPlainTextEdit::NoWrap);
    log->setAccessibleName(QStringLiteral("Activity Log"));
    layout.Add(log, QRect(20, 28, 460, 225), L::None);
    BindTextArea(log, model.ActivityLog,
                 {[&model](const QString& key, Qt::KeyboardModifiers modifiers) {
                      return model.ActivityLog_KeyDown(key, modifiers);
                  },
                  [&model](int x, int y, bool contextual) { return model.ActivityLog_MouseDown(x, y, contextual); }});

    auto* bar = new QProgressBar(this);
    bar->setTextVisible(false);
    bar->setAccessibleName(model.Title());
    layout.Add(bar, QRect(12, 280, 360, 20), L::None);
    BindProgressBar(bar, model.ProgressBar1);

    auto* close = new QPushButton(this);
    layout.Add(close, QRect(408, 277, 80, 20), L::None);
    BindButton(close, model.CloseIt);
    layout.FitText();
    setFixedSize(layout.Size());

    connect(&model, &ProgressWin::shown, this, [this] {
        move(m_model->Left, m_model->Top);
        show();
    });
    // Closed, not hidden: a hidden window would keep the program from quitting
    // when it is the last one.
    connect(&model, &ProgressWin::closed, this, &QWidget::close);
    connect(&model, &ProgressWin::refreshRequested, this, [this] { update(); });
    if (model.Visible()) {
        move(model.Left, model.Top);
        show();
    }
}

void ProgressWinView::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (m_model && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape)) {
        m_model->CloseIt.Push();
        return;
    }
    QWidget::keyPressEvent(event);
}

void ProgressWinView::closeEvent(QCloseEvent* event)
{
    if (m_model && m_model->Visible()) {
        if (!m_model->CloseIt.Enabled()) {
            event->ignore();
            return;
        }
        m_model->CloseIt_Action();
    }
    event->accept();
}
