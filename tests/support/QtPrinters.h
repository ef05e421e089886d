#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for Qt strings in GoogleTest assertions.
inline void PrintTo(const QString& s, std::ostream* os)
{
    *os << '"' << s.toStdString() << '"';
}

inline void PrintTo(const QStringList& list, std::ostream* os)
{
    *os << "{";
    for (qsizetype i = 0; i < list.size(); ++i)
        *os << (i ? ", " : " ") << '"' << list[i].toStdString() << '"';
    *os << " }";
}
