#pragma once

#include "transport/emulator/IniFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Norvane::Transport::Emulator {

enum class Kind { GigEVision, Usb3Vision };
enum class Inference { None, Classification, Detection };

/// One `[interface NAME]` section with the defaults filled in.
struct InterfaceSettings {
    std::string id; ///< the section's name
    std::string name;
    Kind kind = Kind::GigEVision;
    bool usable = true;
    std::uint32_t address = 0xA9FE0A01; ///< host order; 169.254.10.1
    std::uint32_t netmask = 0xFFFF0000;

    bool operator==(const InterfaceSettings&) const = default;
};

/// One `[camera SERIAL]` section with the defaults filled in.
struct CameraSettings {
    std::string serial; ///< the section's name
    std::string interfaceId;
    std::string model = "Duskwing S DWS-50S5C";
    std::string vendor = "Altrona";
    std::string userName;
    std::uint32_t address = 0;   ///< host order; 0 asks for a free one in the interface's network
    std::uint32_t netmask = 0;   ///< 0: the interface's
    std::string descriptionPath; ///< absolute; empty for the built-in description
    std::uint32_t width = 2448, height = 2048;
    std::string pixelFormat = "BayerRG8";
    double frameRate = 30.0;
    bool readOnly = false;
    bool unusable = false;
    Inference inference = Inference::None;
    std::uint32_t incompleteEvery = 0; ///< 0: never
    double loss = 0.0;                 ///< share of packets, 0 to 1
    std::uint32_t registerDelayUs = 0;
    std::uint32_t fileBufferSize = 2048; ///< bytes of FileAccessBuffer
    bool fileLengthWritable = true;      ///< whether FileAccessLength is

    bool operator==(const CameraSettings&) const = default;
};

/// What a description file asks for.
struct Settings {
    std::vector<InterfaceSettings> interfaces;
    std::vector<CameraSettings> cameras; ///< each on an interface of the list

    /// Takes what makes sense of the file's text and adds one problem for each thing that does not. Relative
    /// paths are taken from `folder`.
    static Settings Read(std::string_view text, const std::string& folder, std::vector<Problem>& problems);
};

/// A repeatable hash of a text, for addresses and random seeds.
std::uint64_t HashOf(std::string_view text);

} // namespace Norvane::Transport::Emulator
