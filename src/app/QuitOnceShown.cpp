#include "QuitOnceShown.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace {

class FirstPaint : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override
    {
        // The event arrives before the painting; the line waits for the next
        // turn of the event loop, when the window's pixels are done.
        if (event->type() == QEvent::Paint && !m_seen) {
            m_seen = true;
            QTimer::singleShot(0, this, [] {
                std::fputs("shown\n", stdout);
                std::fflush(stdout);
                QApplication::quit();
            });
        }
        return false;
    }

private:
    bool m_seen = false;
};

} // namespace

void QuitOnceShown(QWidget& window)
{
    window.installEventFilter(new FirstPaint(&window));
}
