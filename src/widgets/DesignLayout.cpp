#include "DesignLayout.h"

#include <QWidget>

void DesignLayout::Add(QWidget* widget, QRect design, int locks)
{
    m_items.push_back({widget, design, locks});
    widget->setGeometry(design);
}

void DesignLayout::Apply(QSize windowSize) const
{
    const int dx = windowSize.width() - m_designSize.width();
    const int dy = windowSize.height() - m_designSize.height();
    for (const Item& item : m_items) {
        QRect r = item.design;
        const bool left = item.locks & Left, right = item.locks & Right;
        const bool top = item.locks & Top, bottom = item.locks & Bottom;
        if (left && right)
            r.setWidth(r.width() + dx);
        else if (right)
            r.moveLeft(r.left() + dx);
        if (top && bottom)
            r.setHeight(r.height() + dy);
        else if (bottom)
            r.moveTop(r.top() + dy);
        item.widget->setGeometry(r);
    }
}

void DesignLayout::Place(QWidget* widget, QRect current, QSize windowSize)
{
    const int dx = windowSize.width() - m_designSize.width();
    const int dy = windowSize.height() - m_designSize.height();
    for (Item& item : m_items) {
        if (item.widget != widget)
            continue;
        QRect design = current;
        const bool left = item.locks & Left, right = item.locks & Right;
        const bool top = item.locks & Top, bottom = item.locks & Bottom;
        if (left && right)
            design.setWidth(current.width() - dx);
        else if (right)
            design.moveLeft(current.left() - dx);
        if (top && bottom)
            design.setHeight(current.height() - dy);
        else if (bottom)
            design.moveTop(current.top() - dy);
        item.design = design;
    }
    widget->setGeometry(current);
}
