#pragma once

#include "norvane/Exception.h"
#include "norvane/genapi/INode.h"

namespace Norvane::GenApi {

/// A typed node pointer. Assigning a node of another kind yields null, which is how a node's type is tested;
/// dereferencing null throws "NULL pointer dereferenced" (LogicalErrorException). The node map owns the node.
template <class T, class B = IBase>
class CPointer {
public:
    CPointer() noexcept = default;
    CPointer(std::nullptr_t) noexcept {}
    CPointer(B* node) noexcept : m_node(dynamic_cast<T*>(node)) {}
    template <class U>
    CPointer(const CPointer<U, B>& other) noexcept : m_node(dynamic_cast<T*>(static_cast<B*>(other.Get()))) {}

    CPointer& operator=(B* node) noexcept {
        m_node = dynamic_cast<T*>(node);
        return *this;
    }

    T* operator->() const { return Checked(); }
    T& operator*() const { return *Checked(); }
    operator T*() const noexcept { return m_node; }
    T* Get() const noexcept { return m_node; }
    bool IsValid() const noexcept { return m_node != nullptr; }
    explicit operator bool() const noexcept { return IsValid(); }

    bool operator==(const CPointer& other) const noexcept { return m_node == other.m_node; }
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

using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CIntegerPtr = CPointer<IInteger>;
using CFloatPtr = CPointer<IFloat>;
using CBooleanPtr = CPointer<IBoolean>;
using CStringPtr = CPointer<IString>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CCommandPtr = CPointer<ICommand>;
using CRegisterPtr = CPointer<IRegister>;
using CCategoryPtr = CPointer<ICategory>;

} // namespace Norvane::GenApi
