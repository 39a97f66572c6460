#pragma once

#include "norvane/genapi/NodeMapFactory.h"

#include <memory>
#include <string>
#include <vector>

namespace Norvane::GenApi {

/// What one engine says of a feature, as texts that can be compared; "-" where it has nothing to say.
struct FeatureState {
    std::string name;
    std::string available; ///< "not implemented", "not available" or "yes"
    std::string access;
    std::string value;
    std::string min;
    std::string max;
    std::string inc;
    std::string entries; ///< the available ones
};

/// Aravis's node engine over a port of ours.
class AravisEngine {
public:
    AravisEngine(const std::string& description, std::shared_ptr<IPort> port);
    ~AravisEngine();
    AravisEngine(const AravisEngine&) = delete;
    AravisEngine& operator=(const AravisEngine&) = delete;

    bool Good() const;
    FeatureState StateOf(const std::string& feature) const;
    /// Reads access and value of a feature and drops them.
    void Touch(const std::string& feature) const;

    /// The description of Aravis's own camera, and what stands in its registers.
    static std::string OwnDescription();
    static std::vector<std::uint8_t> OwnMemory();
    /// A formula's value by Aravis; "error" when it has none.
    static std::string Evaluate(const std::string& formula, bool asInteger, long long a, long long b);

private:
    struct Members;
    std::unique_ptr<Members> m;
};

} // namespace Norvane::GenApi
