#pragma once

#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"

#include <QTest>

#include <gtest/gtest.h>

#include <optional>

namespace av {

// Runs a session on this camera until it reports a runtime error, and checks that it stopped
// then. What it reported; nullopt when nothing came in time.
inline std::optional<Error> sessionFailure(CaptureDevice& camera) {
    CaptureSession session;
    session.addInput(new CaptureDeviceInput(&camera));
    std::optional<Error> reported;
    QObject::connect(&session, &CaptureSession::runtimeError,
                     [&](const Error& error) { reported = error; });
    session.startRunning();
    if (!QTest::qWaitFor([&] { return reported.has_value(); }, 10000))
        return std::nullopt;
    EXPECT_FALSE(session.isRunning());
    return reported;
}

} // namespace av
