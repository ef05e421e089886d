#include "TextArea.h"

#include <algorithm>

TextArea::TextArea(QObject* parent) : QObject(parent) {}

void TextArea::SetText(const QString& text)
{
    m_text = text;
    m_lineOfEnd = static_cast<int>(m_text.count(QLatin1Char('\n')));
    emit textReset();
}

void TextArea::AppendText(const QString& text)
{
    m_text += text;
    m_lineOfEnd += static_cast<int>(text.count(QLatin1Char('\n')));
    emit appended(text);
}

void TextArea::SetScrollPosition(int line)
{
    m_scrollPosition = std::max(0, line);
    emit scrollChanged(m_scrollPosition);
}
