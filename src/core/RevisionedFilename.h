#pragma once

#include <QString>

// The name of the firmware file to load, without its folder; "-" when the
// folder holds none.
class RevisionedFilename {
public:
    QString m_mstrPath;
    // Copy of m_mstrPath taken when a load is about to run.
    QString m_strpath;
};
