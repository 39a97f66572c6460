#include "transport/emulator/InferenceResult.h"

#include "transport/emulator/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Norvane::Transport::Emulator {

InferenceResult Infer(const ImageGeometry& geometry, double seconds, double leastConfidence,
                      std::size_t mostBoxes) {
    InferenceResult result;
    const double centreX = geometry.width / 2.0, centreY = geometry.height / 2.0;
    const double diagonal = std::hypot(centreX, centreY);
    double nearest = 1e9;
    for (const SceneObject& object : Scene::ObjectsAt(geometry, seconds)) {
        const PixelRect rect = Scene::OutlineOf(object, geometry);
        if (rect.IsEmpty()) {
            continue;
        }
        const double distance =
            std::hypot((rect.left + rect.right) / 2.0 - centreX, (rect.top + rect.bottom) / 2.0 - centreY);
        if (distance < nearest) {
            nearest = distance;
            result.classId = object.shape;
            result.confidence = std::clamp(object.confidence * (1.05 - 0.6 * distance / diagonal), 0.0, 1.0);
        }
        if (object.confidence >= leastConfidence && result.boxes.size() < std::min(mostBoxes, kMostBoxes)) {
            const auto narrow = [](std::int32_t value) { return static_cast<std::int16_t>(value); };
            result.boxes.push_back({static_cast<std::int16_t>(object.shape),
                                    static_cast<float>(object.confidence), narrow(rect.left),
                                    narrow(rect.top), narrow(rect.right), narrow(rect.bottom)});
        }
    }
    return result;
}

std::vector<std::uint8_t> EncodeBoxes(const std::vector<InferenceResult::Box>& boxes) {
    std::vector<std::uint8_t> bytes;
    const auto put16 = [&](int value) {
        bytes.push_back(static_cast<std::uint8_t>(value));
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    };
    put16(1);
    put16(static_cast<int>(boxes.size()));
    for (const InferenceResult::Box& box : boxes) {
        std::uint32_t confidence = 0;
        std::memcpy(&confidence, &box.confidence, sizeof confidence);
        put16(0);
        put16(box.classId);
        put16(static_cast<int>(confidence & 0xFFFF));
        put16(static_cast<int>(confidence >> 16));
        for (const std::int16_t corner : {box.left, box.top, box.right, box.bottom}) {
            put16(corner);
        }
    }
    bytes.resize(kBoxBytes);
    return bytes;
}

} // namespace Norvane::Transport::Emulator
