#include "genapi/RegisterTarget.h"

#include "genapi/Node.h"
#include "norvane/Exception.h"

namespace Norvane::GenApi {

namespace {

std::int64_t WrappingAdd(std::int64_t left, std::int64_t right) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) + static_cast<std::uint64_t>(right));
}
std::int64_t WrappingMultiply(std::int64_t left, std::int64_t right) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) * static_cast<std::uint64_t>(right));
}

} // namespace

std::uint64_t HashOf(const AddressPlan& plan) {
    std::uint64_t hash = 0;
    const auto mix = [&hash](std::uint64_t part) {
        hash = (hash ^ part) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 32;
    };
    mix(static_cast<std::uint64_t>(plan.constant));
    mix(static_cast<std::uint64_t>(plan.length));
    for (const auto& term : plan.terms) {
        mix(reinterpret_cast<std::uintptr_t>(term.node));
        mix(static_cast<std::uint64_t>(term.offset));
    }
    return hash;
}

RegisterTarget::RegisterTarget(const AddressPlan& plan, std::pmr::memory_resource& buffers)
    : m_plan(plan), m_many(&buffers) {
    if (IsStatic()) {
        m_address = m_plan.constant;
        m_length = m_plan.length;
        m_resolved = true;
    }
}

void RegisterTarget::Resolve(const Node& by, bool fresh) {
    if (!m_resolved || (fresh && !IsStatic())) {
        std::int64_t length = m_plan.length;
        if (m_plan.lengthNode) {
            length = m_plan.lengthNode->ReadInteger(fresh);
        }
        if (length < 1 || length > kLongestRegister) {
            by.Fail(Error::GenApiLogical, "a register of " + std::to_string(length) + " bytes is impossible");
        }
        auto address = m_plan.constant;
        for (const auto& term : m_plan.terms) {
            const auto value = term.node->ReadInteger(fresh);
            const auto step = term.offsetNode    ? term.offsetNode->ReadInteger(fresh)
                              : term.timesLength ? length
                                                 : term.offset;
            address = WrappingAdd(address, WrappingMultiply(value, step));
        }
        if (address != m_address || length != m_length) {
            m_epoch = 0;
            m_seen = false;
            if (length != m_length) {
                m_few.fill(0);
                m_many.clear();
            }
            m_address = address;
            m_length = length;
        }
        m_resolved = true;
    }
    if (m_length > kFew && m_many.size() != static_cast<std::size_t>(m_length)) {
        m_many.assign(static_cast<std::size_t>(m_length), 0);
    }
}

} // namespace Norvane::GenApi
