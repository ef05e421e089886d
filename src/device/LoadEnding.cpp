#include "LoadEnding.h"

namespace {

const QString SendAgain =
    QStringLiteral("send the firmware again: its bootloader stays in place and takes a new load.");

bool Known(const QString& revision)
{
    return !revision.isEmpty() && revision != QLatin1String("N/A") && revision != QLatin1String("--");
}

} // namespace

QString LoadEnding::Describe() const
{
    switch (held) {
    case Held::Untouched:
        return Known(before) ? QStringLiteral("Nothing was erased or written: the Vexil still runs firmware revision %1.")
                                   .arg(before)
                             : QStringLiteral("Nothing was erased or written: the Vexil keeps the firmware it had.");
    case Held::Erased:
        return QStringLiteral("The Vexil was erased and now holds no firmware. Keep it connected (unplug it and plug "
                              "it in again if it does not answer), then ")
            + SendAgain;
    case Held::Unconfirmed:
        if (reported.isEmpty())
            return QStringLiteral("The Vexil was erased and written to the end, but it does not answer, so revision %1 "
                                  "is not confirmed. Unplug it, plug it in again and check its revision; if it is "
                                  "not %1, ")
                       .arg(expected)
                + SendAgain;
        return QStringLiteral("The Vexil was erased and written to the end, but it reports revision %1, not %2, so its "
                              "firmware cannot be trusted. Keep it connected (unplug it and plug it in again if it "
                              "does not answer), then ")
                   .arg(reported, expected)
            + SendAgain;
    case Held::NewFirmware:
        break;
    }
    return {};
}

QString LoadEnding::Word() const
{
    switch (held) {
    case Held::Untouched:
        return QStringLiteral("untouched");
    case Held::Erased:
        return QStringLiteral("erased");
    case Held::Unconfirmed:
        return QStringLiteral("unconfirmed");
    case Held::NewFirmware:
        break;
    }
    return QStringLiteral("loaded");
}
