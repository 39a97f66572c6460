#pragma once

#include "genapi/FloatNode.h"
#include "genapi/IntegerNode.h"
#include "genapi/RegisterCore.h"
#include "genapi/StringNode.h"

namespace Norvane::GenApi {

/// Gives a kind the register behind it and the IRegister interface.
template <class Base>
class RegisterOf : public Base, public IRegister {
public:
    using Base::Base;

    void Set(const std::uint8_t* data, std::int64_t length, bool verify) override;
    void Get(std::uint8_t* data, std::int64_t length, bool verify, bool ignoreCache) override;
    std::int64_t GetAddress() override;
    std::int64_t GetLength() override;

    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override {
        return m_register.LoadElement(tag, element, loader) || Base::LoadElement(tag, element, loader);
    }
    void FinishLoading(Loader& loader) override { m_register.FinishLoading(loader); }
    void CollectEdges(EdgeSink& edges) override {
        Node::CollectEdges(edges);
        m_register.CollectEdges(edges);
    }
    void Forget(Facet facet, bool keepBytes) override {
        Node::Forget(facet, keepBytes);
        if (facet == Facet::Value) {
            m_register.Forget(keepBytes);
        }
    }
    ECachingMode OwnCachingMode() const override { return m_register.CachingMode(); }
    RegisterCore* Registers() override { return &m_register; }

protected:
    EAccessMode KindPresence() override { return m_register.Presence(); }

    RegisterCore m_register{*this};
};

/// Which bytes and bits of a register are a number.
struct NumberLayout {
    bool bigEndian = false;
    bool isSigned = false;
    bool masked = false;
    std::int64_t lsb =
        0; ///< as the description counts: from the most significant bit of a big-endian register
    std::int64_t msb = 0;
};

/// IntReg, and MaskedIntReg and StructEntry, which are some bits of the register.
class IntRegNode final : public RegisterOf<IntegerBase> {
public:
    IntRegNode(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index, bool masked)
        : RegisterOf(map, xml, name, index) {
        m_layout.masked = masked;
    }
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void WriteInteger(std::int64_t value) override;
    void RequireRoom(std::int64_t value) override;

protected:
    std::int64_t ComputeInteger(bool fresh) override;
    std::int64_t ComputeMin() override;
    std::int64_t ComputeMax() override;

private:
    struct Bits {
        int shift;
        int count;
    };
    Bits Field(std::int64_t length) const;

    NumberLayout m_layout;
    bool m_hasBits = false;
};

class FloatRegNode final : public RegisterOf<FloatBase> {
public:
    using RegisterOf::RegisterOf;
    bool LoadElement(Tag tag, pugi::xml_node element, Loader& loader) override;
    void FinishLoading(Loader& loader) override;
    void WriteFloat(double value) override;

protected:
    double ComputeFloat(bool fresh) override;
    double ComputeMin() override;
    double ComputeMax() override;

private:
    bool m_bigEndian = false;
};

class StringRegNode final : public RegisterOf<StringBase> {
public:
    using RegisterOf::RegisterOf;
    void WriteText(const std::string& value) override;
    std::int64_t MaxLength() override { return m_register.Length(); }

protected:
    std::string ComputeText(bool fresh) override;
};

/// IRegister reaches IValue on its own way; this gives it a name to derive from.
class IRawValue : public virtual IValue {};

class RawBase : public ValueNode<IRawValue> {
public:
    RawBase(NodeMap& map, pugi::xml_node xml, std::string_view name, std::uint32_t index)
        : ValueNode(map, xml, name, index, intfIRegister) {}
};

/// Register: bytes without a meaning of their own; its text is hexadecimal.
class RawRegisterNode final : public RegisterOf<RawBase> {
public:
    using RegisterOf::RegisterOf;
    std::string ReadText(bool fresh) override;
    void WriteText(const std::string& value) override;

protected:
    std::string ToText(bool verify, bool ignoreCache) override;
    void FromText(const std::string& text, bool verify) override;
};

} // namespace Norvane::GenApi
