// Any bytes as a camera description: every node is asked for all it can tell, written and read again.
#include "norvane/Log.h"
#include "norvane/genapi/GenApi.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <cstddef>
#include <cstdint>

using namespace Norvane;
using namespace Norvane::GenApi;

namespace {

template <class Operation>
void Try(Operation&& operation) {
    try {
        operation();
    } catch (const Exception&) {
        // Refusing is what broken input deserves.
    }
}

/// Registers of a size that keeps a description from asking for all memory.
class SmallPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        Check(length);
        m_memory->Read(buffer, address, length);
    }
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        Check(length);
        m_memory->Write(buffer, address, length);
    }

private:
    static void Check(std::int64_t length) {
        if (length > 4096) {
            throw Exception(Error::InvalidAddress, "too long");
        }
    }
    std::shared_ptr<IPort> m_memory = CreateMemoryPort();
};

void Use(INode* node) {
    Try([&] { node->GetAccessMode(); });
    Try([&] { node->GetDescription(); });
    Try([&] { node->GetPollingTime(); });
    Try([&] { node->GetCachingMode(); });
    Try([&] { node->GetAlias(); });
    node_vector found;
    for (const ELinkType type : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                                 ctDependingNodes, ctTerminalNodes}) {
        Try([&] { node->GetChildren(found, type); });
    }
    if (const CValuePtr value = node) {
        Try([&] { value->ToString(true); });
        Try([&] { value->FromString("1"); });
    }
    if (const CIntegerPtr integer = node) {
        Try([&] { integer->GetMin(); });
        Try([&] { integer->GetMax(); });
        Try([&] { integer->GetInc(); });
        Try([&] { integer->GetUnit(); });
        Try([&] { integer->GetRepresentation(); });
        Try([&] { integer->GetListOfValidValues(); });
        Try([&] { integer->SetValue(integer->GetMax(), false); });
    }
    if (const CFloatPtr number = node) {
        Try([&] { number->GetInc(); });
        Try([&] { number->GetMax(); });
        Try([&] { number->GetUnit(); });
        Try([&] { number->GetRepresentation(); });
        Try([&] { number->GetDisplayPrecision(); });
        Try([&] { number->GetListOfValidValues(); });
        Try([&] { number->SetValue(number->GetMin(), false); });
    }
    if (const CEnumerationPtr enumeration = node) {
        Try([&] { enumeration->GetEntries(found); });
        Try([&] { enumeration->GetCurrentEntry(); });
    }
    if (const CCommandPtr command = node) {
        Try([&] { command->Execute(); });
        Try([&] { command->IsDone(); });
    }
    if (const CRegisterPtr reg = node) {
        Try([&] { reg->GetAddress(); });
        Try([&] { reg->GetLength(); });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SetLogSink([](LogLevel, const char*) {});
    Try([&] {
        const auto map =
            CreateNodeMap({reinterpret_cast<const char*>(data), size}, std::make_shared<SmallPort>());
        node_vector nodes;
        map->GetNodes(nodes);
        for (int round = 0; round < 2; ++round) {
            for (INode* node : nodes) {
                Use(node);
            }
            AttachChunks(*map, {{1, {data, size}}});
            map->Poll(1000);
        }
    });
    return 0;
}
