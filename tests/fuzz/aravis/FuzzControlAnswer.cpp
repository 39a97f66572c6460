// Any bytes as a device's answer on the GigE Vision control channel.
#include "transport/aravis/Gvcp.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace Norvane::Transport::Gvcp;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto acknowledge = ParseAcknowledge({data, size});
    if (!acknowledge) {
        return 0;
    }
    const auto payload = acknowledge->payload;
    if (!payload.empty() && (payload.data() < data || payload.data() + payload.size() > data + size)) {
        std::abort();
    }
    if (const auto device = ParseDiscovery(*acknowledge)) {
        for (const std::string* text : {&device->vendor, &device->model, &device->version,
                                        &device->manufacturerInfo, &device->serial, &device->userName}) {
            if (text->size() > 48 || text->find('\0') != std::string::npos) {
                std::abort();
            }
        }
    }
    ParseReadRegister(*acknowledge);
    return 0;
}
