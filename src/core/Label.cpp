#include "Label.h"

Label::Label(QString text, QObject* parent) : QObject(parent), m_text(std::move(text)) {}

void Label::SetText(const QString& text)
{
    if (text == m_text)
        return;
    m_text = text;
    emit changed();
}

void Label::SetVisible(bool visible)
{
    if (visible == m_visible)
        return;
    m_visible = visible;
    emit changed();
}
