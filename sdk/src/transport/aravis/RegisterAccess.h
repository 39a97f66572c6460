#pragma once

#include "transport/aravis/GObjectPtr.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Norvane::Transport {

/// Register access as the node map wants it, bytes in the device's own order, over Aravis. GigE Vision
/// devices only move whole aligned words (GigE Vision 2.0, 16.3 and 16.4), so other spans are widened; a
/// single word goes as a register, which every device must understand. Blocking; runs on the device's worker.
/// @throws Exception (Io, Timeout, AccessDenied, InvalidAddress) that names `label` and the address.
std::vector<std::uint8_t> ReadBytes(ArvDevice* device, const std::string& label, std::uint64_t address,
                                    std::size_t length);
void WriteBytes(ArvDevice* device, const std::string& label, std::uint64_t address,
                const std::vector<std::uint8_t>& bytes);

/// "0x" and the address in hexadecimal.
std::string FormatRegister(std::uint64_t address);

} // namespace Norvane::Transport
