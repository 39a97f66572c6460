#pragma once

#include "norvane/genapi/Enums.h"
#include "norvane/genapi/GCString.h"

#include <cstdint>
#include <vector>

/// The node interfaces of GenApi. A node implements INode and, by its kind, one or more value interfaces;
/// CPointer converts between them. All calls may come from any thread (each takes the node map's lock) and
/// may throw Norvane::Exception: (GenApiAccess) when the access mode forbids them, (GenApiOutOfRange) for a
/// value that the node does not take, (Io) or (Timeout) from the port, with the node's name and the reason in
/// the text.
namespace Norvane::GenApi {

class INode;
class INodeMap;
using GenICam::gcstring;

class IBase {
public:
    virtual ~IBase() = default;
    virtual EAccessMode GetAccessMode() const = 0;
};

inline bool IsReadable(const IBase& node) {
    return IsReadable(node.GetAccessMode());
}
inline bool IsWritable(const IBase& node) {
    return IsWritable(node.GetAccessMode());
}
inline bool IsImplemented(const IBase& node) {
    return IsImplemented(node.GetAccessMode());
}
inline bool IsAvailable(const IBase& node) {
    return IsAvailable(node.GetAccessMode());
}
/// Null counts as not implemented.
inline bool IsReadable(const IBase* node) {
    return node && IsReadable(*node);
}
inline bool IsWritable(const IBase* node) {
    return node && IsWritable(*node);
}
inline bool IsImplemented(const IBase* node) {
    return node && IsImplemented(*node);
}
inline bool IsAvailable(const IBase* node) {
    return node && IsAvailable(*node);
}

using node_vector = std::vector<INode*>;

class INode : public virtual IBase {
public:
    /// With `fullQualified`, "Std::" or "Cust::" stands before the name.
    virtual gcstring GetName(bool fullQualified = false) const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    virtual void InvalidateNode() = 0;
    virtual bool IsCachable() const = 0;
    virtual ECachingMode GetCachingMode() const = 0;
    virtual std::int64_t GetPollingTime() const = 0; ///< ms, -1 when the node is not polled
    virtual gcstring GetToolTip() const = 0;
    virtual gcstring GetDescription() const = 0;
    virtual gcstring GetDisplayName() const = 0;
    virtual gcstring GetDeviceName() const = 0;
    virtual gcstring GetEventID() const = 0; ///< hexadecimal, empty when the node has none
    virtual bool IsStreamable() const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual bool IsFeature() const = 0; ///< listed by a category
    virtual gcstring GetDocuURL() const = 0;
    virtual INode* GetAlias() const = 0;
    virtual INode* GetCastAlias() const = 0;
    virtual void GetChildren(node_vector& children, ELinkType linkType = ctReadingChildren) const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    virtual INodeMap* GetNodeMap() const = 0;
    /// An attribute of the description by its element name, as text; false when the node has none.
    virtual bool GetProperty(const gcstring& name, gcstring& value, gcstring& attribute) const = 0;
    virtual void ImposeAccessMode(EAccessMode mode) = 0;
    virtual void ImposeVisibility(EVisibility visibility) = 0;
};

class IValue : public virtual IBase {
public:
    virtual INode* GetNode() = 0;
    /// Text in the node's own notation, as FromString takes it.
    virtual gcstring ToString(bool verify = false, bool ignoreCache = false) = 0;
    virtual void FromString(const gcstring& text, bool verify = true) = 0;
    virtual bool IsValueCacheValid() const = 0;
};

using value_vector = std::vector<IValue*>;
using int64_autovector_t = std::vector<std::int64_t>;
using double_autovector_t = std::vector<double>;

class IInteger : public virtual IValue {
public:
    virtual void SetValue(std::int64_t value, bool verify = true) = 0;
    virtual std::int64_t GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual std::int64_t GetMin() = 0;
    virtual std::int64_t GetMax() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual std::int64_t GetInc() = 0;
    virtual int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    virtual void ImposeMin(std::int64_t value) = 0;
    virtual void ImposeMax(std::int64_t value) = 0;
};

class IFloat : public virtual IValue {
public:
    virtual void SetValue(double value, bool verify = true) = 0;
    virtual double GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual double GetInc() = 0;
    virtual double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    virtual EDisplayNotation GetDisplayNotation() = 0;
    virtual std::int64_t GetDisplayPrecision() = 0;
    virtual void ImposeMin(double value) = 0;
    virtual void ImposeMax(double value) = 0;
};

class IBoolean : public virtual IValue {
public:
    virtual void SetValue(bool value, bool verify = true) = 0;
    virtual bool GetValue(bool verify = false, bool ignoreCache = false) = 0;
};

class IString : public virtual IValue {
public:
    virtual void SetValue(const gcstring& value, bool verify = true) = 0;
    virtual gcstring GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual std::int64_t GetMaxLength() = 0; ///< bytes
};

class IEnumEntry : public virtual IValue {
public:
    virtual std::int64_t GetValue() = 0;
    virtual gcstring GetSymbolic() const = 0;
    virtual double GetNumericValue() = 0;
    virtual bool IsSelfClearing() = 0;
};

class IEnumeration : public virtual IValue {
public:
    virtual void GetSymbolics(std::vector<gcstring>& symbolics) = 0;
    /// All entries in the description's order, implemented or not.
    virtual void GetEntries(node_vector& entries) = 0;
    virtual void SetIntValue(std::int64_t value, bool verify = true) = 0;
    virtual std::int64_t GetIntValue(bool verify = false, bool ignoreCache = false) = 0;
    /// Null when there is none.
    virtual IEnumEntry* GetEntryByName(const gcstring& symbolic) = 0;
    virtual IEnumEntry* GetEntry(std::int64_t value) = 0;
    /// Null as well when the device holds a value that no entry has.
    virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;
};

class ICommand : public virtual IValue {
public:
    virtual void Execute(bool verify = true) = 0;
    virtual bool IsDone(bool verify = true) = 0;
};

class IRegister : public virtual IValue {
public:
    virtual void Set(const std::uint8_t* data, std::int64_t length, bool verify = true) = 0;
    virtual void Get(std::uint8_t* data, std::int64_t length, bool verify = false,
                     bool ignoreCache = false) = 0;
    virtual std::int64_t GetAddress() = 0;
    virtual std::int64_t GetLength() = 0; ///< bytes
};

class ICategory : public virtual IValue {
public:
    virtual void GetFeatures(value_vector& features) const = 0;
};

class ISelector : public virtual IBase {
public:
    virtual bool IsSelector() const = 0;
    virtual void GetSelectedFeatures(node_vector& features) const = 0;
    virtual void GetSelectingFeatures(node_vector& features) const = 0;
};

} // namespace Norvane::GenApi
