#pragma once

#include "norvane/System.h"

#include <functional>

/// Makes the pictures and the style sheet known to Qt. Once, before the first picture is used.
void initTavorinResources();

/// Obtains the camera library's system. A library failure is shown in the "Norvane Error" box, and the handle
/// stays empty; start-up goes on without cameras. Other exceptions pass through. User-interface thread.
///
/// @param getInstance  what obtains the system.
Norvane::SystemPtr
obtainSystem(const std::function<Norvane::SystemPtr()>& getInstance = &Norvane::System::GetInstance);
