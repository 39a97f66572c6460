#include "transport/emulator/Settings.h"

#include "transport/emulator/PixelWriters.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

namespace Norvane::Transport::Emulator {
namespace {

using Setter = std::function<void(const std::string& value)>; ///< throws Wrong
struct Wrong {
    std::string expectation;
};
using Keys = std::map<std::string, Setter, std::less<>>;

bool ParseBool(const std::string& value) {
    if (value == "true" || value == "yes" || value == "1" || value == "on") {
        return true;
    }
    if (value == "false" || value == "no" || value == "0" || value == "off") {
        return false;
    }
    throw Wrong{"true or false"};
}

std::uint32_t ParseUnsigned(const std::string& value, std::uint32_t min, std::uint32_t max) {
    std::uint32_t result = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
    if (error != std::errc() || end != value.data() + value.size() || result < min || result > max) {
        throw Wrong{"a whole number from " + std::to_string(min) + " to " + std::to_string(max)};
    }
    return result;
}

double ParseReal(const std::string& value, double min, double max, const char* expectation) {
    double result = 0.0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
    if (error != std::errc() || end != value.data() + value.size() || !(result >= min && result <= max)) {
        throw Wrong{expectation};
    }
    return result;
}

std::uint32_t ParseAddress(const std::string& value) {
    std::uint32_t result = 0;
    const char* at = value.data();
    const char* const end = at + value.size();
    for (int part = 0; part < 4; ++part) {
        unsigned number = 0;
        const auto parsed = std::from_chars(at, end, number);
        const bool last = part == 3;
        if (parsed.ec != std::errc() || number > 255 ||
            (last ? parsed.ptr != end : parsed.ptr == end || *parsed.ptr != '.')) {
            throw Wrong{"an address like 169.254.10.20"};
        }
        result = result << 8 | number;
        at = parsed.ptr + 1;
    }
    return result;
}

template <class T>
T ParseChoice(const std::string& value, const std::vector<std::pair<const char*, T>>& choices) {
    std::string expectation;
    for (const auto& [name, result] : choices) {
        if (value == name) {
            return result;
        }
        expectation += (expectation.empty() ? "" : ", ") + std::string(name);
    }
    throw Wrong{"one of " + expectation};
}

void Apply(const IniFile::Section& section, const Keys& keys, std::vector<Problem>& problems) {
    for (const IniFile::Entry& entry : section.entries) {
        const auto key = keys.find(entry.key);
        if (key == keys.end()) {
            problems.push_back({entry.line, entry.key + " is no key of a section [" + section.kind +
                                                " ...]; it is ignored"});
            continue;
        }
        try {
            key->second(entry.value);
        } catch (const Wrong& wrong) {
            problems.push_back({entry.line, entry.key + ": \"" + entry.value + "\" should be " +
                                                wrong.expectation + "; the key keeps its default"});
        }
    }
}

InterfaceSettings ReadInterface(const IniFile::Section& section, std::vector<Problem>& problems) {
    InterfaceSettings result;
    result.id = section.name;
    result.name = section.name;
    const Keys keys{
        {"type",
         [&](auto& v) {
             result.kind = ParseChoice<Kind>(v, {{"GEV", Kind::GigEVision}, {"U3V", Kind::Usb3Vision}});
         }},
        {"name", [&](auto& v) { result.name = v; }},
        {"address", [&](auto& v) { result.address = ParseAddress(v); }},
        {"netmask",
         [&](auto& v) {
             const std::uint32_t mask = ParseAddress(v);
             if ((~mask & (~mask + 1)) != 0 || mask == 0xFFFFFFFF) {
                 throw Wrong{"a mask like 255.255.0.0"};
             }
             result.netmask = mask;
         }},
        {"usable", [&](auto& v) { result.usable = ParseBool(v); }},
    };
    Apply(section, keys, problems);
    return result;
}

CameraSettings ReadCamera(const IniFile::Section& section, const std::string& folder,
                          std::vector<Problem>& problems) {
    CameraSettings result;
    result.serial = section.name;
    const Keys keys{
        {"interface", [&](auto& v) { result.interfaceId = v; }},
        {"model", [&](auto& v) { result.model = v; }},
        {"vendor", [&](auto& v) { result.vendor = v; }},
        {"user-name", [&](auto& v) { result.userName = v; }},
        {"address", [&](auto& v) { result.address = ParseAddress(v); }},
        {"netmask", [&](auto& v) { result.netmask = ParseAddress(v); }},
        {"description",
         [&](auto& v) { result.descriptionPath = v.empty() || v[0] == '/' ? v : folder + "/" + v; }},
        {"width", [&](auto& v) { result.width = ParseUnsigned(v, 16, 16384); }},
        {"height", [&](auto& v) { result.height = ParseUnsigned(v, 16, 16384); }},
        {"pixel-format",
         [&](auto& v) {
             if (!FindEmulatedFormat(v)) {
                 throw Wrong{"a pixel format's name like Mono8, BayerRG8, BayerRG12p or RGB8"};
             }
             result.pixelFormat = v;
         }},
        {"frame-rate",
         [&](auto& v) { result.frameRate = ParseReal(v, 0.1, 1000.0, "a number from 0.1 to 1000"); }},
        {"access",
         [&](auto& v) {
             result.readOnly = ParseChoice<bool>(v, {{"RW", false}, {"RO", true}});
         }},
        {"unusable", [&](auto& v) { result.unusable = ParseBool(v); }},
        {"inference",
         [&](auto& v) {
             result.inference = ParseChoice<Inference>(v, {{"none", Inference::None},
                                                           {"classification", Inference::Classification},
                                                           {"detection", Inference::Detection}});
         }},
        {"incomplete-every", [&](auto& v) { result.incompleteEvery = ParseUnsigned(v, 0, 1000000); }},
        {"loss", [&](auto& v) { result.loss = ParseReal(v, 0.0, 1.0, "a share from 0 to 1"); }},
        {"register-delay-us", [&](auto& v) { result.registerDelayUs = ParseUnsigned(v, 0, 1000000); }},
        {"file-buffer", [&](auto& v) { result.fileBufferSize = ParseUnsigned(v, 64, 65536); }},
        {"file-length-access",
         [&](auto& v) {
             result.fileLengthWritable = ParseChoice<bool>(v, {{"RW", true}, {"RO", false}});
         }},
    };
    Apply(section, keys, problems);
    return result;
}

} // namespace

std::uint64_t HashOf(std::string_view text) {
    // FNV-1a.
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001B3U;
    }
    return hash;
}

Settings Settings::Read(std::string_view text, const std::string& folder, std::vector<Problem>& problems) {
    Settings result;
    const IniFile file = IniFile::Parse(text, problems);
    std::vector<std::pair<CameraSettings, int>> cameras;
    for (const IniFile::Section& section : file.sections) {
        const std::string title = "[" + section.kind + (section.name.empty() ? "" : " " + section.name) + "]";
        if (section.kind != "interface" && section.kind != "camera") {
            problems.push_back(
                {section.line, title + " is neither an interface nor a camera; the section is ignored"});
        } else if (section.name.empty()) {
            problems.push_back(
                {section.line, title + " lacks a name, as in [camera 21034567]; the section is ignored"});
        } else if (section.kind == "interface") {
            if (std::any_of(result.interfaces.begin(), result.interfaces.end(),
                            [&](const auto& other) { return other.id == section.name; })) {
                problems.push_back({section.line, title + " stands here a second time; this one is ignored"});
            } else {
                result.interfaces.push_back(ReadInterface(section, problems));
            }
        } else if (std::any_of(cameras.begin(), cameras.end(),
                               [&](const auto& other) { return other.first.serial == section.name; })) {
            problems.push_back({section.line, title + " stands here a second time; this one is ignored"});
        } else {
            cameras.emplace_back(ReadCamera(section, folder, problems), section.line);
        }
    }
    if (result.interfaces.empty() && !cameras.empty()) {
        result.interfaces.push_back({"Emulator", "Emulated Gigabit Ethernet"});
    }
    for (auto& [camera, line] : cameras) {
        if (camera.interfaceId.empty()) {
            camera.interfaceId = result.interfaces.front().id;
        }
        if (std::none_of(result.interfaces.begin(), result.interfaces.end(),
                         [&, id = camera.interfaceId](const auto& i) { return i.id == id; })) {
            problems.push_back({line, "[camera " + camera.serial + "] names the interface \"" +
                                          camera.interfaceId +
                                          "\", which has no section; the camera is ignored"});
            continue;
        }
        result.cameras.push_back(camera);
    }
    return result;
}

} // namespace Norvane::Transport::Emulator
