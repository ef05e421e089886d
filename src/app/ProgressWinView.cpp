#include "ProgressWinView.h"

#include "ControlBinding.h"
#include "ProgressWin.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

ProgressWinView::ProgressWinView(ProgressWin& model, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_model(&model)
{
    setWindowTitle(model.Title());
    setFixedSize(ProgressWin::DesignWidth, ProgressWin::DesignHeight);

    auto* group = new QGroupBox(this);
    group->setGeometry(12, 19, 476, 242);

    auto* log = new QPlainTextEdit(this);
    log->setReadOnly(true);
    log->setLineWrapMode(QPlainTextEdit::NoWrap);
    log->setGeometry(20, 28, 460, 225);
    BindTextArea(log, model.ActivityLog,
                 {[&model](const QString& key, Qt::KeyboardModifiers modifiers) {
                      return model.ActivityLog_KeyDown(key, modifiers);
                  },
                  [&model](int x, int y, bool contextual) { return model.ActivityLog_MouseDown(x, y, contextual); }});

    auto* bar = new QProgressBar(this);
    bar->setTextVisible(false);
    bar->setGeometry(12, 280, 360, 20);
    BindProgressBar(bar, model.ProgressBar1);

    auto* close = new QPushButton(this);
    close->setGeometry(408, 277, 80, 20);
    BindButton(close, model.CloseIt);

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
