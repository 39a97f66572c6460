#pragma once

#include "../../system/Nodes.h"
#include "norvane/genapi/GenApi.h"
#include "norvane/genapi/NodeMapFactory.h"
#include "transport/emulator/EmulatorTransport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Norvane::Transport::Emulator {

/// A folder with a description file, the transport over it, and the library's log lines.
class EmulatorFixture : public testing::Test {
protected:
    EmulatorFixture();
    ~EmulatorFixture() override;

    /// Replaces the file as an editor does, by renaming another one.
    void Write(const std::string& text);
    EmulatorTransport& Start(const std::string& text);
    std::shared_ptr<IDevice> Open(const std::string& serial = "1");
    /// A node map over an opened camera, as the core builds it; `audit` may be null.
    std::shared_ptr<GenApi::INodeMap> Map(const std::shared_ptr<IDevice>& device,
                                          GenApi::CacheAudit* audit = nullptr);
    /// The record of a camera in a fresh scan; null when it is not there.
    std::optional<DeviceRecord> Find(const std::string& serial);

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }
    static std::vector<std::string> Complaints(); ///< warnings and errors since the test began

    std::unique_ptr<EmulatorTransport> m_transport;

private:
    std::filesystem::path m_folder;
};

using Test::Eventually;
using Test::NumberOf;
using Test::SetText;
using Test::TextOf;

double Real(GenApi::INodeMap& map, const char* name);
void Execute(GenApi::INodeMap& map, const char* name);
GenApi::EAccessMode AccessOf(GenApi::INodeMap& map, const char* name);

} // namespace Norvane::Transport::Emulator
