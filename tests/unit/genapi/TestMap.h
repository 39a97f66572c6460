#pragma once

#include "norvane/Log.h"
#include "norvane/genapi/GenApi.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Norvane::GenApi {

/// An array of bytes that counts its accesses and fails on demand.
class CountingPort final : public IPort {
public:
    explicit CountingPort(std::size_t size = 4096) : bytes(size, 0) {}

    EAccessMode GetAccessMode() const override { return mode; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        ++reads;
        Check(address, length);
        std::memcpy(buffer, bytes.data() + address, static_cast<std::size_t>(length));
    }
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        ++writes;
        Check(address, length);
        std::memcpy(bytes.data() + address, buffer, static_cast<std::size_t>(length));
    }

    /// Sets a little-endian 32-bit register behind the engine's back.
    void Poke(std::size_t address, std::uint32_t value) { std::memcpy(bytes.data() + address, &value, 4); }
    std::uint32_t Peek(std::size_t address) const {
        std::uint32_t value;
        std::memcpy(&value, bytes.data() + address, 4);
        return value;
    }

    std::vector<std::uint8_t> bytes;
    EAccessMode mode = RW;
    int reads = 0;
    int writes = 0;
    bool failing = false;

private:
    void Check(std::int64_t address, std::int64_t length) const {
        if (failing) {
            throw Exception(Error::Timeout, "no answer");
        }
        if (address < 0 || length < 0 || address + length > static_cast<std::int64_t>(bytes.size())) {
            throw Exception(Error::InvalidAddress, "no register there");
        }
    }
};

/// The elements of a description with what every file has around them.
inline std::string Describe(const std::string& nodes) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Test\" VendorName=\"Test\" StandardNameSpace=\"None\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n"
           "<Category Name=\"Root\"/>\n<Port Name=\"Device\"/>\n" +
           nodes + "\n</RegisterDescription>\n";
}

/// A 4-byte little-endian register, with more elements on demand.
inline std::string Reg(const std::string& name, int address, const std::string& more = "") {
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more +
           "<Endianess>LittleEndian</Endianess></IntReg>\n";
}

/// Collects the library's log lines while it lives.
class LogLines {
public:
    LogLines() {
        Lines().clear();
        SetLogSink([](LogLevel, const char* message) {
            const std::lock_guard<std::mutex> lock(Guard());
            Lines().emplace_back(message);
        });
    }
    ~LogLines() { SetLogSink(nullptr); }

    /// How many lines hold all of the words.
    int Count(const std::vector<std::string>& words) const {
        const std::lock_guard<std::mutex> lock(Guard());
        int count = 0;
        for (const auto& line : Lines()) {
            bool all = true;
            for (const auto& word : words) {
                all = all && line.find(word) != std::string::npos;
            }
            count += all;
        }
        return count;
    }
    std::string All() const {
        std::string all;
        for (const auto& line : Lines()) {
            all += line + "\n";
        }
        return all;
    }

private:
    static std::vector<std::string>& Lines() {
        static std::vector<std::string> lines;
        return lines;
    }
    static std::mutex& Guard() {
        static std::mutex guard;
        return guard;
    }
};

/// A node map over a counting port.
class TestMap {
public:
    explicit TestMap(const std::string& nodes, NodeMapOptions options = {})
        : port(std::make_shared<CountingPort>()), map(CreateNodeMap(Describe(nodes), port, options)) {}

    template <class T>
    CPointer<T> Get(const std::string& name) const {
        CPointer<T> node = map->GetNode(name);
        if (!node.IsValid()) {
            ADD_FAILURE() << "There is no such node: " << name;
        }
        return node;
    }
    CIntegerPtr Int(const std::string& name) const { return Get<IInteger>(name); }
    CFloatPtr Float(const std::string& name) const { return Get<IFloat>(name); }
    CEnumerationPtr Enum(const std::string& name) const { return Get<IEnumeration>(name); }
    EAccessMode Access(const std::string& name) const { return Get<INode>(name)->GetAccessMode(); }

    std::shared_ptr<CountingPort> port;
    std::shared_ptr<INodeMap> map;
};

/// The text of the exception that `operation` throws; empty when it throws none.
template <class Operation>
std::string ErrorOf(Operation&& operation) {
    try {
        operation();
    } catch (const Exception& error) {
        return error.what();
    }
    return {};
}

} // namespace Norvane::GenApi
