#pragma once

#include <QRect>
#include <QSize>
#include <vector>

class QWidget;

// Places widgets at their designed rectangles and moves or stretches them as
// the window resizes, by which of their sides are locked to the window.
class DesignLayout {
public:
    enum Lock { None = 0, Left = 1, Top = 2, Right = 4, Bottom = 8, All = 15 };

    explicit DesignLayout(QSize designSize) : m_designSize(designSize) {}

    void Add(QWidget* widget, QRect design, int locks);
    void Apply(QSize windowSize) const;
    // Moves a placed widget to `current` in a window of `windowSize`; later
    // resizes keep that place, by the widget's locks.
    void Place(QWidget* widget, QRect current, QSize windowSize);

private:
    struct Item {
        QWidget* widget;
        QRect design;
        int locks;
    };
    QSize m_designSize;
    std::vector<Item> m_items;
};
