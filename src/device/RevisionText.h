#pragma once

#include <QString>

// A revision number in its display form: the hundreds, ".", the remainder,
// two digits each (112 -> "01.12", 5 -> "00.05", 1005 -> "10.05").
QString RevisionText(qint64 number);
