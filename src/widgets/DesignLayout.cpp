#include "DesignLayout.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

// Beyond this the window would no longer fit a screen; the text is cut instead.
constexpr double MaximumScale = 2.5;

// The room a control's text needs at the control's font, beyond which it is
// cut off; an empty size for controls that have no text of fixed size.
QSize TextNeed(const QWidget* widget, const QRect& rect)
{
    const QFontMetrics metrics = widget->fontMetrics();
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        if (label->text().isEmpty())
            return {};
        const int frame = 2 * (label->margin() + label->frameWidth());
        if (label->wordWrap())
            return {0, label->heightForWidth(rect.width()) + frame};
        return {metrics.horizontalAdvance(label->text()) + frame + std::max(0, label->indent()), metrics.height()};
    }
    // A button's bevel and a field's frame take a few pixels around the text.
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
        return {metrics.horizontalAdvance(button->text()) + 12, metrics.height() + 4};
    if (qobject_cast<const QLineEdit*>(widget))
        return {0, metrics.height() + 6};
    return {};
}

} // namespace

void DesignLayout::Add(QWidget* widget, QRect design, int locks)
{
    m_items.push_back({widget, design, locks});
    widget->setGeometry(Scaled(design));
}

QRect DesignLayout::Scaled(const QRect& design) const
{
    if (m_scale == 1.0)
        return design;
    const auto s = [this](int v) { return static_cast<int>(std::lround(v * m_scale)); };
    return {s(design.x()), s(design.y()), s(design.width()), s(design.height())};
}

QSize DesignLayout::Scaled(QSize design) const
{
    return Scaled(QRect(QPoint(), design)).size();
}

double DesignLayout::FitText()
{
    double scale = 1.0;
    for (const Item& item : m_items) {
        const QSize need = TextNeed(item.widget, item.design);
        if (need.width() > item.design.width() && item.design.width() > 0)
            scale = std::max(scale, double(need.width()) / item.design.width());
        if (need.height() > item.design.height() && item.design.height() > 0)
            scale = std::max(scale, double(need.height()) / item.design.height());
    }
    m_scale = std::min(scale, MaximumScale);
    for (const Item& item : m_items)
        item.widget->setGeometry(Scaled(item.design));
    return m_scale;
}

void DesignLayout::Apply(QSize windowSize) const
{
    const QSize designSize = Size();
    const int dx = windowSize.width() - designSize.width();
    const int dy = windowSize.height() - designSize.height();
    for (const Item& item : m_items) {
        QRect r = Scaled(item.design);
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
