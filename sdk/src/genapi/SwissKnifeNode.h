#pragma once

#include "genapi/FloatNode.h"
#include "genapi/FormulaBinding.h"
#include "genapi/IntegerNode.h"

namespace Norvane::GenApi {

/// IntSwissKnife: a formula over other nodes, read only.
class IntSwissKnifeNode final : public IntegerBase {
public:
    using IntegerBase::IntegerBase;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;

protected:
    EAccessMode KindPresence() override { return m_binding.Readable() ? RO : NA; }
    std::int64_t ComputeInteger(bool fresh) override;

private:
    FormulaBinding m_binding;
    Formula m_formula;
};

/// SwissKnife: the same in floating point.
class SwissKnifeNode final : public FloatBase {
public:
    using FloatBase::FloatBase;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void CollectEdges(EdgeSink& edges) override;

protected:
    EAccessMode KindPresence() override { return m_binding.Readable() ? RO : NA; }
    double ComputeFloat(bool fresh) override;

private:
    FormulaBinding m_binding;
    Formula m_formula;
};

} // namespace Norvane::GenApi
