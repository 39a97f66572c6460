#pragma once

#include "norvane/Norvane.h"

#include <QMetaType>

// Lets a signal spy keep handles.
Q_DECLARE_METATYPE(Norvane::CameraPtr)
Q_DECLARE_METATYPE(Norvane::InterfacePtr)
