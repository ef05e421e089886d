#pragma once

#include <QByteArray>
#include <QString>

// A firmware file read once. The load checks these bytes and sends exactly
// them, so a file rewritten or cut on disk meanwhile cannot reach the device.
struct FirmwareImage {
    QString name;      // the file's name, as the log shows it
    QString revision;  // the revision the device must report afterwards, e.g. "01.13"
    QByteArray bytes;
    bool read = false; // the file existed and was read whole

    static FirmwareImage FromFile(const QString& path, const QString& name, const QString& revision);
};
