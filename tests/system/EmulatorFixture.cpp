#include "EmulatorFixture.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace Norvane::Test {

namespace {

/// "key = value" lines.
std::map<std::string, std::string> KeysOf(const std::string& text) {
    std::map<std::string, std::string> keys;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        keys[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return keys;
}

} // namespace

EmulatorFixture::EmulatorFixture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "norvane-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    setenv("NORVANE_EMULATOR", (m_folder + "/emulator.ini").c_str(), 1);
}

EmulatorFixture::~EmulatorFixture() {
    m_system = nullptr;
    unsetenv("NORVANE_EMULATOR");
    std::filesystem::remove_all(m_folder);
}

void EmulatorFixture::AddInterface(const std::string& name, const std::string& keys) {
    auto& section = m_sections["interface " + name];
    section = {{"type", "GEV"}, {"address", "169.254.10.1"}, {"netmask", "255.255.0.0"}};
    for (const auto& [key, value] : KeysOf(keys)) {
        section[key] = value;
    }
    Write();
}

void EmulatorFixture::AddCamera(const std::string& serial, const std::string& keys) {
    auto& section = m_sections["camera " + serial];
    section = {{"interface", "GigE-0"},      {"model", "Duskwing S"}, {"vendor", "Altrona"},
               {"address", "169.254.10.20"}, {"width", "320"},        {"height", "240"},
               {"pixel-format", "Mono8"},    {"frame-rate", "50"}};
    for (const auto& [key, value] : KeysOf(keys)) {
        section[key] = value;
    }
    Write();
}

void EmulatorFixture::Change(const std::string& serial, const std::string& key, const std::string& value) {
    m_sections["camera " + serial][key] = value;
    Write();
}

void EmulatorFixture::Unplug(const std::string& serial) {
    m_sections.erase("camera " + serial);
    Write();
}

void EmulatorFixture::RemoveInterface(const std::string& name) {
    m_sections.erase("interface " + name);
    Write();
}

void EmulatorFixture::Write() {
    const std::string path = m_folder + "/emulator.ini";
    {
        std::ofstream file(path + ".new");
        for (const auto& [section, keys] : m_sections) {
            file << '[' << section << "]\n";
            for (const auto& [key, value] : keys) {
                file << key << " = " << value << '\n';
            }
        }
    }
    std::filesystem::rename(path + ".new", path);
}

std::string EmulatorFixture::WriteFile(const std::string& name, const std::string& content) {
    const std::string path = m_folder + "/" + name;
    std::ofstream(path) << content;
    return path;
}

CameraPtr EmulatorFixture::Find(const std::string& serial) {
    CameraPtr found;
    Eventually([&] {
        const CameraList cameras = m_system->GetCameras(true);
        for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
            const CameraPtr camera = cameras.GetByIndex(i);
            if (TextOf(camera->GetTLDeviceNodeMap(), "DeviceID") == serial) {
                found = camera;
            }
        }
        return found.IsValid();
    });
    return found;
}

} // namespace Norvane::Test
