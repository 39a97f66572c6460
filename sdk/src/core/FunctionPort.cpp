#include "core/FunctionPort.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace Norvane::Core {
namespace {

/// The longest start of `text` that has at most `length` bytes and ends between two UTF-8 characters.
std::string_view CutUtf8(std::string_view text, std::size_t length) {
    if (text.size() <= length) {
        return text;
    }
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    return text.substr(0, length);
}

} // namespace

void FunctionPort::AddText(std::int64_t address, std::int64_t length, std::function<std::string()> read) {
    Register& entry = m_registers[address];
    entry.length = length;
    entry.text = std::move(read);
}

void FunctionPort::AddNumber(std::int64_t address, std::function<std::int64_t()> read,
                             std::function<void(std::int64_t)> write) {
    Register& entry = m_registers[address];
    entry.length = sizeof(std::int64_t);
    entry.number = std::move(read);
    entry.write = std::move(write);
}

const FunctionPort::Register& FunctionPort::At(std::int64_t address, std::int64_t length) const {
    const auto it = m_registers.find(address);
    if (it == m_registers.end() || it->second.length != length) {
        throw Exception(Error::InvalidAddress, "no register of " + std::to_string(length) +
                                                   " bytes stands at address " + std::to_string(address) +
                                                   " of this transport-layer map");
    }
    return it->second;
}

void FunctionPort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    const Register& entry = At(address, length);
    auto* out = static_cast<std::uint8_t*>(buffer);
    if (entry.text) {
        const std::string text = entry.text();
        const std::string_view cut = CutUtf8(text, static_cast<std::size_t>(length));
        std::memset(out, 0, static_cast<std::size_t>(length));
        std::copy(cut.begin(), cut.end(), out);
        return;
    }
    const auto value = static_cast<std::uint64_t>(entry.number());
    for (int byte = 0; byte < 8; ++byte) {
        out[byte] = static_cast<std::uint8_t>(value >> (8 * byte));
    }
}

void FunctionPort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    const Register& entry = At(address, length);
    if (!entry.write) {
        throw Exception(Error::AccessDenied,
                        "the register at address " + std::to_string(address) + " is read-only");
    }
    const auto* in = static_cast<const std::uint8_t*>(buffer);
    std::uint64_t value = 0;
    for (int byte = 0; byte < 8; ++byte) {
        value |= static_cast<std::uint64_t>(in[byte]) << (8 * byte);
    }
    entry.write(static_cast<std::int64_t>(value));
}

} // namespace Norvane::Core
