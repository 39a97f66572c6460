#include "imaging/Save/FileWriter.h"
#include "imaging/Save/Save.h"
#include "imaging/Save/SaveRows.h"

#include "norvane/Exception.h"

#include <csetjmp>
#include <cstdio>
#include <string>

#include <jpeglib.h>

#include <jerror.h>

namespace Norvane::Imaging {
namespace {

constexpr std::size_t kBufferSize = 1 << 16;

/// libjpeg's manager of errors and its destination; it leaves through longjmp, so nothing between the setjmp
/// and its calls has a destructor.
struct Encoder {
    jpeg_compress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg_destination_mgr destination;
    FileWriter* file;
    std::jmp_buf leave;
    char message[JMSG_LENGTH_MAX];
    JOCTET buffer[kBufferSize];
};

Encoder& EncoderOf(j_common_ptr jpeg) {
    return *static_cast<Encoder*>(jpeg->client_data);
}

void OnError(j_common_ptr jpeg) {
    Encoder& encoder = EncoderOf(jpeg);
    jpeg->err->format_message(jpeg, encoder.message);
    std::longjmp(encoder.leave, 1);
}

void OnMessage(j_common_ptr) {}

void Rewind(Encoder& encoder) {
    encoder.destination.next_output_byte = encoder.buffer;
    encoder.destination.free_in_buffer = kBufferSize;
}

void OnBegin(j_compress_ptr jpeg) {
    Rewind(EncoderOf(reinterpret_cast<j_common_ptr>(jpeg)));
}

void WriteOut(j_compress_ptr jpeg, std::size_t size) {
    Encoder& encoder = EncoderOf(reinterpret_cast<j_common_ptr>(jpeg));
    if (!encoder.file->TryWrite(encoder.buffer, size)) {
        ERREXIT(jpeg, JERR_FILE_WRITE);
    }
    Rewind(encoder);
}

boolean OnFull(j_compress_ptr jpeg) {
    WriteOut(jpeg, kBufferSize);
    return TRUE;
}

void OnEnd(j_compress_ptr jpeg) {
    WriteOut(jpeg, kBufferSize - jpeg->dest->free_in_buffer);
}

bool Encode(Encoder& encoder, const PixelView& view, bool color, const JPEGOption& option,
            SaveRows<std::uint8_t>& rows) {
    if (setjmp(encoder.leave)) {
        return false;
    }
    j_compress_ptr jpeg = &encoder.jpeg;
    jpeg_create_compress(jpeg);
    jpeg->client_data = &encoder;
    jpeg->dest = &encoder.destination;
    jpeg->image_width = view.width;
    jpeg->image_height = view.height;
    jpeg->input_components = color ? 3 : 1;
    jpeg->in_color_space = color ? JCS_EXT_BGR : JCS_GRAYSCALE;
    jpeg_set_defaults(jpeg);
    jpeg_set_quality(jpeg, static_cast<int>(option.quality), TRUE);
    if (option.progressive) {
        jpeg_simple_progression(jpeg);
    }
    jpeg_start_compress(jpeg, TRUE);
    while (jpeg->next_scanline < jpeg->image_height) {
        auto* row = const_cast<JSAMPROW>(rows.Row(jpeg->next_scanline));
        jpeg_write_scanlines(jpeg, &row, 1);
    }
    jpeg_finish_compress(jpeg);
    return true;
}

} // namespace

void SaveJpeg(const PixelView& view, const char* fileName, const JPEGOption& option) {
    if (option.quality < 1 || option.quality > 100) {
        throw Exception(Error::InvalidParameter,
                        "JPEG: the quality is 1 to 100, not " + std::to_string(option.quality));
    }
    const RowReader reader(view, "Save");
    if (view.width > JPEG_MAX_DIMENSION || view.height > JPEG_MAX_DIMENSION) {
        throw Exception(Error::FileFormat, "JPEG: images end at " + std::to_string(JPEG_MAX_DIMENSION) +
                                               " pixels a side, this one is " + std::to_string(view.width) +
                                               " x " + std::to_string(view.height));
    }
    FileWriter file(fileName);
    SaveRows<std::uint8_t> rows(reader, view.width, SaveRows<std::uint8_t>::Order::Bgr);
    Encoder encoder{};
    encoder.file = &file;
    encoder.jpeg.err = jpeg_std_error(&encoder.errors);
    encoder.jpeg.client_data = &encoder;
    encoder.errors.error_exit = OnError;
    encoder.errors.output_message = OnMessage;
    encoder.destination.init_destination = OnBegin;
    encoder.destination.empty_output_buffer = OnFull;
    encoder.destination.term_destination = OnEnd;
    const bool ok = Encode(encoder, view, reader.IsColor(), option, rows);
    jpeg_destroy_compress(&encoder.jpeg);
    file.ThrowIfFailed();
    if (!ok) {
        throw Exception(Error::FileFormat, std::string("JPEG: ") + encoder.message);
    }
    file.Commit();
}

} // namespace Norvane::Imaging
