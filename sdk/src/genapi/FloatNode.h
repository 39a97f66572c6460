#pragma once

#include "genapi/NumberSource.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace Norvane::GenApi {

/// Base of the kinds with a float interface: caching, verification and texts. A kind gives the value and the
/// range.
class FloatBase : public ValueNode<IFloat> {
public:
    FloatBase(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIFloat) {}

    void SetValue(double value, bool verify) override;
    double GetValue(bool verify, bool ignoreCache) override;
    double GetMin() override;
    double GetMax() override;
    bool HasInc() override;
    EIncMode GetIncMode() override;
    double GetInc() override;
    double_autovector_t GetListOfValidValues(bool bounded) override;
    ERepresentation GetRepresentation() override;
    gcstring GetUnit() override;
    EDisplayNotation GetDisplayNotation() override;
    std::int64_t GetDisplayPrecision() override;
    void ImposeMin(double value) override;
    void ImposeMax(double value) override;

    double ReadFloat(bool fresh) final;
    std::int64_t ReadInteger(bool fresh) override;
    void WriteInteger(std::int64_t value) override { WriteFloat(static_cast<double>(value)); }
    double MinFloat() final;
    double MaxFloat() final;
    std::optional<double> IncFloat() final;
    std::int64_t MinInteger() override;
    std::int64_t MaxInteger() override;
    bool IsFloat() const override { return true; }
    ERepresentation Representation() override;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;

protected:
    static constexpr auto kLowest = std::numeric_limits<double>::lowest();
    static constexpr auto kHighest = std::numeric_limits<double>::max();

    virtual double ComputeFloat(bool fresh) = 0;
    virtual double ComputeMin() { return kLowest; }
    virtual double ComputeMax() { return kHighest; }
    /// NaN when there is no increment.
    virtual double ComputeInc() { return std::numeric_limits<double>::quiet_NaN(); }

    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;
    void Verify(double value);

private:
    double Cache(double& place, Cached flag, double (FloatBase::*compute)());
    double_autovector_t ValidValues();
    std::string WithUnit(double value);

    Published<double> m_value;
    double m_min = 0;
    double m_max = 0;
    double m_inc = 0;
    double m_imposedMin = kLowest;
    double m_imposedMax = kHighest;
};

/// Float: gathers value, range and increment, or chooses among values by an index.
class FloatNode final : public FloatBase {
public:
    using FloatBase::FloatBase;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;
    void WriteFloat(double value) override;
    ERepresentation Representation() override;
    std::string Unit() override;

protected:
    EAccessMode KindPresence() override { return m_source.Presence(); }
    bool KindLocked() override { return m_source.Locked(); }
    double ComputeFloat(bool fresh) override { return m_source.Read(fresh); }
    double ComputeMin() override;
    double ComputeMax() override;
    double ComputeInc() override;

private:
    struct Limit {
        Node* node = nullptr;
        double constant = 0;
        bool given = false;
    };

    NumberSource<double> m_source;
    Limit m_minimum;
    Limit m_maximum;
    Limit m_increment;
};

} // namespace Norvane::GenApi
