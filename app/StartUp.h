#pragma once

#include "norvane/System.h"

#include <functional>

/// Has large blocks of memory go back to the system as soon as they are freed. The C library's own rule
/// learns from the first image that is freed to keep blocks of its size, and small ones that live on between
/// them then pin them: the program would hold several times what it uses. Once, before the first image.
void returnLargeMemory();

/// Makes the pictures and the style sheet known to Qt. Once, before the first picture is used.
void initTavorinResources();

/// Obtains the camera library's system. A library failure is shown in the "Norvane Error" box, and the handle
/// stays empty; start-up goes on without cameras. Other exceptions pass through. User-interface thread.
///
/// @param getInstance  what obtains the system.
Norvane::SystemPtr
obtainSystem(const std::function<Norvane::SystemPtr()>& getInstance = &Norvane::System::GetInstance);
