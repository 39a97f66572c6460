#pragma once

#include "norvane/Exception.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace Norvane {

/// A reference-counted handle to a library object. Copying shares the object; a default-constructed or
/// null handle is invalid and throws `LogicalErrorException` when it is dereferenced. A handle may be
/// copied and dropped on any thread; one handle object is used by one thread at a time.
///
/// @tparam T  what the handle is dereferenced to.
/// @tparam B  the object's interface class; two handles are equal when they share one object.
template <class T, class B = T>
class BasePtr {
public:
    BasePtr() noexcept = default;
    BasePtr(std::nullptr_t) noexcept {}
    explicit BasePtr(std::shared_ptr<T> object) noexcept : m_object(std::move(object)) {}

    BasePtr& operator=(std::nullptr_t) noexcept {
        m_object.reset();
        return *this;
    }

    /// True when the handle holds an object.
    bool IsValid() const noexcept { return m_object != nullptr; }
    explicit operator bool() const noexcept { return IsValid(); }

    T* operator->() const { return Checked(); }
    T& operator*() const { return *Checked(); }
    T* get() const noexcept { return m_object.get(); }

    bool operator==(const BasePtr& other) const noexcept { return m_object == other.m_object; }
    bool operator!=(const BasePtr& other) const noexcept { return m_object != other.m_object; }
    bool operator==(std::nullptr_t) const noexcept { return !IsValid(); }
    bool operator!=(std::nullptr_t) const noexcept { return IsValid(); }

    /// The shared object itself, for code that keeps it beside handles.
    const std::shared_ptr<T>& Shared() const noexcept { return m_object; }

protected:
    T* Checked() const {
        if (!m_object) {
            throw NullPointerError();
        }
        return m_object.get();
    }

private:
    std::shared_ptr<T> m_object;
};

} // namespace Norvane
