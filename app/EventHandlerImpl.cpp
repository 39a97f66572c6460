#include "EventHandlerImpl.h"

void SystemEventHandlerImpl::OnInterfaceArrival(std::string interfaceId) {
    emit InterfaceArrived(QString::fromStdString(interfaceId));
}

void SystemEventHandlerImpl::OnInterfaceRemoval(std::string interfaceId) {
    emit InterfaceRemoved(QString::fromStdString(interfaceId));
}

void InterfaceEventHandlerImpl::OnDeviceArrival(std::uint64_t serialNumber) {
    emit DeviceArrived(static_cast<int>(serialNumber));
}

void InterfaceEventHandlerImpl::OnDeviceRemoval(std::uint64_t serialNumber) {
    emit DeviceRemoved(static_cast<int>(serialNumber));
}
