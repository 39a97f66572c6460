#include "CameraDevice.h"

#include "Guarded.h"

#include <utility>

using namespace Norvane::GenApi;

CameraDevice::CameraDevice(Norvane::CameraPtr camera) : m_camera(std::move(camera)) {
    if (!m_camera.IsValid()) {
        return;
    }
    guarded("Finding the stream statistics", [this] {
        const INodeMap& stream = m_camera->GetTLStreamNodeMap();
        m_totalPackets = stream.GetNode("GevTotalPacketCount");
        m_missedPackets = stream.GetNode("GevMissedPacketCount");
        m_resendRequests = stream.GetNode("GevResendRequestCount");
        m_resendPackets = stream.GetNode("GevResendPacketCount");
        m_corruptImages = stream.GetNode("StreamIncompleteFrameCount");
        m_bufferUnderrun = stream.GetNode("StreamLostFrameCount");
        m_deviceType = m_camera->GetTLDeviceNodeMap().GetNode("DeviceType");
    });
}

bool CameraDevice::IsUsb() const {
    return IsReadable(m_deviceType.Get()) && m_deviceType->GetIntValue() != 0;
}

QString CameraDevice::Text(IInteger* statistic) {
    try {
        if (IsReadable(statistic)) {
            return QString::number(statistic->GetValue());
        }
    } catch (const Norvane::Exception&) {
        // Asked for with every image, so nothing is logged: the status line shows it.
    }
    return QStringLiteral("N/A");
}

double CameraDevice::AcquisitionFrameRate() const {
    double rate = 0.0;
    guarded("Reading the acquisition frame rate", [&] {
        const CFloatPtr node = m_camera->GetNodeMap().GetNode("AcquisitionFrameRate");
        if (IsReadable(node.Get())) {
            rate = node->GetValue();
        }
    });
    return rate;
}

void CameraDevice::UseManualBufferCount() const {
    guarded("Setting the stream's buffer count mode", [this] {
        const CEnumerationPtr mode = m_camera->GetTLStreamNodeMap().GetNode("StreamBufferCountMode");
        if (!IsWritable(mode.Get())) {
            return;
        }
        const CEnumEntryPtr manual = mode->GetEntryByName("Manual");
        if (IsAvailable(manual.Get())) {
            mode->SetIntValue(manual->GetValue());
        }
    });
}
