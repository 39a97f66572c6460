#pragma once

#include "FeatureReport.h"
#include "JsonWriter.h"

#include <string>

void writeJson(JsonWriter& json, const FeatureValue& value);
/// One object with every field that the feature has.
void writeJson(JsonWriter& json, const FeatureRecord& record);

/// A table by category, for people.
std::string featureTable(const std::vector<FeatureRecord>& records);
