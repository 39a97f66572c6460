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
///
/// Two arguments come again and again. `verify`: on writing, checks the value against range, increment and
/// entries first, and afterwards the error enumerations (pError) that the device may have set; on reading,
/// checks what the device returned. `ignoreCache`: reads the device even where a value is cached.
///
/// Texts that the description does not give are empty.
namespace Norvane::GenApi {

class INode;
class INodeMap;
using GenICam::gcstring;

/// What every node has, whatever its kind.
class IBase {
public:
    virtual ~IBase() = default;
    /// What can be done with the node now; NA as well where the device cannot be asked. Never throws.
    virtual EAccessMode GetAccessMode() const = 0;
};

/// Whether the value can be read now (RO or RW).
inline bool IsReadable(const IBase& node) {
    return IsReadable(node.GetAccessMode());
}
/// Whether the value can be written, or the command executed, now (WO or RW).
inline bool IsWritable(const IBase& node) {
    return IsWritable(node.GetAccessMode());
}
/// Whether this device has the feature at all, available or not.
inline bool IsImplemented(const IBase& node) {
    return IsImplemented(node.GetAccessMode());
}
/// Whether the feature has a meaning in the device's present state.
inline bool IsAvailable(const IBase& node) {
    return IsAvailable(node.GetAccessMode());
}
/// Null counts as not implemented.
inline bool IsReadable(const IBase* node) {
    return node && IsReadable(*node);
}
/// Null counts as not implemented.
inline bool IsWritable(const IBase* node) {
    return node && IsWritable(*node);
}
/// Null counts as not implemented.
inline bool IsImplemented(const IBase* node) {
    return node && IsImplemented(*node);
}
/// Null counts as not implemented.
inline bool IsAvailable(const IBase* node) {
    return node && IsAvailable(*node);
}

/// Nodes that belong to their map.
using node_vector = std::vector<INode*>;

/// What a description says of a node. Pointers to other nodes belong to the node map.
class INode : public virtual IBase {
public:
    /// With `fullQualified`, "Std::" or "Cust::" stands before the name.
    virtual gcstring GetName(bool fullQualified = false) const = 0;
    /// Standard for features that a naming convention such as the SFNC defines.
    virtual ENameSpace GetNameSpace() const = 0;
    /// For whom a user interface shows the node; never less than what was imposed.
    virtual EVisibility GetVisibility() const = 0;
    /// Forgets what is cached of the node, of the registers behind it and of all nodes that depend on these,
    /// and fires their callbacks.
    virtual void InvalidateNode() = 0;
    /// Whether the value may be kept after it was read: so for its own register and all it is calculated
    /// from.
    virtual bool IsCachable() const = 0;
    /// What a write leaves in the cache; NoCache for a node that is not cachable.
    virtual ECachingMode GetCachingMode() const = 0;
    virtual std::int64_t GetPollingTime() const = 0; ///< ms, -1 when the node is not polled
    /// One line.
    virtual gcstring GetToolTip() const = 0;
    /// Some sentences; the tool tip where the description has none.
    virtual gcstring GetDescription() const = 0;
    /// For user interfaces; never empty: the name, or an entry's symbolic name, where the description has
    /// none.
    virtual gcstring GetDisplayName() const = 0;
    /// The same as INodeMap::GetDeviceName.
    virtual gcstring GetDeviceName() const = 0;
    virtual gcstring GetEventID() const = 0; ///< hexadecimal, empty when the node has none
    /// Whether the value belongs to a saved device configuration.
    virtual bool IsStreamable() const = 0;
    /// Kept by the device for older programs only.
    virtual bool IsDeprecated() const = 0;
    virtual bool IsFeature() const = 0; ///< listed by a category
    /// A web address.
    virtual gcstring GetDocuURL() const = 0;
    /// The node that shows the same value in another way (pAlias); null when there is none.
    virtual INode* GetAlias() const = 0;
    /// The node that stands for this one as another type (pCastAlias); null when there is none.
    virtual INode* GetCastAlias() const = 0;
    /// Replaces `children` by the nodes that this one is joined to in the given way, each once.
    virtual void GetChildren(node_vector& children, ELinkType linkType = ctReadingChildren) const = 0;
    /// The value interface that a user interface picks an editor by; intfIPort for ports.
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    /// Never null.
    virtual INodeMap* GetNodeMap() const = 0;
    /// What the description says in elements or the attribute called `name` ("pInvalidator", "NameSpace"):
    /// the texts, and each element's first attribute; several are parted by tabs. False, and nothing is
    /// touched, when there is none.
    virtual bool GetProperty(const gcstring& name, gcstring& value, gcstring& attribute) const = 0;
    /// Takes rights away for as long as the map lives; what was imposed before stays taken.
    virtual void ImposeAccessMode(EAccessMode mode) = 0;
    /// Hides the node from users below `visibility`; can only be raised.
    virtual void ImposeVisibility(EVisibility visibility) = 0;
};

/// A node that has a value, which any kind takes and gives as text.
class IValue : public virtual IBase {
public:
    /// The node that this value belongs to; never null.
    virtual INode* GetNode() = 0;
    /// Text in the node's own notation, as FromString takes it.
    virtual gcstring ToString(bool verify = false, bool ignoreCache = false) = 0;
    /// Writes a value given as text: a number (integers also as 0x..., IPv4 or MAC address), true, false, 1
    /// or 0, an entry's symbolic name, "1" to execute a command, hexadecimal digits for a register.
    /// @throws Exception (GenApiOutOfRange) for text that is no such value.
    virtual void FromString(const gcstring& text, bool verify = true) = 0;
    /// Whether the next read is answered without the device.
    virtual bool IsValueCacheValid() const = 0;
};

using value_vector = std::vector<IValue*>;            ///< values that belong to their map
using int64_autovector_t = std::vector<std::int64_t>; ///< valid values of an integer
using double_autovector_t = std::vector<double>;      ///< valid values of a float

/// A whole number: a register, a constant, or what a formula makes of other nodes.
class IInteger : public virtual IValue {
public:
    /// @throws Exception (GenApiOutOfRange) with `verify`, for a value outside range, increment or valid
    /// values.
    virtual void SetValue(std::int64_t value, bool verify = true) = 0;
    /// In GetUnit().
    virtual std::int64_t GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// The least value that can be set now; the lowest 64-bit number where nothing limits it.
    virtual std::int64_t GetMin() = 0;
    /// The greatest value that can be set now; the highest 64-bit number where nothing limits it.
    virtual std::int64_t GetMax() = 0;
    /// listIncrement when GetListOfValidValues tells what is valid, else fixedIncrement.
    virtual EIncMode GetIncMode() = 0;
    /// The distance of valid values, counted from GetMin(); 1 where nothing else is given.
    virtual std::int64_t GetInc() = 0;
    /// The valid values in the description's order, empty where it lists none. `bounded` leaves out those
    /// that lie outside the present range.
    virtual int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    /// How a user interface shows the value.
    virtual ERepresentation GetRepresentation() = 0;
    /// The SI unit's symbol, for example "us".
    virtual gcstring GetUnit() = 0;
    /// Raises the minimum for as long as the map lives; the last call counts.
    virtual void ImposeMin(std::int64_t value) = 0;
    /// Lowers the maximum for as long as the map lives; the last call counts.
    virtual void ImposeMax(std::int64_t value) = 0;
};

/// A number of double precision; one that lies over an integer is rounded when it is written.
class IFloat : public virtual IValue {
public:
    /// @throws Exception (GenApiOutOfRange) with `verify`, for NaN and for a value outside range or
    /// increment.
    virtual void SetValue(double value, bool verify = true) = 0;
    /// In GetUnit().
    virtual double GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// The least value that can be set now.
    virtual double GetMin() = 0;
    /// The greatest value that can be set now.
    virtual double GetMax() = 0;
    /// Whether GetInc() has an answer.
    virtual bool HasInc() = 0;
    /// listIncrement when GetListOfValidValues tells what is valid.
    virtual EIncMode GetIncMode() = 0;
    /// The distance of valid values, counted from GetMin().
    /// @throws Exception (GenApiLogical) when there is none, see HasInc().
    virtual double GetInc() = 0;
    /// The valid values in the description's order, empty where it lists none. `bounded` leaves out those
    /// that lie outside the present range.
    virtual double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    /// How a user interface shows the value.
    virtual ERepresentation GetRepresentation() = 0;
    /// The SI unit's symbol, for example "us".
    virtual gcstring GetUnit() = 0;
    /// The notation that ToString writes.
    virtual EDisplayNotation GetDisplayNotation() = 0;
    /// Digits: all of them in automatic notation, else those after the point; 0 to 40.
    virtual std::int64_t GetDisplayPrecision() = 0;
    /// Raises the minimum for as long as the map lives; the last call counts.
    virtual void ImposeMin(double value) = 0;
    /// Lowers the maximum for as long as the map lives; the last call counts.
    virtual void ImposeMax(double value) = 0;
};

/// A switch.
class IBoolean : public virtual IValue {
public:
    /// Writes the description's OnValue or OffValue.
    virtual void SetValue(bool value, bool verify = true) = 0;
    /// True for the OnValue, false for anything else.
    virtual bool GetValue(bool verify = false, bool ignoreCache = false) = 0;
};

/// A text.
class IString : public virtual IValue {
public:
    /// @throws Exception (GenApiOutOfRange) for more than GetMaxLength() bytes.
    virtual void SetValue(const gcstring& value, bool verify = true) = 0;
    /// Up to the first zero byte.
    virtual gcstring GetValue(bool verify = false, bool ignoreCache = false) = 0;
    virtual std::int64_t GetMaxLength() = 0; ///< bytes
};

/// One choice of an enumeration. Its access mode tells whether it can be chosen now; it cannot be written.
class IEnumEntry : public virtual IValue {
public:
    /// The number that stands for the choice in the device.
    virtual std::int64_t GetValue() = 0;
    /// The plain name, without the enumeration's.
    virtual gcstring GetSymbolic() const = 0;
    /// The quantity that the choice means, as a gain of 1.5; GetValue() where the description gives none.
    virtual double GetNumericValue() = 0;
    /// Whether the device goes on to another entry by itself after this one was written.
    virtual bool IsSelfClearing() = 0;
};

/// One of several named choices. ToString and FromString use symbolic names.
class IEnumeration : public virtual IValue {
public:
    /// Replaces `symbolics` by the plain names of all entries, implemented or not, in the description's
    /// order.
    virtual void GetSymbolics(std::vector<gcstring>& symbolics) = 0;
    /// All entries in the description's order, implemented or not.
    virtual void GetEntries(node_vector& entries) = 0;
    /// @throws Exception (GenApiOutOfRange) with `verify`, for the number of no entry or of one that is not
    ///         available now.
    virtual void SetIntValue(std::int64_t value, bool verify = true) = 0;
    /// The device's number, which may be that of no entry.
    virtual std::int64_t GetIntValue(bool verify = false, bool ignoreCache = false) = 0;
    /// Null when there is none.
    virtual IEnumEntry* GetEntryByName(const gcstring& symbolic) = 0;
    /// The entry of a number; null when there is none.
    virtual IEnumEntry* GetEntry(std::int64_t value) = 0;
    /// Null as well when the device holds a value that no entry has.
    virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;
};

/// Something that the device does on request.
class ICommand : public virtual IValue {
public:
    /// Starts the command and does not wait for its end.
    virtual void Execute(bool verify = true) = 0;
    /// Whether the last Execute has ended, which is asked of the device; true before the first one, and for a
    /// command whose register cannot be read.
    virtual bool IsDone(bool verify = true) = 0;
};

/// Bytes of the device, in its own order.
class IRegister : public virtual IValue {
public:
    /// Writes the first `length` bytes of the register.
    /// @throws Exception (GenApiOutOfRange) when that is less than 1 or more than GetLength().
    virtual void Set(const std::uint8_t* data, std::int64_t length, bool verify = true) = 0;
    /// Reads the first `length` bytes of the register.
    /// @throws Exception (GenApiOutOfRange) when that is more than GetLength().
    virtual void Get(std::uint8_t* data, std::int64_t length, bool verify = false,
                     bool ignoreCache = false) = 0;
    /// On the port; may depend on other nodes, selectors for example.
    virtual std::int64_t GetAddress() = 0;
    virtual std::int64_t GetLength() = 0; ///< bytes
};

/// A group of features in the tree that a description makes for users; the topmost is called "Root".
class ICategory : public virtual IValue {
public:
    /// Replaces `features` by what the category lists, in its order: features and further categories.
    virtual void GetFeatures(value_vector& features) const = 0;
};

/// How a node chooses what others show, as GainSelector does for Gain (pSelected). Every node has this
/// interface.
class ISelector : public virtual IBase {
public:
    /// Whether it chooses for any other node.
    virtual bool IsSelector() const = 0;
    /// Replaces `features` by the nodes that this one chooses for.
    virtual void GetSelectedFeatures(node_vector& features) const = 0;
    /// Replaces `features` by the nodes that choose for this one.
    virtual void GetSelectingFeatures(node_vector& features) const = 0;
};

} // namespace Norvane::GenApi
