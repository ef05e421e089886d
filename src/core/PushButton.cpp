#include "PushButton.h"

PushButton::PushButton(QString caption, bool enabled, QObject* parent)
    : QObject(parent), m_caption(std::move(caption)), m_enabled(enabled)
{
}

void PushButton::SetCaption(const QString& caption)
{
    if (caption == m_caption)
        return;
    m_caption = caption;
    emit changed();
}

void PushButton::SetEnabled(bool enabled)
{
    if (enabled == m_enabled)
        return;
    m_enabled = enabled;
    emit changed();
}

bool PushButton::Push()
{
    if (!m_enabled)
        return false;
    emit Action();
    return true;
}
