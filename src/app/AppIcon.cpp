#include "AppIcon.h"

#include <QPainter>
#include <QPainterPath>

QPixmap AppIcon(int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 48.0, size / 48.0);

    // Rounded tile in the window's title blue.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x00, 0x46, 0xD7));
    p.drawRoundedRect(QRectF(2, 2, 44, 44), 9, 9);

    // The chip: a dark body with pins.
    p.setBrush(QColor(0x1E, 0x23, 0x2B));
    p.drawRoundedRect(QRectF(12, 30, 24, 10), 2, 2);
    p.setBrush(QColor(0xD8, 0xDE, 0xE6));
    for (int i = 0; i < 5; ++i) {
        p.drawRect(QRectF(14 + i * 4.5, 40, 2, 3));
        p.drawRect(QRectF(14 + i * 4.5, 27, 2, 3));
    }

    // Pole and pennant.
    p.setBrush(Qt::white);
    p.drawRect(QRectF(15, 7, 2.5, 20));
    QPainterPath pennant;
    pennant.moveTo(17.5, 8);
    pennant.lineTo(36, 13);
    pennant.lineTo(17.5, 18);
    pennant.closeSubpath();
    p.setBrush(QColor(0xFF, 0xB3, 0x1A));
    p.drawPath(pennant);
    return pixmap;
}
