#pragma once

#include <functional>

// Runs the real event loop until done() answers true or the time is up, and sleeps while nothing
// happens. done() is asked whenever the loop has handled what was pending and is about to sleep,
// so it must turn true through work on the GUI thread (a queued notice, a timer, a signal); a
// value another thread changes without posting anything is seen on the next event only.
// False when the time ran out first.
bool waitInEventLoop(const std::function<bool()>& done, int milliseconds);
