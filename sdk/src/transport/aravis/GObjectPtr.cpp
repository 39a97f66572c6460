#include "transport/aravis/GObjectPtr.h"

namespace Norvane::Transport {

Error GErrorHolder::Code() const {
    if (!m_error || m_error->domain != ARV_DEVICE_ERROR) {
        return Error::Io;
    }
    switch (m_error->code) {
    case ARV_DEVICE_ERROR_TIMEOUT:
        return Error::Timeout;
    case ARV_DEVICE_ERROR_NOT_CONNECTED:
        return Error::NotAvailable;
    case ARV_DEVICE_ERROR_NOT_FOUND:
        return Error::InvalidId;
    case ARV_DEVICE_ERROR_NOT_CONTROLLER:
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED:
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT:
        return Error::AccessDenied;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_ADDRESS:
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BAD_ALIGNMENT:
        return Error::InvalidAddress;
    case ARV_DEVICE_ERROR_INVALID_PARAMETER:
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_PARAMETER:
        return Error::InvalidParameter;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED:
        return Error::NotImplemented;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BUSY:
        return Error::Busy;
    default:
        return Error::Io;
    }
}

} // namespace Norvane::Transport
