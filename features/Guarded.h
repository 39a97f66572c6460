#pragma once

#include "norvane/Exception.h"

#include <QtGlobal>

/// Runs `action` and drops a library error: the action is abandoned and everything stays as it was. Leaves a
/// debug line that names what was tried, so that nothing disappears without a trace. False when it failed.
template <class Action>
bool guarded(const char* what, Action&& action) {
    try {
        action();
        return true;
    } catch (const Norvane::Exception& error) {
        qDebug("%s: %s", what, error.what());
        return false;
    }
}
