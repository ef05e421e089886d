#pragma once

#include <QRect>
#include <QSize>
#include <vector>

class QWidget;

// Places widgets at their designed rectangles and moves or stretches them as
// the window resizes, by which of their sides are locked to the window.
// Drawn for a small font, the design grows evenly when a larger desktop font
// no longer fits its controls' texts.
class DesignLayout {
public:
    enum Lock { None = 0, Left = 1, Top = 2, Right = 4, Bottom = 8, All = 15 };

    explicit DesignLayout(QSize designSize) : m_designSize(designSize) {}

    void Add(QWidget* widget, QRect design, int locks);
    void Apply(QSize windowSize) const;
    // Moves a placed widget to `current` in a window of `windowSize`; later
    // resizes keep that place, by the widget's locks.
    void Place(QWidget* widget, QRect current, QSize windowSize);

    // Finds the smallest growth at which every control's text fits at the
    // font it has now (1 when the design already fits), and places the
    // widgets at that scale. Call again when a text or a font changes.
    double FitText();
    double Scale() const { return m_scale; }
    // A designed size (the window's, its minimum) at the present scale.
    QSize Scaled(QSize design) const;
    QSize Size() const { return Scaled(m_designSize); }

private:
    QRect Scaled(const QRect& design) const;

    struct Item {
        QWidget* widget;
        QRect design;
        int locks;
    };
    QSize m_designSize;
    std::vector<Item> m_items;
    double m_scale = 1.0;
};
