#include "check/Check.h"

#include "JsonWriter.h"
#include "check/MachineChecks.h"

#include <algorithm>
#include <sstream>

namespace {

const char* name(Weight weight) {
    switch (weight) {
    case Weight::Good:
        return "good";
    case Weight::Advice:
        return "advice";
    case Weight::Limiting:
        break;
    }
    return "limiting";
}

} // namespace

Findings checkMachine() {
    const Machine machine;
    const Norvane::SystemPtr system = Norvane::System::GetInstance();
    Findings all;
    for (const Findings& part :
         {checkNetwork(machine), checkSockets(machine), checkFirewall(machine), checkUsb(machine),
          checkProcessors(machine), checkCameras(summarizeInterfaces(*system))}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

bool limits(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.weight == Weight::Limiting; });
}

std::string checkAsText(const Findings& findings) {
    std::ostringstream text;
    for (const Finding& finding : findings) {
        text << name(finding.weight) << "  " << finding.topic << ": " << finding.text << '\n';
        if (!finding.remedy.empty()) {
            text << "    " << finding.remedy << '\n';
        }
    }
    const auto count = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.weight == Weight::Limiting;
    });
    text << (count == 0 ? "Nothing found that limits cameras.\n"
                        : "Limiting cameras: " + std::to_string(count) + " finding(s).\n");
    return text.str();
}

std::string checkAsJson(const Findings& findings) {
    JsonWriter json;
    json.beginObject();
    json.member("limited", limits(findings));
    json.key("findings");
    json.beginArray();
    for (const Finding& finding : findings) {
        json.beginObject();
        json.member("topic", finding.topic);
        json.member("weight", name(finding.weight));
        json.member("text", finding.text);
        if (!finding.remedy.empty()) {
            json.member("remedy", finding.remedy);
        }
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.text() + "\n";
}
