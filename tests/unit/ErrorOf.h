#pragma once

#include "norvane/Exception.h"

#include <string>

namespace Norvane::Test {

/// The error code that `action` throws, Success when it throws nothing; and what the error says.
template <class Action>
Error ErrorOf(Action&& action, std::string* message = nullptr) {
    try {
        action();
    } catch (const Exception& error) {
        if (message) {
            *message = error.what();
        }
        return error.GetError();
    }
    return Error::Success;
}

} // namespace Norvane::Test
