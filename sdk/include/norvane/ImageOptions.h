#pragma once

namespace Norvane {

/// File formats of a saved image, by the numbers that the save operation takes.
enum ImageFileFormat : int {
    FILE_FORMAT_FROM_FILE_EXT = -1, ///< taken from the file name's extension
    FILE_FORMAT_PGM = 0,
    FILE_FORMAT_PPM = 1,
    FILE_FORMAT_BMP = 2,
    FILE_FORMAT_JPEG = 3,
    FILE_FORMAT_JPEG2000 = 4,
    FILE_FORMAT_TIFF = 5,
    FILE_FORMAT_PNG = 6,
    FILE_FORMAT_RAW = 7, ///< the camera's bytes as they are, no header
};

/// How a PNG file is written.
struct PNGOption {
    bool interlaced = false;           ///< Adam7, for pictures that build up while they load
    unsigned int compressionLevel = 6; ///< zlib level, 0 to 9
};

/// How a BMP file is written.
struct BMPOption {
    bool indexedColor_8bit = false; ///< mono images as 8-bit indexed grey; colour images ignore it
};

/// How a PGM file is written.
struct PGMOption {
    bool binaryFile = true; ///< P5 when true, else P2
};

/// How a PPM file is written.
struct PPMOption {
    bool binaryFile = true; ///< P6 when true, else P3
};

/// How a JPEG file is written.
struct JPEGOption {
    bool progressive = false;  ///< several passes from coarse to fine
    unsigned int quality = 75; ///< 1 to 100
};

/// How a JPEG 2000 file is written.
struct JPG2Option {
    unsigned int quality = 16; ///< compression ratio, 1 (without loss) to 512
};

/// How a TIFF file is written.
struct TIFFOption {
    /// Compression schemes of TIFF 6.0 and its supplements.
    enum CompressionMethod : int {
        NONE = 1,
        PACKBITS,
        DEFLATE,
        ADOBE_DEFLATE,
        CCITTFAX3, ///< mono images of black and white only
        CCITTFAX4, ///< likewise
        LZW,
        JPEG, ///< 8 bits
    };
    CompressionMethod compression = NONE; ///< what the pixels cannot be written in is an error
};

} // namespace Norvane
