#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include "norvane/Exception.h"

#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <thread>

namespace Norvane::Imaging {
namespace {

constexpr std::size_t kStreamBuffer = std::size_t{1} << 20;

// Codec and stream are both pointers to void in OpenJPEG.
template <auto kDestroy>
struct Destroy {
    template <class T>
    void operator()(T* object) const noexcept {
        kDestroy(object);
    }
};

using ImageHandle = std::unique_ptr<opj_image_t, Destroy<opj_image_destroy>>;

void OnError(const char* message, void* text) {
    auto& error = *static_cast<std::string*>(text);
    if (error.empty()) {
        error = message;
        while (!error.empty() && error.back() == '\n') {
            error.pop_back();
        }
    }
}

OPJ_SIZE_T OnWrite(void* data, OPJ_SIZE_T size, void* file) {
    return static_cast<FileWriter*>(file)->TryWrite(data, size) ? size : static_cast<OPJ_SIZE_T>(-1);
}

OPJ_OFF_T OnSkip(OPJ_OFF_T count, void* file) {
    auto& writer = *static_cast<FileWriter*>(file);
    return writer.TrySeek(writer.Position() + static_cast<std::uint64_t>(count)) ? count : -1;
}

OPJ_BOOL OnSeek(OPJ_OFF_T position, void* file) {
    return static_cast<FileWriter*>(file)->TrySeek(static_cast<std::uint64_t>(position)) ? OPJ_TRUE
                                                                                         : OPJ_FALSE;
}

/// Components as the encoder wants them: one plane of 32-bit numbers each, red, green, blue.
template <class T>
void FillPlanes(opj_image_t& image, const RowReader& reader, const PixelView& view, unsigned bits) {
    SaveRows<T> rows(reader, view.width, SaveRows<T>::Order::Rgb);
    const unsigned drop = 8 * sizeof(T) - bits;
    for (std::size_t y = 0; y < view.height; ++y) {
        const T* row = rows.Row(y);
        for (unsigned c = 0; c < image.numcomps; ++c) {
            OPJ_INT32* plane = image.comps[c].data + y * view.width;
            for (std::size_t x = 0; x < view.width; ++x) {
                plane[x] = row[x * image.numcomps + c] >> drop;
            }
        }
    }
}

ImageHandle MakePlanes(const RowReader& reader, const PixelView& view) {
    const unsigned bits = std::max<unsigned>(8, reader.Layout().info.significantBits);
    const unsigned count = reader.SamplesPerPixel();
    std::array<opj_image_cmptparm_t, 3> components{};
    for (opj_image_cmptparm_t& component : components) {
        component.dx = component.dy = 1;
        component.w = view.width;
        component.h = view.height;
        component.prec = bits;
    }
    ImageHandle image(
        opj_image_create(count, components.data(), count == 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY));
    if (!image) {
        throw Exception(Error::OutOfMemory, "JPEG 2000: no memory for the image's planes");
    }
    image->x1 = view.width;
    image->y1 = view.height;
    if (bits > 8) {
        FillPlanes<std::uint16_t>(*image, reader, view, bits);
    } else {
        FillPlanes<std::uint8_t>(*image, reader, view, bits);
    }
    return image;
}

} // namespace

void SaveJpeg2000(const PixelView& view, const char* fileName, const JPG2Option& option) {
    if (option.quality < 1 || option.quality > 512) {
        throw Exception(Error::InvalidParameter, "JPEG 2000: the compression ratio is 1 to 512, not " +
                                                     std::to_string(option.quality));
    }
    const RowReader reader(view, "Save");
    FileWriter file(fileName);
    const ImageHandle image = MakePlanes(reader, view);

    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    // Ratio 1 means without loss.
    parameters.tcp_rates[0] = option.quality == 1 ? 0.0F : static_cast<float>(option.quality);
    parameters.irreversible = option.quality == 1 ? 0 : 1;
    parameters.tcp_mct = image->numcomps == 3 ? 1 : 0;
    // Each resolution halves the image; more of them than it can be halved are refused.
    while (parameters.numresolution > 1 &&
           std::min(view.width, view.height) < 1U << (parameters.numresolution - 1)) {
        --parameters.numresolution;
    }

    std::string error;
    const std::unique_ptr<opj_codec_t, Destroy<opj_destroy_codec>> codec(opj_create_compress(OPJ_CODEC_JP2));
    std::unique_ptr<opj_stream_t, Destroy<opj_stream_destroy>> stream(
        opj_stream_create(kStreamBuffer, OPJ_FALSE));
    if (!codec || !stream) {
        throw Exception(Error::OutOfMemory, "JPEG 2000: no memory for the encoder");
    }
    opj_set_error_handler(codec.get(), OnError, &error);
    opj_stream_set_user_data(stream.get(), &file, nullptr);
    opj_stream_set_write_function(stream.get(), OnWrite);
    opj_stream_set_skip_function(stream.get(), OnSkip);
    opj_stream_set_seek_function(stream.get(), OnSeek);
    const bool ready = opj_setup_encoder(codec.get(), &parameters, image.get());
    opj_codec_set_threads(codec.get(), static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
    const bool ok = ready && opj_start_compress(codec.get(), image.get(), stream.get()) &&
                    opj_encode(codec.get(), stream.get()) && opj_end_compress(codec.get(), stream.get());
    stream.reset();
    file.ThrowIfFailed();
    if (!ok) {
        throw Exception(Error::FileFormat, "JPEG 2000: " + error);
    }
    file.Commit();
}

} // namespace Norvane::Imaging
