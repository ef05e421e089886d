#include "ProgressBar.h"

ProgressBar::ProgressBar(int maximum, QObject* parent) : QObject(parent), m_maximum(maximum) {}

void ProgressBar::SetMaximum(int maximum)
{
    if (maximum == m_maximum)
        return;
    m_maximum = maximum;
    emit changed();
}

void ProgressBar::SetValue(int value)
{
    if (value == m_value)
        return;
    m_value = value;
    emit changed();
}
