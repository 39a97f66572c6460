#pragma once

#include "norvane/Exception.h"
#include "norvane/genapi/INode.h"

namespace Norvane::GenApi {

/// A typed node pointer. Assigning a node of another kind yields null, which is how a node's type is tested;
/// dereferencing null throws "NULL pointer dereferenced" (LogicalErrorException). The node map owns the node.
template <class T, class B = IBase>
class CPointer {
public:
    /// Null.
    CPointer() noexcept = default;
    /// Null.
    CPointer(std::nullptr_t) noexcept {}
    /// Null when `node` is of another kind.
    CPointer(B* node) noexcept : m_node(dynamic_cast<T*>(node)) {}
    /// Converts between kinds; null when the node is of another one.
    template <class U>
    CPointer(const CPointer<U, B>& other) noexcept : m_node(dynamic_cast<T*>(static_cast<B*>(other.Get()))) {}

    /// Null when `node` is of another kind.
    CPointer& operator=(B* node) noexcept {
        m_node = dynamic_cast<T*>(node);
        return *this;
    }

    /// @throws Exception (GenApiLogical) when null.
    T* operator->() const { return Checked(); }
    /// @throws Exception (GenApiLogical) when null.
    T& operator*() const { return *Checked(); }
    /// The plain pointer, null included.
    operator T*() const noexcept { return m_node; }
    /// The plain pointer, null included.
    T* Get() const noexcept { return m_node; }
    /// False when null, which a node of another kind is too.
    bool IsValid() const noexcept { return m_node != nullptr; }
    /// The same as IsValid().
    explicit operator bool() const noexcept { return IsValid(); }

    /// Whether both point to one node, or are null.
    bool operator==(const CPointer& other) const noexcept { return m_node == other.m_node; }
    /// Whether it is null.
    bool operator==(std::nullptr_t) const noexcept { return m_node == nullptr; }

private:
    T* Checked() const {
        if (!m_node) {
            throw NullPointerError();
        }
        return m_node;
    }

    T* m_node = nullptr;
};

/// @name Pointers by kind
/// What a program holds nodes by.
/// @{
using CNodePtr = CPointer<INode>;               ///< any node
using CValuePtr = CPointer<IValue>;             ///< any node with a value
using CIntegerPtr = CPointer<IInteger>;         ///< a whole number
using CFloatPtr = CPointer<IFloat>;             ///< a number
using CBooleanPtr = CPointer<IBoolean>;         ///< a switch
using CStringPtr = CPointer<IString>;           ///< a text
using CEnumerationPtr = CPointer<IEnumeration>; ///< a choice
using CEnumEntryPtr = CPointer<IEnumEntry>;     ///< one entry of a choice
using CCommandPtr = CPointer<ICommand>;         ///< an action
using CRegisterPtr = CPointer<IRegister>;       ///< bytes
using CCategoryPtr = CPointer<ICategory>;       ///< a group of features
/// @}

} // namespace Norvane::GenApi
