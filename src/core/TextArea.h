#pragma once

#include <QObject>
#include <QString>

#include <vector>

// The key that turns a letter into a menu shortcut; Qt reports the platform's
// one (Ctrl here, Command on a Mac keyboard) as this modifier.
inline constexpr Qt::KeyboardModifier MenuShortcutModifier = Qt::ControlModifier;

// A multi-line text area that mostly grows at its end. Appends are signalled
// separately from whole-text changes so that a view can add a line without
// redrawing a long log from scratch. The model owns the selection too: the
// view reports the user's selection here and draws whatever the model holds.
class TextArea : public QObject {
    Q_OBJECT
public:
    explicit TextArea(QObject* parent = nullptr);

    const QString& Text() const { return m_text; }
    void SetText(const QString& text);
    void AppendText(const QString& text);

    // 0-based number of the line on which the text ends.
    int LineOfEnd() const { return m_lineOfEnd; }

    // First visible line, 0-based; a negative request means the top.
    int ScrollPosition() const { return m_scrollPosition; }
    void SetScrollPosition(int line);

    // The selection in 0-based character positions; length 0 is a caret.
    int SelStart() const { return m_selStart; }
    int SelLength() const { return m_selLength; }
    // Both are clamped to the text, so any request leaves a valid selection.
    void SetSelection(int start, int length);
    void SelectAll() { SetSelection(0, static_cast<int>(m_text.size())); }
    QString SelText() const { return m_text.mid(m_selStart, m_selLength); }
    // Puts `text` in place of the selection and leaves the caret after it.
    void ReplaceSelection(const QString& text);
    // The user's edits can be taken back and done again. Lines appended meanwhile
    // stay: an edit is undone at its own place, before them. A whole new text
    // forgets the edits.
    bool CanUndo() const { return !m_undo.empty(); }
    bool CanRedo() const { return !m_redo.empty(); }
    void Undo();
    void Redo();

    // Off: the view hides its vertical scroll bar; scrolling still follows ScrollPosition.
    bool VerticalScrollBar() const { return m_verticalScrollBar; }
    void SetVerticalScrollBar(bool shown);

    // Asks a view to draw now rather than on the next paint cycle.
    void Refresh() { emit refreshRequested(); }
    // Asks a view to give this area the keyboard focus.
    void RequestFocus() { emit focusRequested(); }

signals:
    void textReset();
    void appended(const QString& text);
    // `removed` characters from `start` were replaced by `inserted`.
    void edited(int start, int removed, const QString& inserted);
    // After every change of the text, whichever of the three signals above carried it.
    void textChanged();
    void selectionChanged();
    void scrollChanged(int line);
    void verticalScrollBarChanged(bool shown);
    void refreshRequested();
    void focusRequested();

private:
    struct Edit {
        int start;
        QString removed;
        QString inserted;
    };
    void Replace(int start, int removed, const QString& text);
    // Takes the newest edit of `from` back, leaving the caret after it, and keeps it in `to`.
    void Revert(std::vector<Edit>& from, std::vector<Edit>& to);

    std::vector<Edit> m_undo;
    std::vector<Edit> m_redo;
    QString m_text;
    int m_lineOfEnd = 0;
    int m_scrollPosition = 0;
    int m_selStart = 0;
    int m_selLength = 0;
    bool m_verticalScrollBar = true;
};
