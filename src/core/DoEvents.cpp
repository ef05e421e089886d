#include "DoEvents.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

void DoEvents(int ms)
{
    if (!QCoreApplication::instance())
        return;
    if (ms <= 0) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}
