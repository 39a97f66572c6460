#pragma once

#include "norvane/Camera.h"
#include "norvane/genapi/GenApi.h"

#include <QString>

/// The worker's view of one camera: its handle and the stream statistics that go with every image, found
/// once. Read on any thread; never changes after construction.
class CameraDevice {
public:
    explicit CameraDevice(Norvane::CameraPtr camera);

    const Norvane::CameraPtr& Camera() const { return m_camera; }
    bool IsUsb() const;

    /// Statistics as decimal text, "N/A" where the stream does not tell.
    QString TotalPackets() const { return Text(m_totalPackets); }
    QString MissedPackets() const { return Text(m_missedPackets); }
    QString ResendRequests() const { return Text(m_resendRequests); }
    QString ResendPackets() const { return Text(m_resendPackets); }
    QString CorruptImages() const { return Text(m_corruptImages); }
    QString BufferUnderrun() const { return Text(m_bufferUnderrun); }

    /// Images a second that the camera is set to; 0 when it does not tell.
    double AcquisitionFrameRate() const;
    /// Lets the stream take its number of buffers from the feature for it, where the stream offers the
    /// choice.
    void UseManualBufferCount() const;

private:
    static QString Text(Norvane::GenApi::IInteger* statistic);

    Norvane::CameraPtr m_camera;
    Norvane::GenApi::CIntegerPtr m_totalPackets;
    Norvane::GenApi::CIntegerPtr m_missedPackets;
    Norvane::GenApi::CIntegerPtr m_resendRequests;
    Norvane::GenApi::CIntegerPtr m_resendPackets;
    Norvane::GenApi::CIntegerPtr m_corruptImages;
    Norvane::GenApi::CIntegerPtr m_bufferUnderrun;
    Norvane::GenApi::CEnumerationPtr m_deviceType;
};
