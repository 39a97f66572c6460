#include "imaging/BasicImage.h"

#include "imaging/Convert.h"
#include "imaging/PixelMemory.h"
#include "imaging/Save/Save.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Norvane {
namespace Imaging {
namespace {

/// Bytes from row to row. Zero for a bit-packed image whose buffer is too short for rows that begin on bytes:
/// then the pixels follow one another without regard to rows.
std::size_t StrideOf(const PixelLayout& format, const ImageLayout& image, std::size_t memorySize) {
    const std::size_t row = RowBytes(format, image.width);
    const bool bitPacked = format.packing == Packing::Bits || format.packing == Packing::Gev10 ||
                           format.packing == Packing::Gev12;
    const bool ragged = (std::size_t{image.width} * format.info.bitsPerPixel) % 8 != 0;
    if (bitPacked && ragged && image.paddingX == 0 &&
        memorySize < BytesNeeded(format, image.width, image.height, row) &&
        memorySize >= BytesNeeded(format, image.width, image.height, 0)) {
        return 0;
    }
    return row + image.paddingX;
}

std::uint32_t Narrow(std::uint64_t value, const char* what) {
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        throw Exception(Error::InvalidParameter,
                        std::string("An image's ") + what + " cannot be " + std::to_string(value));
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

BasicImage::BasicImage(const ImageLayout& layout, std::uint8_t* data, std::size_t size,
                       std::shared_ptr<void> owner, ChunkData chunks, Memory memory)
    : m_layout(layout), m_memorySize(data ? size : 0), m_chunks(std::move(chunks)), m_memory(memory),
      m_data(data), m_owner(std::move(owner)) {
    Describe();
}

void BasicImage::Describe() {
    if (m_layout.format == PixelFormat_Undefined) {
        const PixelFormatInfo* named = FindPixelFormatByPfnc(m_layout.pfncCode);
        m_layout.format = named ? named->format : PixelFormat_Undefined;
    }
    const PixelLayout* format = FindLayout(m_layout.format);
    if (!format) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(m_layout.pfncCode));
        m_formatName = code;
        m_stride = 0;
        m_imageSize = m_memorySize;
        return;
    }
    m_layout.pfncCode = format->info.pfncCode;
    m_formatName = format->info.name;
    m_stride = StrideOf(*format, m_layout, m_memorySize);
    std::uint64_t whole = BytesNeeded(*format, m_layout.width, m_layout.height, m_stride);
    if (whole <= m_memorySize && whole > 0) {
        whole += m_layout.paddingX;
    }
    m_imageSize = static_cast<std::size_t>(std::min<std::uint64_t>(whole, m_memorySize));
}

std::shared_ptr<BasicImage> BasicImage::Allocate(const ImageLayout& layout) {
    ImageLayout own = layout;
    own.paddingX = 0;
    const auto size =
        static_cast<std::size_t>(PixelFormatImageSize(layout.format, layout.width, layout.height));
    const std::shared_ptr<std::uint8_t> memory = AllocatePixels(size);
    return std::make_shared<BasicImage>(own, memory.get(), size, memory, ChunkData(), Memory::Owned);
}

std::size_t BasicImage::GetBitsPerPixel() const noexcept {
    // PFNC codes tell the bits per pixel in their third byte.
    return m_layout.pfncCode >> 16 & 0xFF;
}

void* BasicImage::GetData() const noexcept {
    MutexLock lock(m_mutex);
    return m_data;
}

void BasicImage::Release() {
    std::shared_ptr<void> owner;
    MutexLock lock(m_mutex);
    m_released = true;
    m_data = nullptr;
    owner.swap(m_owner);
    // The owner may hand the buffer back to its stream, which must not happen under this lock.
    lock.unlock();
    owner.reset();
}

bool BasicImage::IsReleased() const noexcept {
    MutexLock lock(m_mutex);
    return m_released;
}

BasicImage::Pinned BasicImage::Pin(const char* purpose) const {
    MutexLock lock(m_mutex);
    if (m_released) {
        throw Exception(Error::InvalidBuffer,
                        std::string(purpose) +
                            ": the image was released, its pixels belong to the stream again");
    }
    return {
        {m_data, m_memorySize, m_layout.format, m_layout.pfncCode, m_layout.width, m_layout.height, m_stride},
        m_owner};
}

void BasicImage::DeepCopy(const ImagePtr& source) {
    const auto* from = dynamic_cast<const BasicImage*>(source.get());
    if (!from) {
        throw Exception(Error::InvalidParameter, "Deep copy: there is no source image");
    }
    if (from == this) {
        return;
    }
    if (m_memory == Memory::Caller) {
        throw Exception(
            Error::InvalidParameter,
            "Deep copy: the target lies over memory of the program; create an empty image instead");
    }
    CopyFrom(*from, "Deep copy");
}

void BasicImage::CopyFrom(const BasicImage& source, const char* purpose) {
    const Pinned pinned = source.Pin(purpose);
    std::shared_ptr<std::uint8_t> memory;
    std::shared_ptr<void> old; // goes back to its stream after the lock
    if (pinned.view.data) {
        memory = AllocatePixels(source.m_imageSize);
        std::memcpy(memory.get(), pinned.view.data, source.m_imageSize);
    }
    m_layout = source.m_layout;
    m_chunks = source.m_chunks;
    m_memorySize = source.m_imageSize;
    Describe();
    MutexLock lock(m_mutex);
    m_data = memory.get();
    old = std::move(memory);
    old.swap(m_owner);
    m_released = false;
}

ImagePtr BasicImage::Convert(PixelFormatEnums format, ColorProcessingAlgorithm algorithm) const {
    const Pinned pinned = Pin("Image conversion");
    RequireReadable(pinned.view, "Image conversion");
    if (format == m_layout.format && m_layout.paddingX == 0) {
        auto copy = std::make_shared<BasicImage>();
        copy->CopyFrom(*this, "Image conversion");
        return ImagePtr(std::move(copy));
    }
    ImageLayout layout = m_layout;
    layout.format = format;
    layout.pfncCode = 0;
    auto target = Allocate(layout);
    target->m_chunks = m_chunks;
    const PixelTarget pixels{static_cast<std::uint8_t*>(target->GetData()), format, layout.width,
                             layout.height, target->m_stride};
    ConvertPixels(pinned.view, pixels, algorithm);
    return ImagePtr(std::move(target));
}

void BasicImage::Convert(const ImagePtr& destination, ColorProcessingAlgorithm algorithm) const {
    const auto* target = dynamic_cast<const BasicImage*>(destination.get());
    if (!target || target == this) {
        throw Exception(Error::InvalidParameter, "Image conversion: there is no destination image");
    }
    const Pinned from = Pin("Image conversion");
    const Pinned to = target->Pin("Image conversion");
    ConvertPixels(from.view,
                  {const_cast<std::uint8_t*>(to.view.data), to.view.format, to.view.width, to.view.height,
                   to.view.stride},
                  algorithm);
}

void BasicImage::Save(const char* fileName, ImageFileFormat format) const {
    const Pinned pinned = Pin("Save");
    SaveImage(pinned.view, m_imageSize, fileName, format);
}

void BasicImage::Save(const char* fileName, const PNGOption& option) const {
    const Pinned pinned = Pin("Save");
    SavePng(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const BMPOption& option) const {
    const Pinned pinned = Pin("Save");
    SaveBmp(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const PGMOption& option) const {
    const Pinned pinned = Pin("Save");
    SavePgm(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const PPMOption& option) const {
    const Pinned pinned = Pin("Save");
    SavePpm(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const JPEGOption& option) const {
    const Pinned pinned = Pin("Save");
    SaveJpeg(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const JPG2Option& option) const {
    const Pinned pinned = Pin("Save");
    SaveJpeg2000(pinned.view, fileName, option);
}

void BasicImage::Save(const char* fileName, const TIFFOption& option) const {
    const Pinned pinned = Pin("Save");
    SaveTiff(pinned.view, fileName, option);
}

ImagePtr MakeImage(const ImageLayout& layout, std::uint8_t* data, std::size_t size,
                   std::shared_ptr<void> owner, ChunkData chunks) {
    return ImagePtr(std::make_shared<BasicImage>(layout, data, size, std::move(owner), std::move(chunks),
                                                 BasicImage::Memory::Owned));
}

} // namespace Imaging

ImagePtr Image::Create() {
    return ImagePtr(std::make_shared<Imaging::BasicImage>());
}

ImagePtr Image::Create(std::uint64_t width, std::uint64_t height, std::uint64_t offsetX,
                       std::uint64_t offsetY, PixelFormatEnums format, void* data) {
    Imaging::ImageLayout layout;
    layout.format = format;
    layout.width = Imaging::Narrow(width, "width");
    layout.height = Imaging::Narrow(height, "height");
    layout.offsetX = Imaging::Narrow(offsetX, "X offset");
    layout.offsetY = Imaging::Narrow(offsetY, "Y offset");
    const auto size = static_cast<std::size_t>(PixelFormatImageSize(format, width, height));
    return ImagePtr(std::make_shared<Imaging::BasicImage>(layout, static_cast<std::uint8_t*>(data), size,
                                                          nullptr, ChunkData(),
                                                          Imaging::BasicImage::Memory::Caller));
}

} // namespace Norvane
