#include "TextArea.h"

#include <algorithm>

TextArea::TextArea(QObject* parent) : QObject(parent) {}

void TextArea::SetText(const QString& text)
{
    m_text = text;
    m_lineOfEnd = static_cast<int>(m_text.count(QLatin1Char('\n')));
    emit textReset();
    // Re-applying the selection clamps it to the new text.
    SetSelection(m_selStart, m_selLength);
    emit textChanged();
}

void TextArea::AppendText(const QString& text)
{
    // The selection lies before the new text, so it stays valid as it is.
    m_text += text;
    m_lineOfEnd += static_cast<int>(text.count(QLatin1Char('\n')));
    emit appended(text);
    emit textChanged();
}

void TextArea::SetScrollPosition(int line)
{
    m_scrollPosition = std::max(0, line);
    emit scrollChanged(m_scrollPosition);
}

void TextArea::SetSelection(int start, int length)
{
    const int size = static_cast<int>(m_text.size());
    start = std::clamp(start, 0, size);
    length = std::clamp(length, 0, size - start);
    if (start == m_selStart && length == m_selLength)
        return;
    m_selStart = start;
    m_selLength = length;
    emit selectionChanged();
}

void TextArea::ReplaceSelection(const QString& text)
{
    if (m_selLength == 0 && text.isEmpty())
        return;
    const int start = m_selStart;
    const int removed = m_selLength;
    m_lineOfEnd += static_cast<int>(text.count(QLatin1Char('\n')))
                   - static_cast<int>(QStringView(m_text).mid(start, removed).count(QLatin1Char('\n')));
    m_text.replace(start, removed, text);
    m_selStart = start + static_cast<int>(text.size());
    m_selLength = 0;
    emit edited(start, removed, text);
    emit selectionChanged();
    emit textChanged();
}

void TextArea::SetVerticalScrollBar(bool shown)
{
    if (shown == m_verticalScrollBar)
        return;
    m_verticalScrollBar = shown;
    emit verticalScrollBarChanged(shown);
}
