#include "FirmwareImage.h"

#include <QFile>
#include <QFileInfo>

FirmwareImage FirmwareImage::FromFile(const QString& path, const QString& name, const QString& revision)
{
    FirmwareImage image{name, revision, {}, false};
    QFile file(path);
    if (QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)) {
        image.bytes = file.readAll();
        image.read = file.error() == QFileDevice::NoError;
    }
    return image;
}
