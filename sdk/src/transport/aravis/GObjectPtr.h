#pragma once

#include "norvane/Exception.h"

#include <arv.h>
#include <memory>
#include <string>

namespace Norvane::Transport {

struct GObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};

/// One reference to a GObject.
template <class T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

/// Receives a GError where Aravis wants one, and frees it.
class GErrorHolder {
public:
    GErrorHolder() = default;
    ~GErrorHolder() { g_clear_error(&m_error); }
    GErrorHolder(const GErrorHolder&) = delete;
    GErrorHolder& operator=(const GErrorHolder&) = delete;

    GError** Out() {
        g_clear_error(&m_error);
        return &m_error;
    }
    explicit operator bool() const { return m_error != nullptr; }
    std::string Text() const { return m_error ? m_error->message : "no reason given"; }
    /// The library's error for a device error of Aravis.
    Error Code() const;

private:
    GError* m_error = nullptr;
};

} // namespace Norvane::Transport
