#include "EmulatorFixture.h"

#include "base/Mutex.h"
#include "norvane/Log.h"

#include <fstream>

namespace Norvane::Transport::Emulator {
namespace {

Mutex g_mutex;
std::vector<std::string> g_complaints GUARDED_BY(g_mutex);

void Collect(LogLevel level, const char* message) {
    if (level >= LogLevel::Warning) {
        const MutexLock lock(g_mutex);
        g_complaints.emplace_back(message);
    }
}

} // namespace

EmulatorFixture::EmulatorFixture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "emulator-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    SetLogSink(&Collect);
    const MutexLock lock(g_mutex);
    g_complaints.clear();
}

EmulatorFixture::~EmulatorFixture() {
    m_transport.reset();
    SetLogSink(nullptr);
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
    EXPECT_FALSE(error) << error.message();
}

void EmulatorFixture::Write(const std::string& text) {
    std::ofstream(Path("new"), std::ios::binary) << text;
    std::filesystem::rename(Path("new"), Path("emulator.ini"));
}

EmulatorTransport& EmulatorFixture::Start(const std::string& text) {
    Write(text);
    m_transport = std::make_unique<EmulatorTransport>(Path("emulator.ini"));
    return *m_transport;
}

std::shared_ptr<IDevice> EmulatorFixture::Open(const std::string& serial) {
    return m_transport->Open(serial);
}

std::shared_ptr<GenApi::INodeMap> EmulatorFixture::Map(const std::shared_ptr<IDevice>& device,
                                                       GenApi::CacheAudit* audit) {
    return GenApi::CreateNodeMap(device->Description(), device, {"camera", {}, nullptr, audit});
}

std::optional<DeviceRecord> EmulatorFixture::Find(const std::string& serial) {
    for (const DeviceRecord& record : m_transport->Scan().devices) {
        if (record.serial == serial) {
            return record;
        }
    }
    return std::nullopt;
}

std::vector<std::string> EmulatorFixture::Complaints() {
    const MutexLock lock(g_mutex);
    return g_complaints;
}

double Real(GenApi::INodeMap& map, const char* name) {
    return GenApi::CFloatPtr(map.GetNode(name))->GetValue();
}

void Execute(GenApi::INodeMap& map, const char* name) {
    GenApi::CCommandPtr(map.GetNode(name))->Execute();
}

GenApi::EAccessMode AccessOf(GenApi::INodeMap& map, const char* name) {
    GenApi::INode* node = map.GetNode(name);
    return node ? node->GetAccessMode() : GenApi::NI;
}

} // namespace Norvane::Transport::Emulator
