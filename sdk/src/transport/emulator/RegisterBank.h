#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Norvane::Transport::Emulator {

/// The registers of one emulated camera: named bytes at addresses, with behaviour attached. Features reach
/// them by name, the port by address. Not safe across threads: the camera that owns the bank guards it with
/// its mutex, which is held while behaviours run.
class RegisterBank {
public:
    enum class Type { Unsigned, Signed, Real, Bytes };
    enum Flags : unsigned {
        Readable = 1,
        Writable = 2,
        Stored = 4,  ///< saved and loaded by user sets
        Fixed = 8,   ///< not writable while the camera acquires
        Imaging = 16 ///< a change alters the coming images
    };

    explicit RegisterBank(bool bigEndian) : m_bigEndian(bigEndian) {}

    /// Adds `count` elements of `length` bytes and returns the address of the first. A register that exists
    /// already keeps its place.
    std::uint64_t Add(const std::string& name, Type type, std::uint32_t length, unsigned flags,
                      std::uint32_t count = 1);
    bool Has(std::string_view name) const { return m_byName.find(name) != m_byName.end(); }
    std::uint64_t Address(std::string_view name) const { return Find(name).address; }
    void AddFlags(std::string_view name, unsigned flags) { Find(name).flags |= flags; }

    /// `refresh` runs before the port reads the register.
    void OnRead(std::string_view name, std::function<void()> refresh);
    /// `react` runs after the port wrote element `index`; a throw puts the old content back. Several are run
    /// in the order in which they were added.
    void OnWrite(std::string_view name, std::function<void(std::size_t index)> react);

    // Values, without behaviour and access rights. @throws Exception (InvalidParameter) for an unknown name.
    std::int64_t Int(std::string_view name, std::size_t index = 0) const;
    double Real(std::string_view name, std::size_t index = 0) const;
    std::string Text(std::string_view name) const;
    void SetInt(std::string_view name, std::int64_t value, std::size_t index = 0);
    void SetReal(std::string_view name, double value, std::size_t index = 0);
    void SetText(std::string_view name, std::string_view text); ///< cut at a character's end where too long
    std::vector<std::uint8_t>& Bytes(std::string_view name) { return Find(name).content; }

    // The port. @throws Exception (InvalidAddress, AccessDenied, InvalidParameter).
    void Read(void* buffer, std::uint64_t address, std::uint64_t length);
    void Write(const void* buffer, std::uint64_t address, std::uint64_t length);
    void SetLocked(bool locked) { m_locked = locked; } ///< registers marked Fixed refuse writes

    /// Grows with every change of a register marked Imaging.
    std::uint64_t ImagingGeneration() const { return m_imagingGeneration; }
    void TouchImaging() { ++m_imagingGeneration; }

    using Snapshot = std::map<std::string, std::vector<std::uint8_t>, std::less<>>;
    Snapshot SaveStored() const;
    /// Puts a snapshot back and runs the reactions, so that what depends on the values follows.
    void LoadStored(const Snapshot& snapshot);

    bool IsBigEndian() const { return m_bigEndian; }

private:
    struct Register {
        std::string name;
        std::uint64_t address = 0;
        Type type = Type::Unsigned;
        std::uint32_t elementLength = 4;
        unsigned flags = 0;
        std::vector<std::uint8_t> content;
        std::vector<std::function<void()>> refresh;
        std::vector<std::function<void(std::size_t)>> react;
    };

    Register& Find(std::string_view name);
    const Register& Find(std::string_view name) const { return const_cast<RegisterBank*>(this)->Find(name); }
    Register& At(std::uint64_t address);
    std::uint64_t Load(const Register& reg, std::size_t index) const;
    void Store(Register& reg, std::size_t index, std::uint64_t raw);

    const bool m_bigEndian;
    bool m_locked = false;
    std::uint64_t m_next = 0x10000;
    std::uint64_t m_imagingGeneration = 1;
    std::map<std::uint64_t, Register> m_registers; // node-based: references stay valid while more are added
    std::map<std::string, Register*, std::less<>> m_byName;
};

} // namespace Norvane::Transport::Emulator
