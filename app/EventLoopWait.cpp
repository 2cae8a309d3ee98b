#include "app/EventLoopWait.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>

bool waitInEventLoop(const std::function<bool()>& done, int milliseconds) {
    if (done())
        return true;
    QEventLoop loop;
    bool met = false;
    // A polling loop (processEvents with a time limit) returns at once when nothing is pending
    // and spins a core; the dispatcher's own notice before it sleeps costs nothing while idle.
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &loop, [&] {
                         if (!met && done()) {
                             met = true;
                             loop.quit();
                         }
                     });
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    deadline.start(milliseconds);
    loop.exec();
    return met || done();
}
