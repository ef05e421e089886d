#include "ControlBinding.h"

#include "Label.h"
#include "ProgressBar.h"
#include "PushButton.h"
#include "TextArea.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QTimer>

void BindLabel(QLabel* widget, Label& model)
{
    auto sync = [widget, &model] {
        widget->setText(model.Text());
        widget->setVisible(model.Visible());
    };
    sync();
    QObject::connect(&model, &Label::changed, widget, sync);
}

void BindButton(QPushButton* widget, PushButton& model)
{
    auto sync = [widget, &model] {
        widget->setText(model.Caption());
        widget->setEnabled(model.Enabled());
    };
    sync();
    QObject::connect(&model, &PushButton::changed, widget, sync);
    QObject::connect(widget, &QPushButton::clicked, &model, [&model] { model.Push(); });
}

void BindTextArea(QPlainTextEdit* widget, TextArea& model)
{
    widget->setPlainText(model.Text());
    QObject::connect(&model, &TextArea::textReset, widget, [widget, &model] { widget->setPlainText(model.Text()); });
    QObject::connect(&model, &TextArea::appended, widget, [widget](const QString& text) {
        QTextCursor cursor(widget->document());
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(text);
    });
    // The plain-text view scrolls by lines, so the model's line number is the
    // scroll bar's value; Qt clamps a target past the end to the last page.
    QObject::connect(&model, &TextArea::scrollChanged, widget,
                     [widget](int line) { widget->verticalScrollBar()->setValue(line); });
    QObject::connect(&model, &TextArea::refreshRequested, widget, [widget] { widget->viewport()->repaint(); });
}

void BindProgressBar(QProgressBar* widget, ProgressBar& model)
{
    auto sync = [widget, &model] {
        widget->setMaximum(model.Maximum());
        widget->setValue(std::min(model.Value(), std::max(model.Maximum(), 0)));
    };
    sync();
    // A load moves the bar 14,000 times in a few seconds; drawing each step would
    // cost more than the load itself. The widget follows the model at most once
    // per frame, and always ends on the model's latest state.
    auto* frame = new QTimer(widget);
    frame->setSingleShot(true);
    frame->setInterval(16);
    QObject::connect(frame, &QTimer::timeout, widget, sync);
    QObject::connect(&model, &ProgressBar::changed, widget, [frame] {
        if (!frame->isActive())
            frame->start();
    });
}
