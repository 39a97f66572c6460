#pragma once

#include "norvane/genapi/GenApi.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What a feature's value, limit or increment can be.
using FeatureValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct EntryRecord {
    std::string name;
    std::int64_t value = 0;
    Norvane::GenApi::EAccessMode access = Norvane::GenApi::NI;
};

/// One feature as the node map shows it at one moment.
struct FeatureRecord {
    std::string name;
    std::string displayName;
    std::string category; ///< names of the categories above it, joined by "/"; empty when none lists it
    std::string description;
    Norvane::GenApi::EInterfaceType type = Norvane::GenApi::intfIValue;
    Norvane::GenApi::EAccessMode access = Norvane::GenApi::NI;
    Norvane::GenApi::EVisibility visibility = Norvane::GenApi::Beginner;
    FeatureValue value;    ///< an enumeration's is the name of the current entry
    std::string valueText; ///< in the node's own notation
    FeatureValue minimum;
    FeatureValue maximum;
    FeatureValue increment;
    std::vector<FeatureValue> validValues; ///< of a number that takes only certain values
    std::string unit;
    std::string representation; ///< of a number
    std::vector<EntryRecord> entries;
    std::optional<std::int64_t> entryValue; ///< of an enumeration's current entry
    std::string error;                      ///< why value or range could not be read
};

/// Reads one feature. What the node refuses stands in the record's error; throws nothing of the library's.
FeatureRecord readFeature(Norvane::GenApi::INode& node, const std::string& category = {});

/// Reads the value alone.
/// @throws Norvane::Exception when it cannot be read.
FeatureRecord readValue(Norvane::GenApi::INode& node);

/// All features: those below "Root" in the order of the categories, then those that only other categories
/// list. A map without a usable "Root" gives every node that has a value.
std::vector<FeatureRecord> readFeatures(Norvane::GenApi::INodeMap& map);

const char* accessText(Norvane::GenApi::EAccessMode mode);
const char* typeText(Norvane::GenApi::EInterfaceType type);
const char* visibilityText(Norvane::GenApi::EVisibility visibility);
