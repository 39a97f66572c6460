#include "transport/aravis/RegisterAccess.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Norvane::Transport {
namespace {

[[noreturn]] void ThrowAccess(const GErrorHolder& error, const char* verb, const std::string& label,
                              std::uint64_t address, std::size_t length) {
    throw Exception(error.Code(), label + ": " + verb + " " + std::to_string(length) + " bytes at " +
                                      FormatRegister(address) + " failed: " + error.Text());
}

/// Reads whole aligned words from a GigE Vision device, or any span from a USB3 Vision device.
void ReadSpan(ArvDevice* device, const std::string& label, std::uint64_t address, std::uint8_t* bytes,
              std::size_t length) {
    GErrorHolder error;
    if (ARV_IS_GV_DEVICE(device) && length == 4) {
        guint32 value = 0;
        if (!arv_device_read_register(device, address, &value, error.Out())) {
            ThrowAccess(error, "reading", label, address, length);
        }
        value = GUINT32_TO_BE(value);
        std::memcpy(bytes, &value, sizeof value);
    } else if (!arv_device_read_memory(device, address, static_cast<guint32>(length), bytes, error.Out())) {
        ThrowAccess(error, "reading", label, address, length);
    }
}

void WriteSpan(ArvDevice* device, const std::string& label, std::uint64_t address, std::uint8_t* bytes,
               std::size_t length) {
    GErrorHolder error;
    if (ARV_IS_GV_DEVICE(device) && length == 4) {
        guint32 value = 0;
        std::memcpy(&value, bytes, sizeof value);
        if (!arv_device_write_register(device, address, GUINT32_FROM_BE(value), error.Out())) {
            ThrowAccess(error, "writing", label, address, length);
        }
    } else if (!arv_device_write_memory(device, address, static_cast<guint32>(length), bytes, error.Out())) {
        ThrowAccess(error, "writing", label, address, length);
    }
}

std::uint64_t AlignDown(std::uint64_t address) {
    return address & ~std::uint64_t{3};
}

} // namespace

std::vector<std::uint8_t> ReadBytes(ArvDevice* device, const std::string& label, std::uint64_t address,
                                    std::size_t length) {
    if (!ARV_IS_GV_DEVICE(device)) {
        std::vector<std::uint8_t> bytes(length);
        ReadSpan(device, label, address, bytes.data(), length);
        return bytes;
    }
    const std::uint64_t start = AlignDown(address);
    std::vector<std::uint8_t> words(AlignDown(address + length + 3) - start);
    ReadSpan(device, label, start, words.data(), words.size());
    const auto first = words.begin() + static_cast<std::ptrdiff_t>(address - start);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
}

void WriteBytes(ArvDevice* device, const std::string& label, std::uint64_t address,
                const std::vector<std::uint8_t>& bytes) {
    const std::uint64_t start = AlignDown(address);
    const std::uint64_t end = AlignDown(address + bytes.size() + 3);
    if (!ARV_IS_GV_DEVICE(device) || (start == address && end == address + bytes.size())) {
        auto copy = bytes; // Aravis wants the bytes writable
        WriteSpan(device, label, address, copy.data(), copy.size());
        return;
    }
    // Keep what the first and the last word hold beside the bytes to write.
    std::vector<std::uint8_t> words(end - start);
    ReadSpan(device, label, start, words.data(), 4);
    if (words.size() > 4) {
        ReadSpan(device, label, end - 4, words.data() + words.size() - 4, 4);
    }
    std::copy(bytes.begin(), bytes.end(), words.begin() + static_cast<std::ptrdiff_t>(address - start));
    WriteSpan(device, label, start, words.data(), words.size());
}

std::string FormatRegister(std::uint64_t address) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(address));
    return text;
}

} // namespace Norvane::Transport
