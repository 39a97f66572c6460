// Any bytes as a received payload with chunks, and each chunk as a list of bounding boxes.
#include "core/ChunkReader.h"
#include "norvane/Exception.h"
#include "transport/aravis/ChunkLayout.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace Norvane;
using namespace Norvane::Transport;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto order : {ChunkByteOrder::BigEndian, ChunkByteOrder::LittleEndian}) {
        // The image's share of the payload, which a camera may tell wrongly.
        for (const std::size_t imageBytes : {std::size_t{0}, size / 3, size, size + 100}) {
            for (const auto& [id, view] : ParseChunks(data, size, imageBytes, order).chunks) {
                if (view.data < data || view.data + view.size > data + size) {
                    std::abort();
                }
                try {
                    Core::ParseBoundingBoxes({view.data, view.data + view.size});
                } catch (const Exception&) {
                    // Refusing is what broken input deserves.
                }
            }
        }
    }
    try {
        Core::ParseBoundingBoxes({data, data + size});
    } catch (const Exception&) {
    }
    return 0;
}
