#include "Commands.h"

#include "Cameras.h"
#include "Failure.h"
#include "FeatureReport.h"
#include "JsonWriter.h"
#include "ReportPrinter.h"
#include "Snap.h"
#include "check/Check.h"

#include "norvane/genapi/NodeMapFactory.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

using namespace Norvane::GenApi;

namespace {

void requireOperands(const Arguments& arguments, std::size_t count) {
    if (arguments.operands.size() != count) {
        std::string usage = helpText(arguments.command);
        usage.resize(usage.find('\n'));
        throw Failure(kUsage, arguments.operands.size() < count ? "too few arguments. " + usage
                                                                : "too many arguments. " + usage);
    }
}

std::string line(const JsonWriter& json) {
    return json.text() + "\n";
}

// --- list

std::string listAsJson(const std::vector<InterfaceSummary>& interfaces) {
    JsonWriter json;
    json.beginObject();
    json.key("interfaces");
    json.beginArray();
    for (const InterfaceSummary& interface : interfaces) {
        json.beginObject();
        json.member("id", interface.id);
        json.member("name", interface.name);
        json.member("type", interface.type);
        json.member("usable", interface.usable);
        json.key("cameras");
        json.beginArray();
        for (const CameraSummary& camera : interface.cameras) {
            json.beginObject();
            json.member("number", static_cast<std::int64_t>(std::stoll(camera.number)));
            json.member("serial", camera.serial);
            json.member("model", camera.model);
            json.member("vendor", camera.vendor);
            json.member("userName", camera.userName);
            json.member("type", camera.type);
            json.member("access", camera.access);
            json.member("address", camera.address);
            json.member("usable", camera.usable);
            json.endObject();
        }
        json.endArray();
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return line(json);
}

std::string listAsText(const std::vector<InterfaceSummary>& interfaces) {
    std::ostringstream text;
    for (const InterfaceSummary& interface : interfaces) {
        text << interface.id << "  " << interface.type << "  " << interface.name
             << (interface.usable ? "" : "  (not usable)") << '\n';
        for (const CameraSummary& camera : interface.cameras) {
            text << "  " << camera.number << "  " << camera.vendor << ' ' << camera.model;
            if (camera.serial != camera.number) {
                text << "  serial " << camera.serial;
            }
            text << "  " << camera.access << (camera.address.empty() ? "" : "  " + camera.address)
                 << (camera.usable ? "" : "  (not usable)") << '\n';
        }
    }
    return text.str();
}

std::string list(const Arguments& arguments) {
    requireOperands(arguments, 0);
    const Norvane::SystemPtr system = Norvane::System::GetInstance();
    const auto interfaces = summarizeInterfaces(*system);
    return arguments.json ? listAsJson(interfaces) : listAsText(interfaces);
}

// --- features of a device

/// The device that a command means, kept alive and open while it works.
class Device {
public:
    explicit Device(const Arguments& arguments)
        : m_system(Norvane::System::GetInstance()), m_wanted(arguments.map),
          m_name(arguments.operands.at(0)) {
        if (m_wanted == MapKind::Interface) {
            m_interface = findInterface(*m_system, m_name);
            return;
        }
        m_camera = findCamera(*m_system, m_name);
        // The transport layer's information needs no connection to the camera.
        if (m_wanted == MapKind::Any || m_wanted == MapKind::Device) {
            m_camera->Init();
        }
    }
    ~Device() {
        if (m_camera && m_camera->IsInitialized()) {
            m_camera->DeInit();
        }
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    Norvane::ICameraBase& camera() const { return *m_camera; }

    /// The maps to look in, in order; the first is the one that "features" prints.
    std::vector<INodeMap*> maps() const {
        switch (m_wanted) {
        case MapKind::Interface:
            return {&m_interface->GetTLNodeMap()};
        case MapKind::TransportLayer:
            return {&m_camera->GetTLDeviceNodeMap()};
        case MapKind::Stream:
            return {&m_camera->GetTLStreamNodeMap()};
        case MapKind::Device:
            return {&m_camera->GetNodeMap()};
        case MapKind::Any:
            break;
        }
        return {&m_camera->GetNodeMap(), &m_camera->GetTLDeviceNodeMap(), &m_camera->GetTLStreamNodeMap()};
    }

    INode& feature(const std::string& name) const {
        INode* present = nullptr;
        for (INodeMap* map : maps()) {
            INode* node = map->GetNode(name);
            if (node && IsImplemented(node->GetAccessMode())) {
                return *node;
            }
            present = present ? present : node;
        }
        throw Failure(kNoFeature, m_name + " has no feature \"" + name + "\"" +
                                      (present ? " (described, but not implemented)" : ""));
    }

    /// Why a feature that is there cannot be used.
    Failure refusal(INode& node, const char* wish) const {
        std::string text =
            node.GetName().str() + " cannot be " + wish + " now (" + accessText(node.GetAccessMode()) + ")";
        if (m_camera && m_camera->IsInitialized() && m_camera->GetAccessMode() == RO) {
            text += "; another program controls the camera";
        }
        return {kNotAllowed, text};
    }

private:
    Norvane::SystemPtr m_system;
    MapKind m_wanted;
    std::string m_name;
    Norvane::CameraPtr m_camera;
    Norvane::InterfacePtr m_interface;
};

std::string featuresOutput(const std::vector<FeatureRecord>& records, bool json) {
    if (!json) {
        return featureTable(records);
    }
    JsonWriter writer;
    writer.beginArray();
    for (const FeatureRecord& record : records) {
        writeJson(writer, record);
    }
    writer.endArray();
    return line(writer);
}

std::string valueOutput(const FeatureRecord& record, bool json) {
    if (!json) {
        return record.valueText + "\n";
    }
    JsonWriter writer;
    writer.beginObject();
    writer.member("name", record.name);
    writer.member("type", typeText(record.type));
    writer.member("access", accessText(record.access));
    writer.key("value");
    writeJson(writer, record.value);
    writer.member("text", record.valueText);
    if (record.entryValue) {
        writer.member("entryValue", *record.entryValue);
    }
    if (!record.unit.empty()) {
        writer.member("unit", record.unit);
    }
    writer.endObject();
    return line(writer);
}

std::string features(const Arguments& arguments) {
    requireOperands(arguments, 1);
    const Device device(arguments);
    std::vector<FeatureRecord> records = readFeatures(*device.maps().front());
    std::erase_if(records, [](const FeatureRecord& record) { return record.access == NI; });
    return featuresOutput(records, arguments.json);
}

std::string get(const Arguments& arguments) {
    requireOperands(arguments, 2);
    const Device device(arguments);
    INode& node = device.feature(arguments.operands[1]);
    if (const EInterfaceType type = node.GetPrincipalInterfaceType();
        type == intfICategory || type == intfIEnumEntry || type == intfIPort || type == intfICommand) {
        throw Failure(kNotAllowed, node.GetName().str() + " has no value to read");
    }
    if (!IsReadable(node.GetAccessMode())) {
        throw device.refusal(node, "read");
    }
    return valueOutput(readValue(node), arguments.json);
}

std::string set(const Arguments& arguments) {
    requireOperands(arguments, 3);
    const Device device(arguments);
    INode& node = device.feature(arguments.operands[1]);
    const EInterfaceType type = node.GetPrincipalInterfaceType();
    if (type == intfICommand) {
        throw Failure(kNotAllowed, node.GetName().str() + " is a command; use \"norvane execute\"");
    }
    if (type == intfICategory || !CValuePtr(&node).IsValid()) {
        throw Failure(kNotAllowed, node.GetName().str() + " has no value to write");
    }
    if (!IsWritable(node.GetAccessMode())) {
        throw device.refusal(node, "written");
    }
    CValuePtr(&node)->FromString(arguments.operands[2], true);
    if (!IsReadable(node.GetAccessMode())) {
        return arguments.json ? "{}\n" : "";
    }
    return valueOutput(readValue(node), arguments.json);
}

std::string execute(const Arguments& arguments) {
    requireOperands(arguments, 2);
    const Device device(arguments);
    INode& node = device.feature(arguments.operands[1]);
    CCommandPtr command(&node);
    if (!command.IsValid()) {
        throw Failure(kNotAllowed, node.GetName().str() + " is no command; use \"norvane set\"");
    }
    if (!IsWritable(node.GetAccessMode())) {
        throw device.refusal(node, "executed");
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(arguments.timeoutMs);
    command->Execute(true);
    while (!command->IsDone()) {
        if (std::chrono::steady_clock::now() >= end) {
            throw Failure(kFailed, node.GetName().str() + " was not done after " +
                                       std::to_string(arguments.timeoutMs) + " ms");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return arguments.json ? "{\n  \"done\": true\n}\n" : "";
}

std::string takeImage(const Arguments& arguments) {
    requireOperands(arguments, 2);
    const std::string& fileName = arguments.operands[1];
    const Device device(arguments);
    const SnapResult result = snap(device.camera(), fileName, arguments.timeoutMs);
    if (!arguments.json) {
        return fileName + ": " + std::to_string(result.width) + " x " + std::to_string(result.height) + " " +
               result.pixelFormat + "\n";
    }
    JsonWriter json;
    json.beginObject();
    json.member("file", fileName);
    json.member("width", static_cast<std::int64_t>(result.width));
    json.member("height", static_cast<std::int64_t>(result.height));
    json.member("pixelFormat", result.pixelFormat);
    json.member("frameId", static_cast<std::int64_t>(result.frameId));
    json.endObject();
    return line(json);
}

// --- descriptions

std::string fileContent(const std::string& name) {
    // Opening a directory succeeds, and reading it ends at once.
    std::error_code ignored;
    if (std::filesystem::is_directory(name, ignored)) {
        throw Failure(kFailed, name + ": " + std::strerror(EISDIR));
    }
    std::ifstream file(name, std::ios::binary);
    std::ostringstream content;
    // An empty file leaves the stream failed, which is no error of reading.
    if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(content << file.rdbuf()))) {
        throw Failure(kFailed, name + ": " + std::strerror(errno));
    }
    return content.str();
}

std::string describe(const Arguments& arguments) {
    requireOperands(arguments, 1);
    const std::string& name = arguments.operands[0];
    NodeMapOptions options;
    options.deviceName = name;
    const auto map = CreateNodeMap(fileContent(name), CreateMemoryPort(), options);
    return featuresOutput(readFeatures(*map), arguments.json);
}

// --- this host

CommandResult check(const Arguments& arguments) {
    requireOperands(arguments, 0);
    const Findings findings = checkMachine();
    return {arguments.json ? checkAsJson(findings) : checkAsText(findings),
            limits(findings) ? kLimited : kSuccess};
}

} // namespace

CommandResult runCommand(const Arguments& arguments) {
    if (arguments.version) {
        return {"norvane " NORVANE_TOOL_VERSION "\n"};
    }
    if (arguments.help) {
        return {helpText(arguments.command)};
    }
    if (arguments.command.empty()) {
        throw Failure(kUsage, "no command given; see norvane --help");
    }
    if (arguments.command == "check") {
        return check(arguments);
    }
    static const std::map<std::string, std::string (*)(const Arguments&)> kCommands = {
        {"list", &list},       {"features", &features}, {"get", &get},        {"set", &set},
        {"execute", &execute}, {"describe", &describe}, {"snap", &takeImage},
    };
    const auto command = kCommands.find(arguments.command);
    if (command == kCommands.end()) {
        throw Failure(kUsage, "unknown command \"" + arguments.command + "\"; see norvane --help");
    }
    return {command->second(arguments)};
}

int exitCodeOf(const Norvane::Exception& error) {
    switch (error.GetError()) {
    case Norvane::Error::GenApiAccess:
    case Norvane::Error::GenApiOutOfRange:
        return kNotAllowed;
    default:
        return kFailed;
    }
}
