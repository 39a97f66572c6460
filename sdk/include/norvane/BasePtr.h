#pragma once

#include "norvane/Exception.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace Norvane {

/// A reference-counted handle to a library object. Copying shares the object; a default-constructed or
/// null handle is invalid and throws an Exception named "LogicalErrorException" when it is dereferenced. A
/// handle may be copied and dropped on any thread; one handle object is used by one thread at a time.
///
/// @tparam T  what the handle is dereferenced to.
/// @tparam B  the object's interface class; two handles are equal when they share one object.
template <class T, class B = T>
class BasePtr {
public:
    /// Holds nothing.
    BasePtr() noexcept = default;
    /// Holds nothing.
    BasePtr(std::nullptr_t) noexcept {}
    /// Shares `object`, which may be null.
    explicit BasePtr(std::shared_ptr<T> object) noexcept : m_object(std::move(object)) {}

    /// Drops the object.
    BasePtr& operator=(std::nullptr_t) noexcept {
        m_object.reset();
        return *this;
    }

    /// True when the handle holds an object.
    bool IsValid() const noexcept { return m_object != nullptr; }
    /// The same as IsValid().
    explicit operator bool() const noexcept { return IsValid(); }

    /// @throws Exception ("LogicalErrorException") when the handle holds nothing.
    T* operator->() const { return Checked(); }
    /// @throws Exception ("LogicalErrorException") when the handle holds nothing.
    T& operator*() const { return *Checked(); }
    /// Null when the handle holds nothing; lives as long as any handle does.
    T* get() const noexcept { return m_object.get(); }

    /// Whether both share one object, or hold nothing.
    bool operator==(const BasePtr& other) const noexcept { return m_object == other.m_object; }
    /// Whether they hold different objects.
    bool operator!=(const BasePtr& other) const noexcept { return m_object != other.m_object; }
    /// Whether the handle holds nothing.
    bool operator==(std::nullptr_t) const noexcept { return !IsValid(); }
    /// Whether the handle holds an object.
    bool operator!=(std::nullptr_t) const noexcept { return IsValid(); }

    /// The shared object itself, for code that keeps it beside handles.
    const std::shared_ptr<T>& Shared() const noexcept { return m_object; }

protected:
    /// The object. @throws Exception ("LogicalErrorException") when there is none.
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
