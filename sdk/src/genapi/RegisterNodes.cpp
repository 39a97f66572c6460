#include "genapi/RegisterNodes.h"

#include "genapi/Loader.h"
#include "genapi/NodeMap.h"
#include "norvane/Exception.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace Norvane::GenApi {

template <class Base>
void RegisterOf<Base>::Set(const std::uint8_t* data, std::int64_t length, bool verify) {
    const Operation operation(this->m_map);
    this->RequireWritable();
    const auto expected = m_register.Length();
    if (length < 1 || length > expected) {
        this->Fail(Error::GenApiOutOfRange, std::to_string(length) + " bytes do not fit into its " +
                                                std::to_string(expected) + " bytes");
    }
    m_register.Write(data, length);
    if (verify) {
        this->CheckErrors();
    }
}

template <class Base>
void RegisterOf<Base>::Get(std::uint8_t* data, std::int64_t length, bool, bool ignoreCache) {
    const Operation operation(this->m_map);
    this->RequireReadable();
    const auto* const bytes = m_register.Read(ignoreCache);
    const auto available = m_register.Length();
    if (length < 0 || length > available) {
        this->Fail(Error::GenApiOutOfRange, std::to_string(length) + " bytes are more than its " +
                                                std::to_string(available) + " bytes");
    }
    std::memcpy(data, bytes, static_cast<std::size_t>(length));
}

template <class Base>
std::int64_t RegisterOf<Base>::GetAddress() {
    const Operation operation(this->m_map);
    this->RequireSound();
    return m_register.Address();
}

template <class Base>
std::int64_t RegisterOf<Base>::GetLength() {
    const Operation operation(this->m_map);
    this->RequireSound();
    return m_register.Length();
}

template class RegisterOf<IntegerBase>;
template class RegisterOf<FloatBase>;
template class RegisterOf<StringBase>;
template class RegisterOf<RawBase>;

namespace {

std::uint64_t Decode(const std::uint8_t* bytes, std::int64_t length, bool bigEndian) {
    std::uint64_t value = 0;
    for (std::int64_t i = 0; i < length; ++i) {
        value = value << 8 | bytes[bigEndian ? i : length - 1 - i];
    }
    return value;
}

void Encode(std::uint8_t* bytes, std::int64_t length, bool bigEndian, std::uint64_t value) {
    for (std::int64_t i = 0; i < length; ++i) {
        bytes[bigEndian ? length - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint64_t Mask(int bits) {
    return bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
}

bool LoadEndianess(Node& node, pugi::xml_node element, Loader& loader) {
    return loader.Word(node, element, {"LittleEndian", "BigEndian"}, 0) == 1;
}

} // namespace

bool IntRegNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    switch (tag) {
    case Tag::Endianess:
        m_layout.bigEndian = LoadEndianess(*this, element, loader);
        return true;
    case Tag::Sign:
        m_layout.isSigned = loader.Word(*this, element, {"Unsigned", "Signed"}, 0) == 1;
        return true;
    case Tag::StructEntry: // the StructReg's elements are loaded as each entry's own
        return true;
    case Tag::Bit:
        m_layout.lsb = m_layout.msb = loader.Integer(*this, element);
        m_hasBits = true;
        return true;
    case Tag::LSB:
        m_layout.lsb = loader.Integer(*this, element);
        m_hasBits = true;
        return true;
    case Tag::MSB:
        m_layout.msb = loader.Integer(*this, element);
        m_hasBits = true;
        return true;
    default:
        return RegisterOf::LoadElement(tag, element, loader);
    }
}

void IntRegNode::FinishLoading(Loader& loader) {
    RegisterOf::FinishLoading(loader);
    const auto length = m_register.StaticLength();
    if (Broken()) {
        return;
    }
    if (length > 8) {
        loader.Fault(*this, "an integer of " + std::to_string(length) + " bytes is impossible");
    } else if (m_layout.masked && !m_hasBits) {
        loader.Fault(*this, "it has neither Bit nor LSB and MSB");
    } else if (m_layout.masked && length != 0 &&
               (m_layout.lsb < 0 || m_layout.msb < 0 || m_layout.lsb >= 8 * length ||
                m_layout.msb >= 8 * length)) {
        loader.Fault(*this, "its bits lie outside its " + std::to_string(length) + " bytes");
    }
}

IntRegNode::Bits IntRegNode::Field(std::int64_t length) const {
    if (length > 8) {
        Fail(Error::GenApiLogical, "an integer of " + std::to_string(length) + " bytes is impossible");
    }
    if (!m_layout.masked) {
        return {0, static_cast<int>(8 * length)};
    }
    auto first = m_layout.lsb;
    auto last = m_layout.msb;
    if (m_layout.bigEndian) {
        first = 8 * length - 1 - first;
        last = 8 * length - 1 - last;
    }
    if (first > last) {
        std::swap(first, last);
    }
    if (first < 0 || last >= 8 * length) {
        Fail(Error::GenApiLogical, "its bits lie outside its " + std::to_string(length) + " bytes");
    }
    return {static_cast<int>(first), static_cast<int>(last - first + 1)};
}

std::int64_t IntRegNode::ComputeInteger(bool fresh) {
    const auto* const bytes = m_register.Read(fresh);
    const auto length = m_register.Length();
    const auto field = Field(length);
    const bool bigEndian = m_layout.bigEndian != m_register.Swapped();
    auto value = Decode(bytes, length, bigEndian) >> field.shift & Mask(field.count);
    if (m_layout.isSigned && field.count < 64 && value >> (field.count - 1)) {
        value |= ~Mask(field.count);
    }
    return static_cast<std::int64_t>(value);
}

void IntRegNode::WriteInteger(std::int64_t value) {
    const auto length = m_register.Length();
    const auto field = Field(length);
    const bool bigEndian = m_layout.bigEndian != m_register.Swapped();
    auto bits = static_cast<std::uint64_t>(value) & Mask(field.count);
    if (m_layout.masked && field.count < 8 * length) {
        const auto others =
            Decode(m_register.ReadToModify(), length, bigEndian) & ~(Mask(field.count) << field.shift);
        bits = others | bits << field.shift;
    }
    std::uint8_t bytes[8];
    Encode(bytes, length, bigEndian, bits);
    m_register.Write(bytes);
}

void IntRegNode::RequireRoom(std::int64_t value) {
    const auto bits = Field(m_register.Length()).count;
    // Negative numbers are taken in an unsigned register, too: makers forget the sign.
    const auto beyond = static_cast<std::uint64_t>(value < 0 ? ~value : value >> 1) >> (bits - 1);
    if (beyond != 0) {
        Fail(Error::GenApiOutOfRange,
             std::to_string(value) + " does not fit into its " + std::to_string(bits) + " bits");
    }
}

std::int64_t IntRegNode::ComputeMin() {
    const auto bits = Field(m_register.Length()).count;
    return m_layout.isSigned ? static_cast<std::int64_t>(~(Mask(bits) >> 1)) : 0;
}

std::int64_t IntRegNode::ComputeMax() {
    const auto bits = Field(m_register.Length()).count;
    return static_cast<std::int64_t>(m_layout.isSigned || bits == 64 ? Mask(bits) >> 1 : Mask(bits));
}

bool FloatRegNode::LoadElement(Tag tag, pugi::xml_node element, Loader& loader) {
    if (tag == Tag::Endianess) {
        m_bigEndian = LoadEndianess(*this, element, loader);
        return true;
    }
    return RegisterOf::LoadElement(tag, element, loader);
}

void FloatRegNode::FinishLoading(Loader& loader) {
    RegisterOf::FinishLoading(loader);
    const auto length = m_register.StaticLength();
    if (!Broken() && length != 0 && length != 4 && length != 8) {
        loader.Fault(*this, "a float of " + std::to_string(length) + " bytes is impossible");
    }
}

double FloatRegNode::ComputeFloat(bool fresh) {
    const auto* const bytes = m_register.Read(fresh);
    const auto length = m_register.Length();
    const bool bigEndian = m_bigEndian != m_register.Swapped();
    if (length == 4) {
        const auto bits = static_cast<std::uint32_t>(Decode(bytes, 4, bigEndian));
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return static_cast<double>(value);
    }
    if (length == 8) {
        const auto bits = Decode(bytes, 8, bigEndian);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    Fail(Error::GenApiLogical, "a float of " + std::to_string(length) + " bytes is impossible");
}

void FloatRegNode::WriteFloat(double value) {
    const auto length = m_register.Length();
    std::uint64_t bits = 0;
    if (length == 4) {
        constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
        // Outside the range of a float the conversion is undefined; infinity is what the hardware would give.
        const auto single = value > kMost    ? std::numeric_limits<float>::infinity()
                            : value < -kMost ? -std::numeric_limits<float>::infinity()
                                             : static_cast<float>(value);
        std::uint32_t half;
        std::memcpy(&half, &single, sizeof half);
        bits = half;
    } else if (length == 8) {
        std::memcpy(&bits, &value, sizeof bits);
    } else {
        Fail(Error::GenApiLogical, "a float of " + std::to_string(length) + " bytes is impossible");
    }
    std::uint8_t bytes[8];
    Encode(bytes, length, m_bigEndian != m_register.Swapped(), bits);
    m_register.Write(bytes);
}

double FloatRegNode::ComputeMin() {
    return -ComputeMax();
}

double FloatRegNode::ComputeMax() {
    return m_register.Length() == 4 ? static_cast<double>(std::numeric_limits<float>::max()) : kHighest;
}

std::string StringRegNode::ComputeText(bool fresh) {
    const auto* const bytes = reinterpret_cast<const char*>(m_register.Read(fresh));
    const auto length = static_cast<std::size_t>(m_register.Length());
    return {bytes, strnlen(bytes, length)};
}

void StringRegNode::WriteText(const std::string& value) {
    const auto length = static_cast<std::size_t>(m_register.Length());
    if (value.size() > length) {
        Fail(Error::GenApiOutOfRange, "'" + value + "' is longer than " + std::to_string(length) + " bytes");
    }
    std::vector<std::uint8_t> bytes(length, 0);
    std::memcpy(bytes.data(), value.data(), value.size());
    m_register.Write(bytes.data());
}

std::string RawRegisterNode::ReadText(bool fresh) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    RequireSound();
    const auto* const bytes = m_register.Read(fresh);
    std::string text = "0x";
    for (std::int64_t i = 0; i < m_register.Length(); ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

void RawRegisterNode::WriteText(const std::string& value) {
    const auto digit = [](char c) {
        return c >= '0' && c <= '9'                     ? c - '0'
               : (c | 0x20) >= 'a' && (c | 0x20) <= 'f' ? (c | 0x20) - 'a' + 10
                                                        : -1;
    };
    std::string_view digits = value;
    if (digits.substr(0, 2) == "0x" || digits.substr(0, 2) == "0X") {
        digits.remove_prefix(2);
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(m_register.Length()));
    bool good = digits.size() == 2 * bytes.size();
    for (std::size_t i = 0; good && i < bytes.size(); ++i) {
        const int high = digit(digits[2 * i]);
        const int low = digit(digits[2 * i + 1]);
        good = high >= 0 && low >= 0;
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    if (!good) {
        Fail(Error::GenApiOutOfRange,
             "it takes " + std::to_string(bytes.size()) + " bytes as hexadecimal digits");
    }
    m_register.Write(bytes.data());
}

std::string RawRegisterNode::ToText(bool, bool ignoreCache) {
    return ReadText(ignoreCache);
}

void RawRegisterNode::FromText(const std::string& text, bool) {
    WriteText(text);
}

} // namespace Norvane::GenApi
