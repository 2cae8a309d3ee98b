#pragma once

// What the capture tests share: the virtual devices only, a phone held upright, and movies in a
// fresh documents folder.

#include "capture/CKFSession.h"
#include "capture/CKFSessionDelegate.h"
#include "platform/av/CaptureDevice.h"
#include "platform/av/CaptureDeviceDiscoverySession.h"
#include "platform/av/CaptureDeviceInput.h"
#include "platform/av/CaptureSession.h"
#include "platform/av/Gst.h"
#include "platform/foundation/Device.h"

#include <QObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using Discovery = av::CaptureDeviceDiscoverySession;
using Orientation = foundation::Device::Orientation;
using Position = CKFSession::CameraPosition;
using Flash = CKFSession::FlashMode;

// The zooms a session announced to its delegate.
struct ZoomNotices : QObject, CKFSessionDelegate {
    std::vector<double> values;
    void didChangeValue(CKFSession*, const QVariant& value, const QString& key) override {
        EXPECT_EQ(key, QStringLiteral("zoom"));
        values.push_back(value.toDouble());
    }
};

class CaptureTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(documents.isValid());
        qputenv("TESSARO_DOCUMENTS_DIR", documents.path().toUtf8());
        av::Gst::ensureInitialized();
        Discovery::setSystemDevicesEnabled(false);
        orient(Orientation::portrait);
    }
    void TearDown() override {
        Discovery::setVirtualCamerasForTesting({});
        Discovery::setVirtualDevicesEnabled(true);
        Discovery::setCameraSelection({});
        orient(Orientation::unknown);
    }

    static void orient(Orientation orientation) {
        foundation::Device::current().setOrientationForTesting(orientation);
    }
    // The video camera among the session's inputs.
    static av::CaptureDevice* camera(const CKFSession& session) {
        for (av::CaptureInput* input : session.session()->inputs())
            if (auto* device = qobject_cast<av::CaptureDeviceInput*>(input))
                if (device->device()->mediaType() == av::MediaType::video)
                    return device->device();
        return nullptr;
    }

    QTemporaryDir documents;
};
