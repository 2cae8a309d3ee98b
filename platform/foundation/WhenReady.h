#pragma once

#include <QFuture>
#include <QFutureWatcher>
#include <QObject>

#include <utility>

namespace foundation {

// Hands a future's result to handler on the context's thread once it is ready, and never once the
// context is gone: a continuation given a context (QFuture::then) asserts when the context dies
// first, as a session closed while its photo is still decoding does. Call on the context's thread.
template <typename T, typename Handler>
void whenReady(QFuture<T> future, QObject* context, Handler handler) {
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context,
                     [watcher, handler = std::move(handler)]() mutable {
                         watcher->deleteLater();
                         handler(watcher->result());
                     });
    watcher->setFuture(std::move(future));
}

} // namespace foundation
