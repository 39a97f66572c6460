#pragma once

#include "norvane/BasePtr.h"
#include "norvane/ChunkData.h"
#include "norvane/ImageOptions.h"
#include "norvane/PixelFormat.h"

#include <cstddef>
#include <cstdint>

namespace Norvane {

/// How a Bayer image becomes colour. Papers stand with the kernels in src/imaging.
enum ColorProcessingAlgorithm : int {
    DEFAULT = 0,                      ///< bilinear
    NO_COLOR_PROCESSING = 1,          ///< the raw mosaic as grey
    NEAREST_NEIGHBOR = 2,             ///< each missing colour from the nearest pixel that has it
    NEAREST_NEIGHBOR_AVG = 3,         ///< likewise, green as the mean of two
    BILINEAR = 4,                     ///< means of the nearest pixels of that colour
    EDGE_SENSING = 5,                 ///< green along edges (Laroche and Prescott)
    HQ_LINEAR = 6,                    ///< linear, 5 x 5 pixels (Malvar, He, Cutler 2004)
    IPP = 7,                          ///< the result of BILINEAR
    DIRECTIONAL_FILTER = 8,           ///< Menon, Andriani, Calvagno 2007
    RIGOROUS = 9,                     ///< the best, whatever it costs
    WEIGHTED_DIRECTIONAL_FILTER = 10, ///< Pekkucuksen and Altunbasak 2010
};

/// Why an image is incomplete.
enum ImageStatus : int {
    IMAGE_UNKNOWN_ERROR = -1,
    IMAGE_NO_ERROR = 0,
    IMAGE_CRC_CHECK_FAILED = 1,
    IMAGE_DATA_OVERFLOW = 2,
    IMAGE_MISSING_PACKETS = 3,
    IMAGE_LEADER_BUFFER_SIZE_INCONSISTENT = 4,
    IMAGE_TRAILER_BUFFER_SIZE_INCONSISTENT = 5,
    IMAGE_PACKETID_INCONSISTENT = 6,
    IMAGE_MISSING_LEADER = 7,
    IMAGE_MISSING_TRAILER = 8,
    IMAGE_DATA_INCOMPLETE = 9,
    IMAGE_INFO_INCONSISTENT = 10,
    IMAGE_CHUNK_DATA_INVALID = 11,
    IMAGE_NO_SYSTEM_RESOURCES = 12,
};

class IImage;

/// A handle to an image. The last handle gives a stream's buffer back to the stream.
class ImagePtr : public BasePtr<IImage, IImage> {
public:
    using BasePtr::BasePtr;
    /// Holds nothing.
    ImagePtr() noexcept = default;
};

/// One image: geometry, identity, pixels and chunk data. Geometry, frame ID and time stamp stay readable
/// after Release(); the pixels do not. Read on any thread; an image that a caller writes into (Convert's
/// destination, DeepCopy's target) belongs to that caller meanwhile.
class IImage {
public:
    virtual ~IImage() = default;

    virtual std::size_t GetWidth() const noexcept = 0;   ///< pixels
    virtual std::size_t GetHeight() const noexcept = 0;  ///< pixels
    virtual std::size_t GetXOffset() const noexcept = 0; ///< pixels on the sensor
    virtual std::size_t GetYOffset() const noexcept = 0; ///< pixels on the sensor
    /// PixelFormat_Undefined for an empty image.
    virtual PixelFormatEnums GetPixelFormat() const noexcept = 0;
    virtual const char* GetPixelFormatName() const noexcept = 0; ///< PFNC name
    /// In memory, the mean where pixels share bytes; 0 for a format that the library does not know.
    virtual std::size_t GetBitsPerPixel() const noexcept = 0;
    virtual std::size_t GetStride() const noexcept = 0;    ///< bytes from row to row, 0 when rows share bytes
    virtual std::size_t GetImageSize() const noexcept = 0; ///< bytes of pixels, padding included
    /// The camera's count of images; gaps are lost images.
    virtual std::uint64_t GetFrameID() const noexcept = 0;
    virtual std::uint64_t GetTimeStamp() const noexcept = 0; ///< ns on the camera's clock
    /// Whether pixels are missing; they read as zero.
    virtual bool IsIncomplete() const noexcept = 0;
    /// IMAGE_NO_ERROR for a complete image.
    virtual ImageStatus GetImageStatus() const noexcept = 0;

    /// The pixels, GetImageSize() bytes; null after Release() and for an empty image.
    virtual void* GetData() const noexcept = 0;
    /// What the camera attached to the image; empty when it attached nothing.
    virtual ChunkData GetChunkData() const = 0;

    /// Gives the buffer back to its stream now; further calls do nothing.
    virtual void Release() = 0;
    /// Whether Release() was called.
    virtual bool IsReleased() const noexcept = 0;

    /// Makes this image an independent copy of `source`: pixels, geometry, identity, status, chunk data.
    /// @throws Exception when this image lies over caller memory or `source` is released.
    virtual void DeepCopy(const ImagePtr& source) = 0;

    /// A new image in `format`, which is an unpacked mono, Bayer, RGB or BGR format of 8 to 16 bits or the
    /// image's own. Depth is scaled so that full scale stays full scale; mono becomes grey, colour becomes
    /// luma (ITU-R BT.601). An incomplete image converts as it is.
    /// @throws Exception (ImageConversion) for a pair of formats that the library cannot convert,
    ///         (InvalidBuffer) when the pixels are fewer than the geometry says.
    virtual ImagePtr Convert(PixelFormatEnums format, ColorProcessingAlgorithm algorithm = DEFAULT) const = 0;
    /// The same into `destination`, whose format, width and height decide; its memory is not reallocated.
    virtual void Convert(const ImagePtr& destination, ColorProcessingAlgorithm algorithm = DEFAULT) const = 0;

    /// Writes the image to a file. The name is UTF-8. With FILE_FORMAT_FROM_FILE_EXT the extension decides
    /// and an unknown one is an error. The file appears when it is whole; until then an older one stays. A
    /// Bayer mosaic is written as grey. PNG and TIFF hold more than 8 bits as 16 (full scale stays full
    /// scale), PGM, PPM and JPEG 2000 as they are; the other formats drop the low bits.
    /// @throws Exception (Io) with the system's reason, (FileFormat) for pixels that the format cannot hold.
    virtual void Save(const char* fileName, ImageFileFormat format = FILE_FORMAT_FROM_FILE_EXT) const = 0;
    /// Likewise as PNG, whatever the extension.
    virtual void Save(const char* fileName, const PNGOption& option) const = 0;
    /// Likewise as BMP.
    virtual void Save(const char* fileName, const BMPOption& option) const = 0;
    /// Likewise as PGM.
    virtual void Save(const char* fileName, const PGMOption& option) const = 0;
    /// Likewise as PPM.
    virtual void Save(const char* fileName, const PPMOption& option) const = 0;
    /// Likewise as JPEG.
    virtual void Save(const char* fileName, const JPEGOption& option) const = 0;
    /// Likewise as JPEG 2000.
    virtual void Save(const char* fileName, const JPG2Option& option) const = 0;
    /// Likewise as TIFF.
    virtual void Save(const char* fileName, const TIFFOption& option) const = 0;
};

/// Makes images that belong to the program. Any thread.
class Image {
public:
    /// An empty image, to be filled by DeepCopy.
    static ImagePtr Create();
    /// An image over caller memory, which must hold the whole image, rows without padding, and outlive it.
    static ImagePtr Create(std::uint64_t width, std::uint64_t height, std::uint64_t offsetX,
                           std::uint64_t offsetY, PixelFormatEnums format, void* data);
};

} // namespace Norvane
