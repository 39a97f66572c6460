#pragma once

#include "norvane/genapi/NodeMapFactory.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Norvane::Core {

/// A port whose registers are functions: what stands behind the transport-layer, stream and interface maps.
/// Registers are added before the node map is made and stay the same afterwards. The functions are called
/// with the node map's lock held, on any thread; they return at once and never call into the map.
class FunctionPort final : public GenApi::IPort {
public:
    /// A text of at most `length` bytes, padded with zeros and cut between characters.
    void AddText(std::int64_t address, std::int64_t length, std::function<std::string()> read);
    /// A signed number of 8 bytes, little endian. Without `write` it is read-only.
    void AddNumber(std::int64_t address, std::function<std::int64_t()> read,
                   std::function<void(std::int64_t)> write = nullptr);

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    struct Register {
        std::int64_t length = 0;
        std::function<std::string()> text;
        std::function<std::int64_t()> number;
        std::function<void(std::int64_t)> write;
    };

    const Register& At(std::int64_t address, std::int64_t length) const;

    std::map<std::int64_t, Register> m_registers;
};

} // namespace Norvane::Core
