#pragma once

#include <QString>
#include <QtGlobal>

// One line of a server listing as ParseDirListLine understood it. A link has
// both flags; a line not understood has neither and an empty name.
struct FTPParsedDirListLineClass {
    QString Name;
    bool IsDir = false;
    bool IsFile = false;
    qint64 Size = 0;
    QString ModTime;
    QString ModDate;
    QString Permissions;
};
