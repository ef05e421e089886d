#pragma once

#include <QPixmap>

// The program's icon, drawn at any size: a pennant on a pole over a chip.
QPixmap AppIcon(int size = 48);
