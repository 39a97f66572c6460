#include "FakeFileStore.h"

#include <algorithm>
#include <cstring>

using namespace Norvane;

namespace {

enum Address : std::int64_t {
    SelectorAddress = 0x00,
    OperationAddress = 0x04,
    OpenModeAddress = 0x08,
    ExecuteAddress = 0x0C,
    StatusAddress = 0x10,
    ResultAddress = 0x14,
    OffsetAddress = 0x18,
    LengthAddress = 0x1C,
    SizeAddress = 0x20,
    FlashAddress = 0x24,
    BufferAddress = 0x1000
};

std::string Register(const std::string& name, Address address, const std::string& access, bool cached) {
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>" + access + "</AccessMode><pPort>Device</pPort>" +
           (cached ? "" : "<Cachable>NoCache</Cachable>") +
           "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>";
}

std::string Number(const std::string& name, Address address, const std::string& access, bool cached) {
    return "<Integer Name=\"" + name + "\"><pValue>" + name + "Reg</pValue></Integer>" +
           Register(name + "Reg", address, access, cached);
}

std::string Choice(const std::string& name, Address address, const std::vector<std::string>& entries,
                   const std::string& access = "RW", bool cached = true) {
    std::string xml = "<Enumeration Name=\"" + name + "\">";
    for (std::size_t i = 0; i < entries.size(); ++i) {
        xml += "<EnumEntry Name=\"" + entries[i] + "\"><Value>" + std::to_string(i) + "</Value></EnumEntry>";
    }
    return xml + "<pValue>" + name + "Reg</pValue></Enumeration>" +
           Register(name + "Reg", address, access, cached);
}

} // namespace

std::shared_ptr<TestCamera> FakeFileStore::CameraWith(const std::shared_ptr<FakeFileStore>& store) {
    auto camera = std::make_shared<TestCamera>("", "", "");
    camera->deviceMap = makeMap(
        Choice("FileSelector", SelectorAddress, {"UserFile1", "UserFile2"}) +
            Choice("FileOperationSelector", OperationAddress, {"Open", "Close", "Read", "Write", "Delete"}) +
            Choice("FileOpenMode", OpenModeAddress, {"Read", "Write", "ReadWrite"}) +
            "<Command Name=\"FileOperationExecute\"><pValue>FileOperationExecuteReg</pValue>"
            "<CommandValue>1</CommandValue></Command>" +
            Register("FileOperationExecuteReg", ExecuteAddress, "WO", true) +
            Choice("FileOperationStatus", StatusAddress, {"Success", "Failure"}, "RO", false) +
            Number("FileOperationResult", ResultAddress, "RO", false) +
            Number("FileAccessOffset", OffsetAddress, "RW", false) +
            Number("FileAccessLength", LengthAddress, store->m_setup.lengthWritable ? "RW" : "RO", false) +
            Number("FileSize", SizeAddress, "RO", false) +
            "<Boolean Name=\"FileWriteToFlash\"><pValue>FileWriteToFlashReg</pValue></Boolean>" +
            Register("FileWriteToFlashReg", FlashAddress, "RW", true) +
            "<Register Name=\"FileAccessBuffer\"><Address>" + std::to_string(BufferAddress) +
            "</Address><Length>" + std::to_string(store->m_setup.bufferLength) +
            "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable></"
            "Register>",
        store);
    return camera;
}

void FakeFileStore::Read(void* buffer, std::int64_t address, std::int64_t length) {
    if (loseAt >= 0 && operations >= loseAt) {
        throw Exception(Error::Io, "the camera is gone");
    }
    if (address == BufferAddress) {
        std::memcpy(buffer, m_buffer.leftJustified(static_cast<int>(length), '\0').constData(),
                    static_cast<std::size_t>(length));
        return;
    }
    const std::map<std::int64_t, std::int64_t> values{
        {SelectorAddress, m_selected},       {OperationAddress, m_operation},
        {OpenModeAddress, m_openMode},       {StatusAddress, m_status},
        {ResultAddress, m_result},           {OffsetAddress, m_offset},
        {LengthAddress, accessLength()},     {SizeAddress, files[static_cast<int>(m_selected)].size()},
        {FlashAddress, writeToFlash ? 1 : 0}};
    const auto value = static_cast<std::uint32_t>(values.at(address));
    std::memcpy(buffer, &value, sizeof value);
}

void FakeFileStore::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    if (loseAt >= 0 && operations >= loseAt) {
        throw Exception(Error::Io, "the camera is gone");
    }
    if (address == BufferAddress) {
        m_buffer = QByteArray(static_cast<const char*>(buffer), static_cast<int>(length));
        bufferWrites.push_back(m_buffer);
        return;
    }
    std::uint32_t value = 0;
    std::memcpy(&value, buffer, sizeof value);
    switch (address) {
    case SelectorAddress:
        m_selected = value;
        break;
    case OperationAddress:
        m_operation = value;
        break;
    case OpenModeAddress:
        m_openMode = value;
        break;
    case OffsetAddress:
        m_offset = value;
        break;
    case LengthAddress:
        accessLength() = value;
        break;
    case FlashAddress:
        writeToFlash = value != 0;
        break;
    case ExecuteAddress:
        m_result = 0;
        m_status = execute() ? 0 : 1;
        ++operations;
        break;
    default:
        throw Exception(Error::InvalidAddress, "no register");
    }
}

std::int64_t& FakeFileStore::accessLength() {
    return m_accessLengths.try_emplace(m_setup.lengthPerOperation ? m_operation : 0, m_setup.accessLength)
        .first->second;
}

bool FakeFileStore::execute() {
    if (m_operation == failOperation && operations >= failFrom) {
        return false;
    }
    if (m_operation == Open) {
        open = true;
        m_openFile = static_cast<int>(m_selected);
        if (m_openMode == 1) {
            files[m_openFile].clear();
        }
        return true;
    }
    if (!open || m_openFile != m_selected) {
        return false;
    }
    QByteArray& file = files[m_openFile];
    const auto offset = static_cast<int>(m_offset);
    if (m_operation == Close) {
        open = false;
        return true;
    }
    if (m_operation == Read_) {
        m_buffer = file.mid(offset, static_cast<int>(std::min(accessLength(), m_setup.bufferLength)));
        m_result = m_buffer.size();
    } else {
        lengthOfLastWrite = accessLength();
        const auto count = static_cast<int>(std::min<std::int64_t>(accessLength(), m_buffer.size()));
        file.replace(offset, count, m_buffer.left(count));
        m_result = count;
    }
    if (m_setup.advancesOffset) {
        m_offset += m_result;
    }
    return true;
}
