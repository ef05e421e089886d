#include "ControlBinding.h"

#include "Label.h"
#include "MenuItem.h"
#include "ProgressBar.h"
#include "PushButton.h"
#include "TextArea.h"
#include "TextField.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>

#include <utility>

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

QString WithMnemonic(const QString& text, QString& used)
{
    // Word starts first, then any letter; a text with no free letter goes without.
    for (const bool wordStart : {true, false}) {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text[i].toLower();
            if (!c.isLetter() || used.contains(c) || (wordStart && i > 0 && !text[i - 1].isSpace()))
                continue;
            used += c;
            return text.left(i) + QLatin1Char('&') + text.mid(i);
        }
    }
    return text;
}

void BindMenuItem(QAction* action, MenuItem& item, const QString& shown)
{
    auto sync = [action, &item, shown] {
        action->setText(shown.isEmpty() ? item.Text() : shown);
        action->setEnabled(item.Enabled());
        action->setChecked(item.Checked());
    };
    sync();
    QObject::connect(&item, &MenuItem::changed, action, sync);
    // The action flips its own mark when chosen; the item's handler decides it.
    QObject::connect(action, &QAction::triggered, &item, [&item, sync] {
        sync();
        emit item.Action();
    });
}

void NameAfterCaption(QLabel* value, Label& model, const QLabel* caption)
{
    auto name = [value, &model, caption] {
        value->setAccessibleName(caption->text() + QStringLiteral(": ") + model.Text());
    };
    name();
    QObject::connect(&model, &Label::changed, value, name);
}

namespace {

// Keeps one plain-text widget and its model in step. The model is the truth:
// the widget draws its text and selection, and reports the user's selection
// back, while `m_applying` keeps the widget's own echoes from returning.
class TextAreaBinding final : public QObject {
public:
    TextAreaBinding(QPlainTextEdit* widget, TextArea& model, TextAreaEvents events)
        : QObject(widget), m_widget(widget), m_model(&model), m_events(std::move(events))
    {
        Apply([this] { m_widget->setPlainText(m_model->Text()); });
        ApplyScrollBar(model.VerticalScrollBar());
        ApplySelection();

        connect(&model, &TextArea::textReset, this, [this] {
            Apply([this] { m_widget->setPlainText(m_model->Text()); });
        });
        // Appends are frequent: they touch only the end of the document.
        connect(&model, &TextArea::appended, this, [this](const QString& text) {
            QTextCursor cursor(m_widget->document());
            cursor.movePosition(QTextCursor::End);
            Apply([&] { cursor.insertText(text); });
        });
        connect(&model, &TextArea::edited, this, [this](int start, int removed, const QString& inserted) {
            QTextCursor cursor(m_widget->document());
            cursor.setPosition(start);
            cursor.setPosition(start + removed, QTextCursor::KeepAnchor);
            Apply([&] { cursor.insertText(inserted); });
        });
        connect(&model, &TextArea::textChanged, this, &TextAreaBinding::ApplySelection);
        connect(&model, &TextArea::selectionChanged, this, &TextAreaBinding::ApplySelection);
        // The model counts line breaks, the view counts wrapped lines, and the
        // model cannot know how many lines fit: every request it makes follows
        // new text and asks that the newest lines show. So the view starts at
        // the requested line's first wrapped line, unless the newest line would
        // then lie below it: then it shows the last page. A hidden bar still
        // holds the value and scrolls the view.
        connect(&model, &TextArea::scrollChanged, this, [this](int line) {
            QScrollBar* bar = m_widget->verticalScrollBar();
            const QTextBlock block = m_widget->document()->findBlockByNumber(line);
            bar->setValue(block.isValid() ? block.firstLineNumber() : bar->maximum());
            if (!EndInView())
                bar->setValue(bar->maximum());
        });
        connect(&model, &TextArea::verticalScrollBarChanged, this, &TextAreaBinding::ApplyScrollBar);
        connect(&model, &TextArea::refreshRequested, this, [this] { m_widget->viewport()->repaint(); });
        connect(&model, &TextArea::focusRequested, this, [this] { m_widget->setFocus(); });

        connect(widget, &QPlainTextEdit::selectionChanged, this, &TextAreaBinding::ReportSelection);
        connect(widget, &QPlainTextEdit::cursorPositionChanged, this, &TextAreaBinding::ReportSelection);
        widget->installEventFilter(this);
        widget->viewport()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (!m_model)
            return false;
        switch (event->type()) {
        case QEvent::KeyPress:
            if (watched == m_widget && m_events.keyDown) {
                const auto* key = static_cast<QKeyEvent*>(event);
                return m_events.keyDown(KeyText(*key), key->modifiers());
            }
            break;
        case QEvent::MouseButtonPress:
            if (watched == m_widget->viewport() && m_events.mouseDown) {
                const auto* mouse = static_cast<QMouseEvent*>(event);
                const QPoint at = mouse->position().toPoint();
                m_rightPressForwarded = mouse->button() == Qt::RightButton;
                return m_events.mouseDown(at.x(), at.y(), m_rightPressForwarded);
            }
            break;
        case QEvent::ContextMenu:
            if (m_events.mouseDown) {
                const auto* menu = static_cast<QContextMenuEvent*>(event);
                // Qt follows a right press with this event; the press has
                // already shown our menu. The menu key arrives only here.
                const bool followsPress =
                    std::exchange(m_rightPressForwarded, false) && menu->reason() == QContextMenuEvent::Mouse;
                if (!followsPress) {
                    const QPoint at = watched == m_widget ? m_widget->viewport()->mapFrom(m_widget, menu->pos())
                                                          : menu->pos();
                    m_events.mouseDown(at.x(), at.y(), true);
                }
                // Qt's own menu would edit the text behind the model's back.
                return true;
            }
            break;
        default:
            break;
        }
        return false;
    }

private:
    // With Ctrl held the event's text is a control character, so a letter is
    // taken from its key code instead.
    static QString KeyText(const QKeyEvent& event)
    {
        const int key = event.key();
        if (key >= Qt::Key_A && key <= Qt::Key_Z)
            return QString(QChar(u'a' + (key - Qt::Key_A)));
        return event.text();
    }

    template <class F>
    void Apply(F&& change)
    {
        const bool outer = !m_applying;
        m_applying = true;
        change();
        if (outer)
            m_applying = false;
    }

    void ApplySelection()
    {
        if (!m_model)
            return;
        const int start = m_model->SelStart();
        const int end = start + m_model->SelLength();
        const QTextCursor current = m_widget->textCursor();
        // Equal already: resetting would undo the direction of a drag in progress.
        if (current.selectionStart() == start && current.selectionEnd() == end)
            return;
        QTextCursor cursor(m_widget->document());
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        Apply([&] { m_widget->setTextCursor(cursor); });
    }

    void ReportSelection()
    {
        if (m_applying || !m_model)
            return;
        const QTextCursor cursor = m_widget->textCursor();
        m_model->SetSelection(cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart());
    }

    bool EndInView() const
    {
        QTextCursor end(m_widget->document());
        end.movePosition(QTextCursor::End);
        return m_widget->viewport()->rect().contains(m_widget->cursorRect(end));
    }

    void ApplyScrollBar(bool shown)
    {
        m_widget->setVerticalScrollBarPolicy(shown ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    }

    QPlainTextEdit* m_widget;
    // The model may die first: a closed progress window's view goes a pass later.
    QPointer<TextArea> m_model;
    TextAreaEvents m_events;
    bool m_applying = false;
    bool m_rightPressForwarded = false;
};

} // namespace

void BindTextArea(QPlainTextEdit* widget, TextArea& model, TextAreaEvents events)
{
    new TextAreaBinding(widget, model, std::move(events));
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

void BindTextField(QLineEdit* widget, TextField& model)
{
    widget->setText(model.Text());
    widget->setEnabled(model.Enabled());
    // Only a change from elsewhere is drawn: redrawing what the user typed would move the caret.
    QObject::connect(&model, &TextField::changed, widget, [widget, &model] {
        if (widget->text() != model.Text())
            widget->setText(model.Text());
        widget->setEnabled(model.Enabled());
    });
    QObject::connect(widget, &QLineEdit::textEdited, &model, [&model](const QString& text) { model.SetText(text); });
}
