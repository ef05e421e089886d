#pragma once

#include "Window1Device.h"

#include <QString>
#include <QStringList>

// The main window's operations on the folder of firmware files.
class Window1Firmware : public Window1Device {
    Q_OBJECT
public:
    using Window1Device::Window1Device;

    // The revision digits of the newest "<prefix><digits>.hex" in `files`, or ""
    // when none has a number above 0; `index` is set to its place only when found.
    static QString GetNewestRevision(const QString& prefix, const QStringList& files, int& index);

    // The longest numeric beginning of `text` as a number; 0 when there is none.
    static qint64 LeadingNumber(const QString& text);
};
