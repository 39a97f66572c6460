#include "genapi/Tags.h"

#include <array>

namespace Norvane::GenApi {

namespace {

struct Entry {
    std::string_view name;
    Tag tag = Tag::Unknown;
};

constexpr Entry kNames[] = {
#define NORVANE_TAG(name)                                                                                    \
    { #name, Tag::name }
    NORVANE_TAG(Node),
    NORVANE_TAG(Category),
    NORVANE_TAG(Integer),
    NORVANE_TAG(IntReg),
    NORVANE_TAG(MaskedIntReg),
    NORVANE_TAG(Boolean),
    NORVANE_TAG(Command),
    NORVANE_TAG(Enumeration),
    NORVANE_TAG(EnumEntry),
    NORVANE_TAG(Float),
    NORVANE_TAG(FloatReg),
    NORVANE_TAG(String),
    NORVANE_TAG(StringReg),
    NORVANE_TAG(Register),
    NORVANE_TAG(Converter),
    NORVANE_TAG(IntConverter),
    NORVANE_TAG(SwissKnife),
    NORVANE_TAG(IntSwissKnife),
    NORVANE_TAG(Port),
    NORVANE_TAG(ConfRom),
    NORVANE_TAG(TextDesc),
    NORVANE_TAG(IntKey),
    NORVANE_TAG(AdvFeatureLock),
    NORVANE_TAG(SmartFeature),
    NORVANE_TAG(Group),
    NORVANE_TAG(StructReg),
    NORVANE_TAG(StructEntry),
    NORVANE_TAG(Extension),
    NORVANE_TAG(ToolTip),
    NORVANE_TAG(Description),
    NORVANE_TAG(DisplayName),
    NORVANE_TAG(Visibility),
    NORVANE_TAG(DocuURL),
    NORVANE_TAG(IsDeprecated),
    NORVANE_TAG(EventID),
    NORVANE_TAG(pIsImplemented),
    NORVANE_TAG(pIsAvailable),
    NORVANE_TAG(pIsLocked),
    NORVANE_TAG(pBlockPolling),
    NORVANE_TAG(ImposedAccessMode),
    NORVANE_TAG(ImposedVisibility),
    NORVANE_TAG(pError),
    NORVANE_TAG(pAlias),
    NORVANE_TAG(pCastAlias),
    NORVANE_TAG(pInvalidator),
    NORVANE_TAG(Streamable),
    NORVANE_TAG(Value),
    NORVANE_TAG(pValue),
    NORVANE_TAG(pValueCopy),
    NORVANE_TAG(pIndex),
    NORVANE_TAG(ValueIndexed),
    NORVANE_TAG(pValueIndexed),
    NORVANE_TAG(ValueDefault),
    NORVANE_TAG(pValueDefault),
    NORVANE_TAG(Min),
    NORVANE_TAG(pMin),
    NORVANE_TAG(Max),
    NORVANE_TAG(pMax),
    NORVANE_TAG(Inc),
    NORVANE_TAG(pInc),
    NORVANE_TAG(Unit),
    NORVANE_TAG(Representation),
    NORVANE_TAG(ValidValueSet),
    NORVANE_TAG(pSelected),
    NORVANE_TAG(DisplayNotation),
    NORVANE_TAG(DisplayPrecision),
    NORVANE_TAG(Address),
    NORVANE_TAG(pAddress),
    NORVANE_TAG(Length),
    NORVANE_TAG(pLength),
    NORVANE_TAG(AccessMode),
    NORVANE_TAG(pPort),
    NORVANE_TAG(Cachable),
    NORVANE_TAG(PollingTime),
    NORVANE_TAG(Sign),
    NORVANE_TAG(Endianess),
    NORVANE_TAG(Bit),
    NORVANE_TAG(LSB),
    NORVANE_TAG(MSB),
    NORVANE_TAG(OnValue),
    NORVANE_TAG(OffValue),
    NORVANE_TAG(CommandValue),
    NORVANE_TAG(pCommandValue),
    NORVANE_TAG(pVariable),
    NORVANE_TAG(Constant),
    NORVANE_TAG(Expression),
    NORVANE_TAG(Formula),
    NORVANE_TAG(FormulaTo),
    NORVANE_TAG(FormulaFrom),
    NORVANE_TAG(Slope),
    NORVANE_TAG(IsLinear),
    NORVANE_TAG(NumericValue),
    NORVANE_TAG(Symbolic),
    NORVANE_TAG(IsSelfClearing),
    NORVANE_TAG(pFeature),
    NORVANE_TAG(ChunkID),
    NORVANE_TAG(pChunkID),
    NORVANE_TAG(SwapEndianess),
    NORVANE_TAG(CacheChunkData),
    NORVANE_TAG(FeatureID),
    NORVANE_TAG(Timeout),
    NORVANE_TAG(Key),
    NORVANE_TAG(p1212Parser),
    NORVANE_TAG(pTerminal),
    NORVANE_TAG(pDependent),
#undef NORVANE_TAG
};

constexpr std::size_t kSlots = 1024;

constexpr std::size_t SlotOf(std::string_view name) noexcept {
    if (name.empty()) {
        return 0;
    }
    // Length, ends and middle tell almost all names apart.
    const auto at = [name](std::size_t index) {
        return std::uint32_t{static_cast<unsigned char>(name[index])};
    };
    const auto hash = static_cast<std::uint32_t>(name.size()) * 0x9E3779B1u + at(0) * 0x85EBCA6Bu +
                      at(name.size() / 2) * 0xC2B2AE35u + at(name.size() - 1) * 0x27D4EB2Fu +
                      at(name.size() / 4) * 0x165667B1u;
    return (hash >> 15) % kSlots;
}

/// Open addressing with gaps: a look-up is one hash and mostly one comparison.
constexpr auto kTable = [] {
    std::array<Entry, kSlots> table{};
    for (const auto& entry : kNames) {
        auto slot = SlotOf(entry.name);
        while (!table[slot].name.empty()) {
            slot = (slot + 1) % kSlots;
        }
        table[slot] = entry;
    }
    return table;
}();

} // namespace

Tag TagOf(std::string_view name) noexcept {
    for (auto slot = SlotOf(name); !kTable[slot].name.empty(); slot = (slot + 1) % kSlots) {
        if (kTable[slot].name == name) {
            return kTable[slot].tag;
        }
    }
    return Tag::Unknown;
}

} // namespace Norvane::GenApi
