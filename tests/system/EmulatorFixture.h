#pragma once

#include "../unit/ErrorOf.h"
#include "Nodes.h"

#include "norvane/Norvane.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Norvane::Test {

struct ImageCounter : ImageEventHandler {
    void OnImageEvent(ImagePtr image) override {
        ++(image->IsIncomplete() ? incomplete : complete);
        ++images;
        bytes = image->GetImageSize();
    }
    std::atomic<int> images{0};
    std::atomic<int> complete{0};
    std::atomic<int> incomplete{0};
    std::atomic<std::size_t> bytes{0};
};

struct RemovalRecorder : InterfaceEventHandler {
    void OnDeviceArrival(std::uint64_t) override { ++arrivals; }
    void OnDeviceRemoval(std::uint64_t number) override { removed = number; }
    std::atomic<int> arrivals{0};
    std::atomic<std::uint64_t> removed{0};
};

/// The camera system as a program has it, over an emulator's description file that the test edits. The suite
/// runs in a network namespace of its own, so no other camera is seen.
class EmulatorFixture : public ::testing::Test {
protected:
    EmulatorFixture();
    ~EmulatorFixture() override;

    /// One interface, "GigE-0"; `name` is a section, the text its keys.
    void AddInterface(const std::string& name = "GigE-0", const std::string& keys = "");
    /// A camera of 320 x 240 pixels at 50 images a second on GigE-0, unless `keys` say something else.
    void AddCamera(const std::string& serial, const std::string& keys = "");
    /// Sets one key of a camera's section.
    void Change(const std::string& serial, const std::string& key, const std::string& value);
    void Unplug(const std::string& serial);
    void RemoveInterface(const std::string& name);
    /// Makes the file again from the sections, in one step.
    void Write();
    /// A file beside the description file; gives its path.
    std::string WriteFile(const std::string& name, const std::string& content);

    void Start() { m_system = System::GetInstance(); }
    /// The camera whose own serial text is `serial`; waits for it.
    CameraPtr Find(const std::string& serial);

    SystemPtr m_system;

private:
    std::string m_folder;
    std::map<std::string, std::map<std::string, std::string>> m_sections;
};

} // namespace Norvane::Test
