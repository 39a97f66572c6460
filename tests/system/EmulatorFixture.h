#pragma once

#include "norvane/Norvane.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Norvane::Test {

/// Waits until `condition()` holds; false after ten seconds, which is far longer than anything takes.
bool Eventually(const std::function<bool()>& condition);

/// The error code that `action` throws, Success when it throws nothing.
Error ErrorOf(const std::function<void()>& action);

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

std::string TextOf(GenApi::INodeMap& map, const char* node);
std::int64_t NumberOf(GenApi::INodeMap& map, const char* node);
void SetText(GenApi::INodeMap& map, const char* node, const std::string& text);

} // namespace Norvane::Test
