// Still images, read back by decoders that have nothing to do with the code that wrote them.
#include "../ErrorOf.h"

#include "norvane/Image.h"

#include <gmock/gmock.h>
#include <openjpeg.h>
#include <png.h>
#include <tiffio.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <jpeglib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Norvane {
namespace {

namespace fs = std::filesystem;
using Test::ErrorOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// What a decoder found: samples from the top left on, red first, in units of `top`.
struct Picture {
    std::size_t width = 0, height = 0, channels = 0;
    unsigned top = 0;
    std::vector<unsigned> samples;
};

int ExitStatusOf(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class SaveTest : public testing::Test {
protected:
    void SetUp() override {
        m_folder = fs::temp_directory_path() / ("norvane-save-" + std::to_string(::getpid()));
        fs::create_directories(m_folder);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    std::vector<std::string> FilesLeft() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    fs::path m_folder;
};

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

Picture ReadPng(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    Picture p{png_get_image_width(png, info),
              png_get_image_height(png, info),
              png_get_channels(png, info),
              255,
              {}};
    const bool deep = png_get_bit_depth(png, info) == 16;
    p.top = deep ? 65535 : 255;
    png_bytepp rows = png_get_rows(png, info);
    for (std::size_t y = 0; y < p.height; ++y) {
        for (std::size_t i = 0; i < p.width * p.channels; ++i) {
            p.samples.push_back(deep ? reinterpret_cast<std::uint16_t*>(rows[y])[i] : rows[y][i]);
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return p;
}

Picture ReadTiff(const std::string& path) {
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    if (!tiff) {
        return {};
    }
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 0, samples = 0, scheme = 0, photometric = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &scheme);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    if (scheme == COMPRESSION_JPEG && samples == 3) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    Picture p{width, height, samples, (1U << bits) - 1, {}};
    std::vector<std::uint8_t> line(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
    for (std::uint32_t y = 0; y < height; ++y) {
        TIFFReadScanline(tiff, line.data(), y);
        for (std::size_t i = 0; i < std::size_t{width} * samples; ++i) {
            const unsigned bit = line[i / 8] >> (7 - i % 8) & 1U;
            p.samples.push_back(bits == 16  ? reinterpret_cast<std::uint16_t*>(line.data())[i]
                                : bits == 1 ? (photometric == PHOTOMETRIC_MINISWHITE ? 1 - bit : bit)
                                            : line[i]);
        }
    }
    TIFFClose(tiff);
    return p;
}

Picture ReadJpeg(const std::string& path, bool* progressive = nullptr) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    if (progressive) {
        *progressive = jpeg.progressive_mode;
    }
    jpeg_start_decompress(&jpeg);
    Picture p{
        jpeg.output_width, jpeg.output_height, static_cast<std::size_t>(jpeg.output_components), 255, {}};
    std::vector<JSAMPLE> line(p.width * p.channels);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = line.data();
        jpeg_read_scanlines(&jpeg, &row, 1);
        p.samples.insert(p.samples.end(), line.begin(), line.end());
    }
    jpeg_destroy_decompress(&jpeg);
    std::fclose(file);
    return p;
}

Picture ReadJpeg2000(const std::string& path) {
    opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_JP2);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_setup_decoder(codec, &parameters);
    opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_TRUE);
    opj_image_t* image = nullptr;
    Picture p;
    if (stream && opj_read_header(stream, codec, &image) && opj_decode(codec, stream, image)) {
        p = {image->comps[0].w, image->comps[0].h, image->numcomps, (1U << image->comps[0].prec) - 1, {}};
        for (std::size_t i = 0; i < p.width * p.height; ++i) {
            for (std::size_t c = 0; c < p.channels; ++c) {
                p.samples.push_back(static_cast<unsigned>(image->comps[c].data[i]));
            }
        }
    }
    opj_image_destroy(image);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    return p;
}

unsigned Little(const std::string& bytes, std::size_t at, std::size_t count) {
    unsigned value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

Picture ReadBmp(const std::string& path) {
    const std::string bytes = ReadFile(path);
    EXPECT_EQ(bytes.substr(0, 2), "BM");
    EXPECT_EQ(Little(bytes, 2, 4), bytes.size());
    const std::size_t offset = Little(bytes, 10, 4);
    const bool indexed = Little(bytes, 28, 2) == 8;
    Picture p{Little(bytes, 18, 4), Little(bytes, 22, 4), std::size_t{indexed ? 1U : 3U}, 255, {}};
    const std::size_t pitch = (p.width * p.channels + 3) / 4 * 4;
    EXPECT_EQ(offset + pitch * p.height, bytes.size());
    for (std::size_t y = p.height; y-- > 0;) {
        for (std::size_t x = 0; x < p.width; ++x) {
            for (std::size_t c = 0; c < p.channels; ++c) {
                const auto v = static_cast<unsigned char>(
                    bytes[offset + y * pitch + x * p.channels + p.channels - 1 - c]);
                p.samples.push_back(indexed ? Little(bytes, 54 + 4 * std::size_t{v}, 1) : v);
            }
        }
    }
    return p;
}

Picture ReadPnm(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    Picture p;
    file >> magic >> p.width >> p.height >> p.top;
    p.channels = magic == "P3" || magic == "P6" ? 3 : 1;
    file.get();
    for (std::size_t i = 0; i < p.width * p.height * p.channels; ++i) {
        unsigned v = 0;
        if (magic == "P2" || magic == "P3") {
            file >> v;
        } else {
            v = static_cast<unsigned>(file.get());
            if (p.top > 255) {
                v = v << 8 | static_cast<unsigned>(file.get());
            }
        }
        p.samples.push_back(v);
    }
    EXPECT_TRUE(file) << path;
    return p;
}

/// An image of smooth content with some noise, in a format of 8 or 16 bits per component.
struct Original {
    Original(PixelFormatEnums pixelFormat, std::size_t w, std::size_t h, unsigned seed = 1)
        : format(pixelFormat), width(w), height(h) {
        const PixelFormatInfo& info = *FindPixelFormat(format);
        channels = info.name.find("RGB") == 0 || info.name.find("BGR") == 0 ? 3 : 1;
        bytesPerSample = info.significantBits > 8 ? 2 : 1;
        bits = info.significantBits;
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < w * h * channels; ++i) {
            const std::size_t x = i / channels % w, y = i / channels / w;
            const double level = 0.5 + 0.4 * std::sin(static_cast<double>(x + y * (1 + i % channels)) / 9);
            const double value = level * ((1U << bits) - 1) + static_cast<double>(random() % 3);
            samples.push_back(std::min(static_cast<unsigned>(value), (1U << bits) - 1));
        }
        for (const unsigned v : samples) {
            bytes.push_back(static_cast<std::uint8_t>(v));
            if (bytesPerSample == 2) {
                bytes.push_back(static_cast<std::uint8_t>(v >> 8));
            }
        }
        image = Image::Create(w, h, 0, 0, format, bytes.data());
    }

    /// The samples red first, on a scale of `top`.
    std::vector<unsigned> Expected(unsigned top) const {
        std::vector<unsigned> expected;
        const bool blueFirst = FindPixelFormat(format)->name[0] == 'B' && channels == 3;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const unsigned v = samples[blueFirst ? i - i % 3 + 2 - i % 3 : i];
            const unsigned own = (1U << bits) - 1;
            expected.push_back(top == own  ? v
                               : top < own ? v >> (bits - 8)
                                           : (v << (16 - bits) | v >> (2 * bits - 16)));
        }
        return expected;
    }

    PixelFormatEnums format;
    std::size_t width, height, channels, bytesPerSample;
    unsigned bits;
    std::vector<unsigned> samples;
    std::vector<std::uint8_t> bytes;
    ImagePtr image;
};

void ExpectSame(const Picture& got, const Original& original, unsigned top, double meanError = 0) {
    ASSERT_EQ(got.width, original.width);
    ASSERT_EQ(got.height, original.height);
    ASSERT_EQ(got.channels, original.channels);
    EXPECT_EQ(got.top, top);
    const std::vector<unsigned> expected = original.Expected(top);
    if (meanError == 0) {
        EXPECT_EQ(got.samples, expected);
        return;
    }
    double sum = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        sum += std::abs(double(got.samples[i]) - double(expected[i]));
    }
    EXPECT_LT(sum / static_cast<double>(expected.size()), meanError);
}

constexpr PixelFormatEnums kFormats[] = {PixelFormat_Mono8, PixelFormat_BayerRG8, PixelFormat_RGB8,
                                         PixelFormat_BGR8,  PixelFormat_Mono12,   PixelFormat_BayerGB16,
                                         PixelFormat_BGR10, PixelFormat_RGB16};

TEST_F(SaveTest, LosslessFormatsGiveThePixelsBack) {
    for (const PixelFormatEnums format : kFormats) {
        const Original original(format, 53, 31);
        SCOPED_TRACE(original.image->GetPixelFormatName());
        const bool deep = original.bits > 8;
        for (const bool interlaced : {false, true}) {
            PNGOption option;
            option.interlaced = interlaced;
            option.compressionLevel = interlaced ? 0 : 8;
            original.image->Save(Path("a.png").c_str(), option);
            ExpectSame(ReadPng(Path("a.png")), original, deep ? 65535 : 255);
        }
        for (const auto method : {TIFFOption::NONE, TIFFOption::PACKBITS, TIFFOption::DEFLATE,
                                  TIFFOption::ADOBE_DEFLATE, TIFFOption::LZW}) {
            TIFFOption option;
            option.compression = method;
            original.image->Save(Path("a.tiff").c_str(), option);
            ExpectSame(ReadTiff(Path("a.tiff")), original, deep ? 65535 : 255);
        }
        for (const bool binary : {false, true}) {
            const auto save = [&](auto option, const std::string& path) {
                option.binaryFile = binary;
                original.image->Save(path.c_str(), option);
                ExpectSame(ReadPnm(path), original, (1U << original.bits) - 1);
            };
            original.channels == 1 ? save(PGMOption(), Path("a.pgm")) : save(PPMOption(), Path("a.ppm"));
        }
        BMPOption indexed;
        indexed.indexedColor_8bit = true;
        original.image->Save(Path("a.bmp").c_str(), indexed);
        ExpectSame(ReadBmp(Path("a.bmp")), original, 255);
        JPG2Option lossless;
        lossless.quality = 1;
        original.image->Save(Path("a.jp2").c_str(), lossless);
        ExpectSame(ReadJpeg2000(Path("a.jp2")), original, (1U << original.bits) - 1);
        original.image->Save(Path("a.raw").c_str());
        EXPECT_EQ(ReadFile(Path("a.raw")), std::string(original.bytes.begin(), original.bytes.end()));
    }
}

TEST_F(SaveTest, LossyFormatsStayClose) {
    for (const PixelFormatEnums format : kFormats) {
        const Original original(format, 128, 96);
        SCOPED_TRACE(original.image->GetPixelFormatName());
        std::uintmax_t sizes[2];
        for (const unsigned quality : {30U, 95U}) {
            JPEGOption option;
            option.quality = quality;
            option.progressive = quality == 95;
            original.image->Save(Path("a.jpg").c_str(), option);
            bool progressive = false;
            ExpectSame(ReadJpeg(Path("a.jpg"), &progressive), original, 255, 12);
            EXPECT_EQ(progressive, option.progressive);
            sizes[quality == 95] = fs::file_size(Path("a.jpg"));
        }
        EXPECT_LT(sizes[0], sizes[1]);
        TIFFOption jpeg;
        jpeg.compression = TIFFOption::JPEG;
        original.image->Save(Path("a.tif").c_str(), jpeg);
        ExpectSame(ReadTiff(Path("a.tif")), original, 255, 12);
        JPG2Option small;
        small.quality = 16;
        original.image->Save(Path("a.jp2").c_str(), small);
        ExpectSame(ReadJpeg2000(Path("a.jp2")), original, (1U << original.bits) - 1,
                   0.03 * (1U << original.bits));
        EXPECT_LT(fs::file_size(Path("a.jp2")), original.bytes.size() / 8);
    }
}

TEST_F(SaveTest, MonoAndColourMeetWhereTheFormatKnowsOnlyOne) {
    std::uint8_t grey[] = {0, 100, 255};
    const ImagePtr mono = Image::Create(3, 1, 0, 0, PixelFormat_Mono8, grey);
    mono->Save(Path("grey.ppm").c_str());
    EXPECT_THAT(ReadPnm(Path("grey.ppm")).samples, ElementsAre(0, 0, 0, 100, 100, 100, 255, 255, 255));
    mono->Save(Path("grey.bmp").c_str());
    EXPECT_EQ(ReadBmp(Path("grey.bmp")).channels, 3U);
    std::uint8_t color[] = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    Image::Create(3, 1, 0, 0, PixelFormat_BGR8, color)->Save(Path("color.pgm").c_str());
    EXPECT_THAT(ReadPnm(Path("color.pgm")).samples, ElementsAre(29, 150, 76));
}

TEST_F(SaveTest, FacsimileTakesBlackAndWhiteOnly) {
    std::vector<std::uint8_t> pixels(40 * 20);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = i / 3 % 2 ? 255 : 0;
    }
    const ImagePtr image = Image::Create(40, 20, 0, 0, PixelFormat_Mono8, pixels.data());
    for (const auto method : {TIFFOption::CCITTFAX3, TIFFOption::CCITTFAX4}) {
        TIFFOption option;
        option.compression = method;
        pixels[7] = 0;
        image->Save(Path("fax.tif").c_str(), option);
        const Picture read = ReadTiff(Path("fax.tif"));
        ASSERT_EQ(read.samples.size(), pixels.size());
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            ASSERT_EQ(read.samples[i], pixels[i] / 255U) << i;
        }
        pixels[7] = 128;
        std::string message;
        EXPECT_EQ(ErrorOf([&] { image->Save(Path("grey.tif").c_str(), option); }, &message),
                  Error::FileFormat);
        EXPECT_THAT(message, HasSubstr("black and white only"));
        EXPECT_FALSE(fs::exists(Path("grey.tif")));
    }
}

TEST_F(SaveTest, TheNameDecidesTheFormat) {
    const Original original(PixelFormat_RGB8, 20, 10);
    for (const char* name :
         {"mit Leerzeichen und \xC3\x9Cmlaut \xE6\x97\xA5\xE6\x9C\xAC.PNG", "two.dots.png"}) {
        original.image->Save(Path(name).c_str());
        ExpectSame(ReadPng(Path(name)), original, 255);
    }
    original.image->Save(Path("a.jpg2000").c_str());
    EXPECT_EQ(ReadJpeg2000(Path("a.jpg2000")).width, 20U);
    // An explicit code counts more than the name.
    original.image->Save(Path("really-bmp.png").c_str(), FILE_FORMAT_BMP);
    EXPECT_EQ(ReadBmp(Path("really-bmp.png")).width, 20U);
    std::string message;
    for (const char* name : {"a.xyz", "noextension", ".png/none", ""}) {
        EXPECT_EQ(ErrorOf([&] { original.image->Save(Path(name).c_str()); }, &message), Error::FileFormat)
            << name;
    }
    EXPECT_EQ(ErrorOf([&] { original.image->Save(nullptr, FILE_FORMAT_PNG); }), Error::InvalidParameter);
    EXPECT_EQ(ErrorOf([&] { original.image->Save(Path("a").c_str(), static_cast<ImageFileFormat>(42)); }),
              Error::InvalidParameter);
}

TEST_F(SaveTest, OptionsOutOfRangeAreRefused) {
    const Original original(PixelFormat_Mono8, 8, 8);
    const auto error = [&](const auto& option) {
        return ErrorOf([&] { original.image->Save(Path("a").c_str(), option); });
    };
    EXPECT_EQ(error(PNGOption{false, 10}), Error::InvalidParameter);
    EXPECT_EQ(error(JPEGOption{false, 0}), Error::InvalidParameter);
    EXPECT_EQ(error(JPEGOption{false, 101}), Error::InvalidParameter);
    EXPECT_EQ(error(JPG2Option{0}), Error::InvalidParameter);
    EXPECT_EQ(error(TIFFOption{static_cast<TIFFOption::CompressionMethod>(99)}), Error::InvalidParameter);
    EXPECT_THAT(FilesLeft(), testing::IsEmpty());
}

TEST_F(SaveTest, AFailedSaveLeavesTheOldFileAndNoHalfOne) {
    const Original original(PixelFormat_RGB8, 64, 64);
    const std::vector<ImageFileFormat> formats{FILE_FORMAT_PGM,  FILE_FORMAT_PPM,      FILE_FORMAT_BMP,
                                               FILE_FORMAT_JPEG, FILE_FORMAT_JPEG2000, FILE_FORMAT_TIFF,
                                               FILE_FORMAT_PNG,  FILE_FORMAT_RAW};
    for (const ImageFileFormat format : formats) {
        std::string message;
        EXPECT_EQ(ErrorOf([&] { original.image->Save("/dev/full", format); }, &message), Error::Io) << format;
        EXPECT_THAT(message, HasSubstr("No space left on device"));
        EXPECT_EQ(ErrorOf([&] { original.image->Save(Path("no/such/folder").c_str(), format); }, &message),
                  Error::Io);
        EXPECT_THAT(message, HasSubstr("No such file or directory"));
        EXPECT_EQ(ErrorOf([&] { original.image->Save(m_folder.c_str(), format); }), Error::Io);
    }

    // A limit on the file's size stands for a disk that fills up in the middle.
    std::ofstream(Path("old.png")) << "precious";
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit full{500, unlimited.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &full); // also for what the test prints
    const bool allFailed = std::all_of(formats.begin(), formats.end(), [&](ImageFileFormat format) {
        return ErrorOf([&] { original.image->Save(Path("old.png").c_str(), format); }) == Error::Io;
    });
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_TRUE(allFailed);
    EXPECT_EQ(ReadFile(Path("old.png")), "precious");
    EXPECT_THAT(FilesLeft(), ElementsAre("old.png"));
}

TEST_F(SaveTest, AFolderThatTheUserMayNotWriteToIsNamedInTheError) {
    const Original original(PixelFormat_RGB8, 8, 8);
    std::ofstream(Path("old.png")) << "precious";
    fs::permissions(m_folder, fs::perms(0555));
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        if (::geteuid() == 0 && ::setuid(kNobody) != 0) { // root may write everywhere
            ::_exit(2);
        }
        const auto refused = [&](const std::string& name) {
            std::string message;
            return ErrorOf([&] { original.image->Save(Path(name).c_str()); }, &message) == Error::Io &&
                   message.find("Permission denied") != std::string::npos &&
                   message.find(Path(name)) != std::string::npos;
        };
        ::_exit(refused("new.png") && refused("new.tiff") && refused("old.png") ? 0 : 1);
    }
    EXPECT_EQ(ExitStatusOf(child), 0);
    fs::permissions(m_folder, fs::perms(0755));
    EXPECT_EQ(ReadFile(Path("old.png")), "precious");
    EXPECT_THAT(FilesLeft(), ElementsAre("old.png"));
}

TEST_F(SaveTest, ALinkKeepsLeadingToItsFile) {
    const Original original(PixelFormat_Mono8, 8, 8);
    std::ofstream(Path("target.raw")) << "old";
    fs::create_symlink(Path("target.raw"), Path("link.raw"));
    original.image->Save(Path("link.raw").c_str());
    EXPECT_TRUE(fs::is_symlink(Path("link.raw")));
    EXPECT_EQ(fs::file_size(Path("target.raw")), 64U);
}

} // namespace
} // namespace Norvane
