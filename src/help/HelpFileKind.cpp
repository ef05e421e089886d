#include "HelpFileKind.h"

#include <QRegularExpression>

HelpFileKind KindOfHelpFile(const QString& name)
{
    static const QRegularExpression image(QStringLiteral("\\.jpeg|\\.jpg|\\.gif|\\.png"));
    static const QRegularExpression movie(QStringLiteral("\\.mov|\\.mpeg|\\.mpg|\\.avi|\\.swf"));
    static const QRegularExpression sound(QStringLiteral("\\.mp3|\\.mp2|\\.aif|\\.wav|\\.mid"));
    if (name.contains(QLatin1String(".txt"), Qt::CaseInsensitive))
        return HelpFileKind::Text;
    if (image.match(name).hasMatch())
        return HelpFileKind::Image;
    if (movie.match(name).hasMatch())
        return HelpFileKind::Movie;
    if (sound.match(name).hasMatch())
        return HelpFileKind::Sound;
    if (name.contains(QLatin1String(".htm"), Qt::CaseInsensitive))
        return HelpFileKind::Page;
    return HelpFileKind::Unknown;
}
