#include "TextArea.h"

#include <algorithm>

TextArea::TextArea(QObject* parent) : QObject(parent) {}

void TextArea::SetText(const QString& text)
{
    m_text = text;
    m_lineOfEnd = static_cast<int>(m_text.count(QLatin1Char('\n')));
    m_undo.clear();
    m_redo.clear();
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
    // A hundred steps back is more than any slip in a log needs.
    if (m_undo.size() >= 100)
        m_undo.erase(m_undo.begin());
    m_undo.push_back({m_selStart, m_text.mid(m_selStart, m_selLength), text});
    m_redo.clear();
    Replace(m_selStart, m_selLength, text);
}

void TextArea::Replace(int start, int removed, const QString& text)
{
    m_lineOfEnd += static_cast<int>(text.count(QLatin1Char('\n')))
                   - static_cast<int>(QStringView(m_text).mid(start, removed).count(QLatin1Char('\n')));
    m_text.replace(start, removed, text);
    m_selStart = start + static_cast<int>(text.size());
    m_selLength = 0;
    emit edited(start, removed, text);
    emit selectionChanged();
    emit textChanged();
}

void TextArea::Revert(std::vector<Edit>& from, std::vector<Edit>& to)
{
    if (from.empty())
        return;
    Edit edit = from.back();
    from.pop_back();
    Replace(edit.start, static_cast<int>(edit.inserted.size()), edit.removed);
    std::swap(edit.removed, edit.inserted);
    to.push_back(std::move(edit));
}

void TextArea::Undo()
{
    Revert(m_undo, m_redo);
}

void TextArea::Redo()
{
    Revert(m_redo, m_undo);
}

void TextArea::SetVerticalScrollBar(bool shown)
{
    if (shown == m_verticalScrollBar)
        return;
    m_verticalScrollBar = shown;
    emit verticalScrollBarChanged(shown);
}
