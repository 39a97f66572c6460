#pragma once

#include "norvane/Exception.h"

#include <QtDebug>

#include <utility>

/// Runs `action` and answers whether it went through. A library error ends it: the caller's state stays as
/// it was, and a debug line says what was abandoned and why.
template <class Action>
bool attempt(const char* purpose, Action&& action) {
    try {
        std::forward<Action>(action)();
        return true;
    } catch (const Norvane::Exception& error) {
        qDebug("%s: %s", purpose, error.what());
        return false;
    }
}
