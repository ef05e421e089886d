#pragma once

#include <QObject>
#include <QString>

// A multi-line text area that mostly grows at its end. Appends are signalled
// separately from whole-text changes so that a view can add a line without
// redrawing a long log from scratch.
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

    // Asks a view to draw now rather than on the next paint cycle.
    void Refresh() { emit refreshRequested(); }

signals:
    void textReset();
    void appended(const QString& text);
    void scrollChanged(int line);
    void refreshRequested();

private:
    QString m_text;
    int m_lineOfEnd = 0;
    int m_scrollPosition = 0;
};
