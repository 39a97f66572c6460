#pragma once

#include "genapi/Node.h"
#include "genapi/RegisterTarget.h"

#include <cstdint>

namespace Norvane::GenApi {

/// What all register nodes have in common: address, length, port, access mode, caching. A member of the node
/// that owns it; the lock is the node map's.
class RegisterCore {
public:
    explicit RegisterCore(Node& owner) : m_owner(owner) {}

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader);
    void FinishLoading(Loader& loader);
    void CollectEdges(EdgeSink& edges) const;

    EAccessMode Presence() const;
    ECachingMode CachingMode() const { return m_caching; }

    /// The register's bytes, Length() of them, valid until the next operation.
    const std::uint8_t* Read(bool fresh);
    /// Writes all of the register's bytes.
    void Write(const std::uint8_t* data) { Write(data, Length()); }
    /// Writes the first `length` bytes, at most Length(); the others stay as they are in the device.
    void Write(const std::uint8_t* data, std::int64_t length);
    /// The bytes before some bits of them are written: as known, else read, else (for a register that cannot
    /// be read) as last written.
    const std::uint8_t* ReadToModify();
    std::int64_t Address();
    std::int64_t Length();
    /// The length if it is constant, else 0.
    std::int64_t StaticLength() const;
    void Forget(bool keepBytes);
    /// Reads the port and reports a change, unless that was done since the epoch `since` began.
    void Poll(std::uint64_t since);
    bool Swapped() const;

private:
    bool Current() const;
    void ReadPort(bool report);
    [[noreturn]] void Rethrow(const char* doing) const;

    Node& m_owner;
    RegisterTarget* m_target = nullptr;
    std::uint64_t m_required = 0; ///< bytes from before this epoch do not count
    EAccessMode m_mode = RO;
    ECachingMode m_caching = WriteThrough;
};

} // namespace Norvane::GenApi
