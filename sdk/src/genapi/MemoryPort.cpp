#include "base/Mutex.h"
#include "norvane/genapi/NodeMapFactory.h"

#include <array>
#include <cstdint>
#include <unordered_map>

namespace Norvane::GenApi {

namespace {

/// Bytes in pages that come into being when they are written. Safe to use from several node maps at once.
class MemoryPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }

    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        const MutexLock lock(m_mutex);
        auto* const bytes = static_cast<std::uint8_t*>(buffer);
        for (std::int64_t i = 0; i < length; ++i) {
            const auto at = static_cast<std::uint64_t>(address) + static_cast<std::uint64_t>(i);
            const auto page = m_pages.find(at / kPage);
            bytes[i] = page == m_pages.end() ? std::uint8_t{0} : page->second[at % kPage];
        }
    }

    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        const MutexLock lock(m_mutex);
        const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
        for (std::int64_t i = 0; i < length; ++i) {
            const auto at = static_cast<std::uint64_t>(address) + static_cast<std::uint64_t>(i);
            m_pages[at / kPage][at % kPage] = bytes[i];
        }
    }

private:
    static constexpr std::uint64_t kPage = 4096;
    Mutex m_mutex;
    std::unordered_map<std::uint64_t, std::array<std::uint8_t, kPage>> m_pages GUARDED_BY(m_mutex);
};

} // namespace

std::shared_ptr<IPort> CreateMemoryPort() {
    return std::make_shared<MemoryPort>();
}

} // namespace Norvane::GenApi
