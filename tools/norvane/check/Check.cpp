#include "check/Check.h"

#include "Cameras.h"
#include "JsonWriter.h"
#include "check/MachineChecks.h"

#include <algorithm>
#include <sstream>

namespace {

std::vector<SeenCamera> seenCameras() {
    const Norvane::SystemPtr system = Norvane::System::GetInstance();
    const Norvane::CameraList cameras = system->GetCameras(true);
    std::vector<SeenCamera> seen;
    for (unsigned int i = 0; i < cameras.GetSize(); ++i) {
        const CameraSummary camera = summarize(*cameras.GetByIndex(i));
        seen.push_back({camera.number + " " + camera.model, camera.address, camera.usable});
    }
    return seen;
}

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
    Findings all;
    for (const Findings& part :
         {checkNetwork(machine), checkSockets(machine), checkFirewall(machine), checkUsb(machine),
          checkProcessors(machine), checkCameras(machine, seenCameras())}) {
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
