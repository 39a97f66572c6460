#pragma once

#include "base/Mutex.h"
#include "imaging/ImageFactory.h"
#include "imaging/PixelView.h"

#include "norvane/Image.h"

#include <memory>
#include <string>

namespace Norvane::Imaging {

/// The one kind of image there is: over a stream's buffer, over memory of its own, or over a caller's. It
/// holds its bytes through an owner; an operation that reads them holds the owner too, so that Release() on
/// another thread takes effect when the operation is done. Geometry and identity change only in DeepCopy.
class BasicImage final : public IImage {
public:
    enum class Memory { Owned, Caller };

    BasicImage() = default;
    BasicImage(const ImageLayout& layout, std::uint8_t* data, std::size_t size, std::shared_ptr<void> owner,
               ChunkData chunks, Memory memory);

    /// A new image in memory of its own, rows without padding, pixels unspecified. Identity is `layout`'s.
    static std::shared_ptr<BasicImage> Allocate(const ImageLayout& layout);

    std::size_t GetWidth() const noexcept override { return m_layout.width; }
    std::size_t GetHeight() const noexcept override { return m_layout.height; }
    std::size_t GetXOffset() const noexcept override { return m_layout.offsetX; }
    std::size_t GetYOffset() const noexcept override { return m_layout.offsetY; }
    PixelFormatEnums GetPixelFormat() const noexcept override { return m_layout.format; }
    const char* GetPixelFormatName() const noexcept override { return m_formatName.c_str(); }
    std::size_t GetBitsPerPixel() const noexcept override;
    std::size_t GetStride() const noexcept override { return m_stride; }
    std::size_t GetImageSize() const noexcept override { return m_imageSize; }
    std::uint64_t GetFrameID() const noexcept override { return m_layout.frameId; }
    std::uint64_t GetTimeStamp() const noexcept override { return m_layout.timestampNs; }
    bool IsIncomplete() const noexcept override { return m_layout.status != IMAGE_NO_ERROR; }
    ImageStatus GetImageStatus() const noexcept override { return m_layout.status; }
    void* GetData() const noexcept override;
    ChunkData GetChunkData() const override { return m_chunks; }
    void Release() override;
    bool IsReleased() const noexcept override;
    void DeepCopy(const ImagePtr& source) override;
    ImagePtr Convert(PixelFormatEnums format, ColorProcessingAlgorithm algorithm) const override;
    void Convert(const ImagePtr& destination, ColorProcessingAlgorithm algorithm) const override;
    void Save(const char* fileName, ImageFileFormat format) const override;
    void Save(const char* fileName, const PNGOption& option) const override;
    void Save(const char* fileName, const BMPOption& option) const override;
    void Save(const char* fileName, const PGMOption& option) const override;
    void Save(const char* fileName, const PPMOption& option) const override;
    void Save(const char* fileName, const JPEGOption& option) const override;
    void Save(const char* fileName, const JPG2Option& option) const override;
    void Save(const char* fileName, const TIFFOption& option) const override;

private:
    /// The pixels, kept alive while this exists.
    struct Pinned {
        PixelView view;
        std::shared_ptr<void> owner;
    };

    /// @throws Exception (InvalidBuffer) when the image is released.
    Pinned Pin(const char* purpose) const;
    void CopyFrom(const BasicImage& source, const char* purpose);
    /// Fills in what follows from the layout and the memory's size.
    void Describe();

    ImageLayout m_layout;
    std::string m_formatName;
    std::size_t m_stride = 0;
    std::size_t m_imageSize = 0;
    std::size_t m_memorySize = 0;
    ChunkData m_chunks;
    Memory m_memory = Memory::Owned;

    mutable Mutex m_mutex;
    std::uint8_t* m_data GUARDED_BY(m_mutex) = nullptr;
    std::shared_ptr<void> m_owner GUARDED_BY(m_mutex);
    bool m_released GUARDED_BY(m_mutex) = false;
};

} // namespace Norvane::Imaging
