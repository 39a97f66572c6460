#include "transport/emulator/PixelWriters.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

using O = SampleOrder;
using P = Packing;

std::uint32_t SamplesPerGroup(SampleOrder order) {
    switch (order) {
    case O::Rgb:
    case O::Bgr:
    case O::Uyv:
        return 3;
    case O::Rgba:
    case O::Bgra:
    case O::Uyvy:
    case O::Yuyv:
        return 4;
    case O::Uyyvyy:
        return 6;
    default:
        return 1;
    }
}

std::uint32_t PixelsPerGroup(SampleOrder order) {
    return order == O::Uyvy || order == O::Yuyv ? 2 : order == O::Uyyvyy ? 4 : 1;
}

/// Rec. 601 luma of 16-bit linear light, on the tone curves' 12-bit scale.
inline std::uint32_t Luma12(const std::uint16_t* rgb) {
    return (rgb[0] * 77U + rgb[1] * 150U + rgb[2] * 29U) >> 12;
}

/// Full-range Rec. 601 in 16-bit samples, chroma around half scale.
struct Yuv {
    std::int32_t y, u, v;
};
inline Yuv ToYuv(std::int32_t r, std::int32_t g, std::int32_t b) {
    const std::int32_t y = (19595 * (r >> 1) + 38470 * (g >> 1) + 7471 * (b >> 1)) >> 15;
    const auto chroma = [](std::int32_t difference, std::int32_t scale) {
        return std::clamp(32768 + static_cast<std::int32_t>((std::int64_t{difference} * scale) >> 16), 0,
                          65535);
    };
    return {std::clamp(y, 0, 65535), chroma(b - y, 36984), chroma(r - y, 46745)};
}

/// Turns `count` RGB pixels, fetched by `rgb(i, channel)`, into the order's samples.
template <class Fetch>
void OrderColour(SampleOrder order, std::uint32_t count, const Fetch& rgb, std::uint16_t* out) {
    const auto put = [&](auto... values) { ((*out++ = static_cast<std::uint16_t>(values)), ...); };
    const auto yuv = [&](std::uint32_t i) {
        const std::uint32_t k = std::min(i, count - 1);
        return ToYuv(rgb(k, 0), rgb(k, 1), rgb(k, 2));
    };
    switch (order) {
    case O::Rgb:
        for (std::uint32_t i = 0; i < count; ++i) {
            put(rgb(i, 0), rgb(i, 1), rgb(i, 2));
        }
        break;
    case O::Bgr:
        for (std::uint32_t i = 0; i < count; ++i) {
            put(rgb(i, 2), rgb(i, 1), rgb(i, 0));
        }
        break;
    case O::Rgba:
        for (std::uint32_t i = 0; i < count; ++i) {
            put(rgb(i, 0), rgb(i, 1), rgb(i, 2), 65535);
        }
        break;
    case O::Bgra:
        for (std::uint32_t i = 0; i < count; ++i) {
            put(rgb(i, 2), rgb(i, 1), rgb(i, 0), 65535);
        }
        break;
    case O::Uyv:
        for (std::uint32_t i = 0; i < count; ++i) {
            const Yuv p = yuv(i);
            put(p.u, p.y, p.v);
        }
        break;
    case O::Uyvy:
    case O::Yuyv:
        for (std::uint32_t i = 0; i < count; i += 2) {
            const Yuv a = yuv(i), b = yuv(i + 1);
            const std::int32_t u = (a.u + b.u) / 2, v = (a.v + b.v) / 2;
            order == O::Uyvy ? put(u, a.y, v, b.y) : put(a.y, u, b.y, v);
        }
        break;
    case O::Uyyvyy:
        for (std::uint32_t i = 0; i < count; i += 4) {
            const Yuv a = yuv(i), b = yuv(i + 1), c = yuv(i + 2), d = yuv(i + 3);
            put((a.u + b.u + c.u + d.u) / 4, a.y, b.y, (a.v + b.v + c.v + d.v) / 4, c.y, d.y);
        }
        break;
    default:
        break;
    }
}

/// The colour (0 red, 1 green, 2 blue) of the even and the odd column of a row of a Bayer mosaic.
std::array<int, 2> BayerColours(SampleOrder order, std::uint32_t y) {
    const bool odd = y & 1;
    switch (order) {
    case O::BayerGR:
        return odd ? std::array{2, 1} : std::array{1, 0};
    case O::BayerRG:
        return odd ? std::array{1, 2} : std::array{0, 1};
    case O::BayerGB:
        return odd ? std::array{0, 1} : std::array{1, 2};
    default:
        return odd ? std::array{1, 0} : std::array{2, 1};
    }
}

std::vector<EmulatedFormat> MakeFormats() {
    std::vector<EmulatedFormat> list{
        {"Mono8", 0x01080001, O::Mono, P::Bytes, 8},
        {"Mono10", 0x01100003, O::Mono, P::Words, 10},
        {"Mono10Packed", 0x010C0004, O::Mono, P::GevPacked, 10},
        {"Mono10p", 0x010A0046, O::Mono, P::LsbPacked, 10},
        {"Mono12", 0x01100005, O::Mono, P::Words, 12},
        {"Mono12Packed", 0x010C0006, O::Mono, P::GevPacked, 12},
        {"Mono12p", 0x010C0047, O::Mono, P::LsbPacked, 12},
        {"Mono14", 0x01100025, O::Mono, P::Words, 14},
        {"Mono14p", 0x010E0104, O::Mono, P::LsbPacked, 14},
        {"Mono16", 0x01100007, O::Mono, P::Words, 16},
        {"BayerGR8", 0x01080008, O::BayerGR, P::Bytes, 8},
        {"BayerRG8", 0x01080009, O::BayerRG, P::Bytes, 8},
        {"BayerGB8", 0x0108000A, O::BayerGB, P::Bytes, 8},
        {"BayerBG8", 0x0108000B, O::BayerBG, P::Bytes, 8},
        {"BayerGR10", 0x0110000C, O::BayerGR, P::Words, 10},
        {"BayerRG10", 0x0110000D, O::BayerRG, P::Words, 10},
        {"BayerGB10", 0x0110000E, O::BayerGB, P::Words, 10},
        {"BayerBG10", 0x0110000F, O::BayerBG, P::Words, 10},
        {"BayerGR10Packed", 0x010C0026, O::BayerGR, P::GevPacked, 10},
        {"BayerRG10Packed", 0x010C0027, O::BayerRG, P::GevPacked, 10},
        {"BayerGB10Packed", 0x010C0028, O::BayerGB, P::GevPacked, 10},
        {"BayerBG10Packed", 0x010C0029, O::BayerBG, P::GevPacked, 10},
        {"BayerGR10p", 0x010A0056, O::BayerGR, P::LsbPacked, 10},
        {"BayerRG10p", 0x010A0058, O::BayerRG, P::LsbPacked, 10},
        {"BayerGB10p", 0x010A0054, O::BayerGB, P::LsbPacked, 10},
        {"BayerBG10p", 0x010A0052, O::BayerBG, P::LsbPacked, 10},
        {"BayerGR12", 0x01100010, O::BayerGR, P::Words, 12},
        {"BayerRG12", 0x01100011, O::BayerRG, P::Words, 12},
        {"BayerGB12", 0x01100012, O::BayerGB, P::Words, 12},
        {"BayerBG12", 0x01100013, O::BayerBG, P::Words, 12},
        {"BayerGR12Packed", 0x010C002A, O::BayerGR, P::GevPacked, 12},
        {"BayerRG12Packed", 0x010C002B, O::BayerRG, P::GevPacked, 12},
        {"BayerGB12Packed", 0x010C002C, O::BayerGB, P::GevPacked, 12},
        {"BayerBG12Packed", 0x010C002D, O::BayerBG, P::GevPacked, 12},
        {"BayerGR12p", 0x010C0057, O::BayerGR, P::LsbPacked, 12},
        {"BayerRG12p", 0x010C0059, O::BayerRG, P::LsbPacked, 12},
        {"BayerGB12p", 0x010C0055, O::BayerGB, P::LsbPacked, 12},
        {"BayerBG12p", 0x010C0053, O::BayerBG, P::LsbPacked, 12},
        {"BayerGR14", 0x01100109, O::BayerGR, P::Words, 14},
        {"BayerRG14", 0x0110010A, O::BayerRG, P::Words, 14},
        {"BayerGB14", 0x0110010B, O::BayerGB, P::Words, 14},
        {"BayerBG14", 0x0110010C, O::BayerBG, P::Words, 14},
        {"BayerGR14p", 0x010E0105, O::BayerGR, P::LsbPacked, 14},
        {"BayerRG14p", 0x010E0106, O::BayerRG, P::LsbPacked, 14},
        {"BayerGB14p", 0x010E0107, O::BayerGB, P::LsbPacked, 14},
        {"BayerBG14p", 0x010E0108, O::BayerBG, P::LsbPacked, 14},
        {"BayerGR16", 0x0110002E, O::BayerGR, P::Words, 16},
        {"BayerRG16", 0x0110002F, O::BayerRG, P::Words, 16},
        {"BayerGB16", 0x01100030, O::BayerGB, P::Words, 16},
        {"BayerBG16", 0x01100031, O::BayerBG, P::Words, 16},
        {"RGB8", 0x02180014, O::Rgb, P::Bytes, 8},
        {"BGR8", 0x02180015, O::Bgr, P::Bytes, 8},
        {"RGBa8", 0x02200016, O::Rgba, P::Bytes, 8},
        {"BGRa8", 0x02200017, O::Bgra, P::Bytes, 8},
        {"RGB10", 0x02300018, O::Rgb, P::Words, 10},
        {"BGR10", 0x02300019, O::Bgr, P::Words, 10},
        {"RGB12", 0x0230001A, O::Rgb, P::Words, 12},
        {"BGR12", 0x0230001B, O::Bgr, P::Words, 12},
        {"RGB14", 0x0230005E, O::Rgb, P::Words, 14},
        {"RGB16", 0x02300033, O::Rgb, P::Words, 16},
        {"BGR16", 0x0230004B, O::Bgr, P::Words, 16},
        {"RGB565p", 0x02100035, O::Rgb, P::Packed565, 6},
        {"BGR565p", 0x02100036, O::Bgr, P::Packed565, 6},
        {"YUV8_UYV", 0x02180020, O::Uyv, P::Bytes, 8},
        {"YUV422_8_UYVY", 0x0210001F, O::Uyvy, P::Bytes, 8},
        {"YUV422_8", 0x02100032, O::Yuyv, P::Bytes, 8},
        {"YUV411_8_UYYVYY", 0x020C001E, O::Uyyvyy, P::Bytes, 8},
        {"YCbCr8_CbYCr", 0x0218003A, O::Uyv, P::Bytes, 8},
        {"YCbCr422_8", 0x0210003B, O::Yuyv, P::Bytes, 8},
        {"YCbCr422_8_CbYCrY", 0x02100043, O::Uyvy, P::Bytes, 8},
    };
    return list;
}

} // namespace

std::uint32_t EmulatedFormat::GroupPixels() const {
    if (packing == P::GevPacked) {
        return 2;
    }
    if (packing == P::LsbPacked) {
        return bits == 12 ? 2 : 4;
    }
    return PixelsPerGroup(order);
}

std::uint32_t EmulatedFormat::GroupBytes() const {
    switch (packing) {
    case P::Bytes:
        return SamplesPerGroup(order);
    case P::Words:
        return 2 * SamplesPerGroup(order);
    case P::GevPacked:
        return 3;
    case P::Packed565:
        return 2;
    case P::LsbPacked:
        break;
    }
    return GroupPixels() * bits / 8;
}

std::size_t EmulatedFormat::RowBytes(std::uint32_t width) const {
    if (packing == P::LsbPacked || packing == P::GevPacked) {
        return (std::size_t{width} * BitsPerPixel() + 7) / 8;
    }
    return std::size_t{(width + GroupPixels() - 1) / GroupPixels()} * GroupBytes();
}

const std::vector<EmulatedFormat>& EmulatedFormats() {
    static const std::vector<EmulatedFormat> kFormats = MakeFormats();
    return kFormats;
}

const EmulatedFormat* FindEmulatedFormat(std::string_view name) {
    for (const EmulatedFormat& format : EmulatedFormats()) {
        if (format.name == name) {
            return &format;
        }
    }
    return nullptr;
}

const EmulatedFormat* FindEmulatedFormat(std::uint32_t pfncCode) {
    for (const EmulatedFormat& format : EmulatedFormats()) {
        if (format.pfncCode == pfncCode) {
            return &format;
        }
    }
    return nullptr;
}

void PixelWriter::Write(const std::uint16_t* light, std::uint32_t x, std::uint32_t y, std::uint32_t count,
                        std::uint8_t* row) {
    m_samples.resize(std::size_t{count} * 4 + 32);
    std::uint16_t* out = m_samples.data();
    if (m_format.IsMono()) {
        for (std::uint32_t i = 0; i < count; ++i) {
            out[i] = m_curves.rgb[1][Luma12(light + 3 * i)];
        }
    } else if (m_format.IsBayer()) {
        const auto [even, odd] = BayerColours(m_format.order, y);
        const auto &evenCurve = m_curves.rgb[even], &oddCurve = m_curves.rgb[odd];
        std::uint32_t i = 0;
        for (; i + 1 < count; i += 2) {
            out[i] = evenCurve[light[3 * i + even] >> 4];
            out[i + 1] = oddCurve[light[3 * i + 3 + odd] >> 4];
        }
        if (i < count) {
            out[i] = evenCurve[light[3 * i + even] >> 4];
        }
    } else {
        OrderColour(
            m_format.order, count,
            [&](std::uint32_t i, std::uint32_t channel) {
                return m_curves.rgb[channel][light[3 * i + channel] >> 4];
            },
            out);
    }
    Pack(x, count, row);
}

void PixelWriter::WriteBinary(const std::uint8_t* white, std::uint32_t x, std::uint32_t count,
                              std::uint8_t* row) {
    m_samples.resize(std::size_t{count} * 4 + 32);
    if (m_format.IsMono() || m_format.IsBayer()) {
        for (std::uint32_t i = 0; i < count; ++i) {
            m_samples[i] = white[i] ? 65535 : 0;
        }
    } else {
        OrderColour(
            m_format.order, count, [&](std::uint32_t i, std::uint32_t) { return white[i] ? 65535 : 0; },
            m_samples.data());
    }
    Pack(x, count, row);
}

void PixelWriter::Pack(std::uint32_t x, std::uint32_t count, std::uint8_t* row) {
    const std::uint32_t groups = (count + m_format.GroupPixels() - 1) / m_format.GroupPixels();
    std::uint8_t* out = row + std::size_t{x / m_format.GroupPixels()} * m_format.GroupBytes();
    const std::uint16_t* in = m_samples.data();
    if (m_format.IsMono() || m_format.IsBayer()) {
        std::fill_n(m_samples.begin() + count, 8, std::uint16_t{0}); // the rest of a group at the row's end
    }
    switch (m_format.packing) {
    case P::Bytes: {
        const std::uint32_t samples = groups * SamplesPerGroup(m_format.order);
        for (std::uint32_t i = 0; i < samples; ++i) {
            out[i] = static_cast<std::uint8_t>(in[i] >> 8);
        }
        break;
    }
    case P::Words: {
        const std::uint32_t samples = groups * SamplesPerGroup(m_format.order);
        const unsigned shift = 16U - m_format.bits;
        for (std::uint32_t i = 0; i < samples; ++i) {
            const unsigned value = in[i] >> shift;
            out[2 * i] = static_cast<std::uint8_t>(value);
            out[2 * i + 1] = static_cast<std::uint8_t>(value >> 8);
        }
        break;
    }
    case P::GevPacked: {
        const unsigned low = m_format.bits - 8U;
        const unsigned mask = (1U << low) - 1;
        for (std::uint32_t i = 0; i < groups; ++i, in += 2) {
            const unsigned a = in[0] >> (16U - m_format.bits), b = in[1] >> (16U - m_format.bits);
            *out++ = static_cast<std::uint8_t>(a >> low);
            *out++ = static_cast<std::uint8_t>((a & mask) | (b & mask) << 4);
            if (2 * i + 1 < count) {
                *out++ = static_cast<std::uint8_t>(b >> low);
            }
        }
        break;
    }
    case P::LsbPacked: {
        const std::uint32_t perGroup = m_format.GroupPixels();
        for (std::uint32_t i = 0; i < groups; ++i) {
            std::uint64_t stream = 0;
            for (std::uint32_t k = 0; k < perGroup; ++k) {
                stream |= std::uint64_t{static_cast<std::uint16_t>(*in++ >> (16U - m_format.bits))}
                          << k * m_format.bits;
            }
            const std::uint32_t pixels = std::min(perGroup, count - i * perGroup);
            for (std::uint32_t k = 0; k < (pixels * m_format.bits + 7) / 8; ++k) {
                *out++ = static_cast<std::uint8_t>(stream >> 8 * k);
            }
        }
        break;
    }
    case P::Packed565:
        for (std::uint32_t i = 0; i < groups; ++i, in += 3, out += 2) {
            const unsigned value = in[0] >> 11 | in[1] >> 10 << 5 | in[2] >> 11 << 11;
            out[0] = static_cast<std::uint8_t>(value);
            out[1] = static_cast<std::uint8_t>(value >> 8);
        }
        break;
    }
}

} // namespace Norvane::Transport::Emulator
