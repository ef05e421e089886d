#include "OSXVersionInfo.h"

#include <QRegularExpression>
#include <QSysInfo>

OSVersionRecord OSXVersionInfo::Parse(const QString& release)
{
    static const QRegularExpression numbers(QStringLiteral("^(\\d+)(?:\\.(\\d+))?(?:\\.(\\d+))?"));
    const auto match = numbers.match(release);
    OSVersionRecord version;
    if (match.hasMatch()) {
        version.major = match.captured(1).toInt();
        version.minor = match.captured(2).toInt();
        version.patch = match.captured(3).toInt();
    }
    return version;
}

OSVersionRecord OSXVersionInfo::OSVersion()
{
    return Parse(QSysInfo::kernelVersion());
}
