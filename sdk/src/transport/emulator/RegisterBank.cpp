#include "transport/emulator/RegisterBank.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Norvane::Transport::Emulator {
namespace {

std::string Hex(std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

} // namespace

std::uint64_t RegisterBank::Add(const std::string& name, Type type, std::uint32_t length, unsigned flags,
                                std::uint32_t count) {
    if (Has(name)) {
        return Address(name);
    }
    m_next = (m_next + 7) & ~std::uint64_t{7};
    Register& reg = m_registers[m_next];
    reg.name = name;
    reg.address = m_next;
    reg.type = type;
    reg.elementLength = length;
    reg.flags = flags;
    reg.content.resize(std::size_t{length} * count);
    m_byName[name] = &reg;
    m_next += reg.content.size();
    return reg.address;
}

RegisterBank::Register& RegisterBank::Find(std::string_view name) {
    const auto found = m_byName.find(name);
    if (found == m_byName.end()) {
        throw Exception(Error::InvalidParameter, "the emulated camera has no register " + std::string(name));
    }
    return *found->second;
}

void RegisterBank::OnRead(std::string_view name, std::function<void()> refresh) {
    Find(name).refresh.push_back(std::move(refresh));
}

void RegisterBank::OnWrite(std::string_view name, std::function<void(std::size_t)> react) {
    Find(name).react.push_back(std::move(react));
}

std::uint64_t RegisterBank::Load(const Register& reg, std::size_t index) const {
    const std::size_t length = reg.elementLength;
    const std::uint8_t* bytes = reg.content.data() + index * length;
    std::uint64_t raw = 0;
    for (std::size_t i = 0; i < length; ++i) {
        raw |= std::uint64_t{bytes[i]} << 8 * (m_bigEndian ? length - 1 - i : i);
    }
    return raw;
}

void RegisterBank::Store(Register& reg, std::size_t index, std::uint64_t raw) {
    const std::size_t length = reg.elementLength;
    std::uint8_t* bytes = reg.content.data() + index * length;
    bool changed = false;
    for (std::size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<std::uint8_t>(raw >> 8 * (m_bigEndian ? length - 1 - i : i));
        changed = changed || bytes[i] != byte;
        bytes[i] = byte;
    }
    if (changed && (reg.flags & Imaging)) {
        ++m_imagingGeneration;
    }
}

std::int64_t RegisterBank::Int(std::string_view name, std::size_t index) const {
    const Register& reg = Find(name);
    const std::uint64_t raw = Load(reg, index);
    if (reg.type == Type::Signed && reg.elementLength < 8) {
        const unsigned shift = 64 - 8 * reg.elementLength;
        return static_cast<std::int64_t>(raw << shift) >> shift;
    }
    return static_cast<std::int64_t>(raw);
}

double RegisterBank::Real(std::string_view name, std::size_t index) const {
    const Register& reg = Find(name);
    const std::uint64_t raw = Load(reg, index);
    if (reg.elementLength == 4) {
        const auto narrow = static_cast<std::uint32_t>(raw);
        float value = 0.0F;
        std::memcpy(&value, &narrow, sizeof value);
        return value;
    }
    double value = 0.0;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

std::string RegisterBank::Text(std::string_view name) const {
    const auto& bytes = Find(name).content;
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

void RegisterBank::SetInt(std::string_view name, std::int64_t value, std::size_t index) {
    Store(Find(name), index, static_cast<std::uint64_t>(value));
}

void RegisterBank::SetReal(std::string_view name, double value, std::size_t index) {
    Register& reg = Find(name);
    std::uint64_t raw = 0;
    if (reg.elementLength == 4) {
        const auto narrow = static_cast<float>(value);
        std::uint32_t bits = 0;
        std::memcpy(&bits, &narrow, sizeof bits);
        raw = bits;
    } else {
        std::memcpy(&raw, &value, sizeof raw);
    }
    Store(reg, index, raw);
}

void RegisterBank::SetText(std::string_view name, std::string_view text) {
    auto& bytes = Find(name).content;
    std::size_t length = std::min(text.size(), bytes.size());
    while (length > 0 && length < text.size() && (static_cast<std::uint8_t>(text[length]) & 0xC0) == 0x80) {
        --length;
    }
    std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
    std::copy_n(text.begin(), length, bytes.begin());
}

RegisterBank::Register& RegisterBank::At(std::uint64_t address) {
    auto next = m_registers.upper_bound(address);
    if (next != m_registers.begin()) {
        Register& reg = std::prev(next)->second;
        if (address - reg.address < reg.content.size()) {
            return reg;
        }
    }
    throw Exception(Error::InvalidAddress, "the emulated camera has no register at " + Hex(address));
}

void RegisterBank::Read(void* buffer, std::uint64_t address, std::uint64_t length) {
    auto* out = static_cast<std::uint8_t*>(buffer);
    while (length > 0) {
        Register& reg = At(address);
        if (!(reg.flags & Readable)) {
            throw Exception(Error::AccessDenied,
                            "register " + reg.name + " at " + Hex(address) + " is write-only");
        }
        for (const auto& refresh : reg.refresh) {
            refresh();
        }
        const std::uint64_t offset = address - reg.address;
        const std::uint64_t part = std::min<std::uint64_t>(length, reg.content.size() - offset);
        std::memcpy(out, reg.content.data() + offset, part);
        out += part;
        address += part;
        length -= part;
    }
}

void RegisterBank::Write(const void* buffer, std::uint64_t address, std::uint64_t length) {
    const auto* in = static_cast<const std::uint8_t*>(buffer);
    while (length > 0) {
        Register& reg = At(address);
        if (!(reg.flags & Writable)) {
            throw Exception(Error::AccessDenied,
                            "register " + reg.name + " at " + Hex(address) + " is read-only");
        }
        if (m_locked && (reg.flags & Fixed)) {
            throw Exception(Error::AccessDenied,
                            "register " + reg.name +
                                " is locked while the camera acquires; stop the acquisition first");
        }
        const std::uint64_t offset = address - reg.address;
        const std::uint64_t part = std::min<std::uint64_t>(length, reg.content.size() - offset);
        const auto first = reg.content.begin() + static_cast<std::ptrdiff_t>(offset);
        const std::vector<std::uint8_t> before(first, first + static_cast<std::ptrdiff_t>(part));
        std::copy_n(in, part, first);
        try {
            for (const auto& react : reg.react) {
                react(offset / reg.elementLength);
            }
        } catch (...) {
            std::copy(before.begin(), before.end(), first);
            throw;
        }
        if (reg.flags & Imaging) {
            ++m_imagingGeneration;
        }
        in += part;
        address += part;
        length -= part;
    }
}

RegisterBank::Snapshot RegisterBank::SaveStored() const {
    Snapshot snapshot;
    for (const auto& [address, reg] : m_registers) {
        if (reg.flags & Stored) {
            snapshot[reg.name] = reg.content;
        }
    }
    return snapshot;
}

void RegisterBank::LoadStored(const Snapshot& snapshot) {
    for (const auto& [name, content] : snapshot) {
        Find(name).content = content;
    }
    ++m_imagingGeneration;
    for (const auto& [name, content] : snapshot) {
        const Register& reg = Find(name);
        for (const auto& react : reg.react) {
            for (std::size_t i = 0; i < content.size() / reg.elementLength; ++i) {
                react(i);
            }
        }
    }
}

} // namespace Norvane::Transport::Emulator
