#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <ctime>
#include <functional>

// The calling thread's CPU time so far.
inline double threadCpuMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Runs the event loop (sleeping while there is nothing to do, so the GUI thread's time is only
// what is measured) until done or the time is up; done is asked every pollMilliseconds. False when
// the time ran out first.
inline bool waitFor(const std::function<bool()>& done, int milliseconds,
                    int pollMilliseconds = 10) {
    QEventLoop loop;
    QTimer check;
    QElapsedTimer timer;
    timer.start();
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done() || timer.elapsed() >= milliseconds)
            loop.quit();
    });
    check.start(pollMilliseconds);
    loop.exec();
    return done();
}
