// Any bytes as a file of class names.
#include "ClassLabels.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QMap<int, QString> labels = ReadClassLabels(text);
    for (auto label = labels.begin(); label != labels.end(); ++label) {
        if (label.key() < 0 || label.key() > text.count('\n') + text.count('\r') || label->size() > 4096 ||
            label->contains('\n')) {
            std::abort();
        }
    }
    return 0;
}
