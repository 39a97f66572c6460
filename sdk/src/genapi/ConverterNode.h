#pragma once

#include "genapi/FloatNode.h"
#include "genapi/FormulaBinding.h"
#include "genapi/IntegerNode.h"

namespace Norvane::GenApi {

/// How a converter's value follows the value behind it.
enum class Slope : std::uint8_t { Increasing, Decreasing, Varying, Automatic };

/// The part that both converters share: "FormulaFrom" makes the converter's value of the one behind it, which
/// it calls TO; "FormulaTo" makes the value to be written there of the converter's, which it calls FROM.
class ConverterCore {
public:
    bool LoadElement(Node& owner, Tag tag, pugi::xml_node element, Loader& loader);
    void FinishLoading(Node& owner, Loader& loader, Formula::Kind kind);
    void CollectEdges(Node& owner, EdgeSink& edges) const;
    EAccessMode Presence() const;
    bool Locked() const { return m_value->Locked(); }

    double FromFloat(double behind, bool fresh) const;
    double ToFloat(double own) const;
    std::int64_t FromInteger(std::int64_t behind, bool fresh) const;
    std::int64_t ToInteger(std::int64_t own) const;
    Node& Behind() const { return *m_value; }
    Slope GetSlope() const { return m_slope; }
    bool IsLinear() const { return m_linear; }

private:
    FormulaBinding m_binding;
    Formula m_from;
    Formula m_to;
    Node* m_value = nullptr;
    std::string_view m_fromText;
    std::string_view m_toText;
    Slope m_slope = Slope::Automatic;
    bool m_linear = false;
};

/// IntConverter: a formula in both directions between this integer and the node behind it.
class IntConverterNode final : public IntegerBase {
public:
    using IntegerBase::IntegerBase;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override {
        m_core.FinishLoading(*this, loader, Formula::Kind::Integer);
    }
    void CollectEdges(EdgeSink& edges) override;
    void WriteInteger(std::int64_t value) override;

protected:
    EAccessMode KindPresence() override { return m_core.Presence(); }
    bool KindLocked() override { return m_core.Locked(); }
    std::int64_t ComputeInteger(bool fresh) override;
    std::int64_t ComputeMin() override { return Limit(true); }
    std::int64_t ComputeMax() override { return Limit(false); }

private:
    std::int64_t Limit(bool lower);

    ConverterCore m_core;
};

/// Converter: the same in floating point.
class ConverterNode final : public FloatBase {
public:
    using FloatBase::FloatBase;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override { m_core.FinishLoading(*this, loader, Formula::Kind::Float); }
    void CollectEdges(EdgeSink& edges) override;
    void WriteFloat(double value) override;

protected:
    EAccessMode KindPresence() override { return m_core.Presence(); }
    bool KindLocked() override { return m_core.Locked(); }
    double ComputeFloat(bool fresh) override;
    double ComputeMin() override { return Limit(true); }
    double ComputeMax() override { return Limit(false); }
    double ComputeInc() override;

private:
    double Limit(bool lower);

    ConverterCore m_core;
};

} // namespace Norvane::GenApi
