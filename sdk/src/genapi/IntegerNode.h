#pragma once

#include "genapi/NumberSource.h"

#include <cstdint>
#include <limits>

namespace Norvane::GenApi {

/// Base of the kinds with an integer interface: caching, verification and texts. A kind gives the value and
/// the range.
class IntegerBase : public ValueNode<IInteger> {
public:
    IntegerBase(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIInteger) {}

    void SetValue(std::int64_t value, bool verify) override;
    std::int64_t GetValue(bool verify, bool ignoreCache) override;
    std::int64_t GetMin() override;
    std::int64_t GetMax() override;
    EIncMode GetIncMode() override;
    std::int64_t GetInc() override;
    int64_autovector_t GetListOfValidValues(bool bounded) override;
    ERepresentation GetRepresentation() override;
    gcstring GetUnit() override;
    void ImposeMin(std::int64_t value) override;
    void ImposeMax(std::int64_t value) override;

    std::int64_t ReadInteger(bool fresh) final;
    void WriteFloat(double value) override;
    std::int64_t MinInteger() final;
    std::int64_t MaxInteger() final;
    std::int64_t IncInteger() final;
    ERepresentation Representation() override;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;

protected:
    static constexpr auto kLowest = std::numeric_limits<std::int64_t>::min();
    static constexpr auto kHighest = std::numeric_limits<std::int64_t>::max();

    virtual std::int64_t ComputeInteger(bool fresh) = 0;
    virtual std::int64_t ComputeMin() { return kLowest; }
    virtual std::int64_t ComputeMax() { return kHighest; }
    virtual std::int64_t ComputeInc() { return 1; }

    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;
    void Verify(std::int64_t value);

private:
    std::int64_t Cache(std::int64_t& place, Cached flag, std::int64_t (IntegerBase::*compute)());
    int64_autovector_t ValidValues();
    std::string WithUnit(std::int64_t value);

    Published<std::int64_t> m_value;
    std::int64_t m_min = 0;
    std::int64_t m_max = 0;
    std::int64_t m_inc = 1;
    std::int64_t m_imposedMin = kLowest;
    std::int64_t m_imposedMax = kHighest;
};

/// Integer: gathers value, range and increment, or chooses among values by an index.
class IntegerNode final : public IntegerBase {
public:
    using IntegerBase::IntegerBase;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    void WriteInteger(std::int64_t value) override;
    void RequireRoom(std::int64_t value) override;
    ERepresentation Representation() override;
    std::string Unit() override;

protected:
    EAccessMode KindPresence() override { return m_source.Presence(); }
    bool KindLocked() override { return m_source.Locked(); }
    std::int64_t ComputeInteger(bool fresh) override { return m_source.Read(fresh); }
    std::int64_t ComputeMin() override;
    std::int64_t ComputeMax() override;
    std::int64_t ComputeInc() override;

private:
    struct Limit {
        Node* node = nullptr;
        std::int64_t constant = 0;
        bool given = false;
    };

    NumberSource<std::int64_t> m_source;
    Limit m_minimum;
    Limit m_maximum;
    Limit m_increment;
};

} // namespace Norvane::GenApi
