#pragma once

#include "norvane/Camera.h"
#include "norvane/Interface.h"

class QTreeWidgetItem;

/// The columns and contents of the device list's rows. All values come from transport-layer node maps, which
/// answer without network access, so that filling a row never waits for a camera.
namespace DeviceRow {

enum Column { NameColumn = 0, SerialColumn = 1, AddressColumn = 2, ColumnCount = 3 };

void FillInterface(QTreeWidgetItem& row, const Norvane::InterfacePtr& interface);
/// @param serial  the number that stands for the camera.
void FillCamera(QTreeWidgetItem& row, const Norvane::CameraPtr& camera, int serial);
void FillPlaceholder(QTreeWidgetItem& row);
bool IsPlaceholder(const QTreeWidgetItem& row);

} // namespace DeviceRow
