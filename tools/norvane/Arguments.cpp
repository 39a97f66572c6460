#include "Arguments.h"

#include "Failure.h"

#include <charconv>
#include <map>

namespace {

constexpr char kGeneralHelp[] = R"(Usage: norvane [OPTION]... COMMAND [ARGUMENT]...

Lists cameras, reads and writes their features and takes pictures.

Commands:
  list                           interfaces and the cameras on them
  features SERIAL                every feature of a camera
  get SERIAL FEATURE             one feature's value
  set SERIAL FEATURE VALUE       writes a value and prints what the camera then holds
  execute SERIAL FEATURE         runs a command and waits until it is done
  describe FILE                  every feature of a description file (XML, or zipped)
  snap SERIAL FILE               takes one image; the file name's extension gives the format
  check                          what on this host limits its cameras, and what mends it

SERIAL is the number of a camera or the device's own serial text, as "norvane list" shows them.

Options:
  --map device|tl|stream|interface
                 the node map meant by features, get, set and execute; with "interface", SERIAL is the
                 identifier of an interface. Without it, features means the device map, and the others
                 look in the device, transport-layer and stream maps, in this order.
  --timeout MS   how long execute and snap wait, 5000 unless given
  --json         prints JSON
  --verbose      prints the library's log on standard error
  --version      prints the version
  -h, --help     prints help, also for one command: norvane COMMAND --help

Exit status: 0 success, 1 the operation failed, 2 wrong usage, 3 no such camera or interface,
4 no such feature, 5 the feature refused (access or value), 6 check found what limits cameras.
)";

const std::map<std::string_view, std::string_view> kCommandHelp = {
    {"list", R"(Usage: norvane list [--json]

Lists the interfaces of this host and the cameras on them: number, serial text, model, vendor, access and
address.
)"},
    {"features", R"(Usage: norvane features SERIAL [--map device|tl|stream|interface] [--json]

Prints every implemented feature by category: name, type, access mode, value, range, increment, unit and entries.
)"},
    {"get", R"(Usage: norvane get SERIAL FEATURE [--map device|tl|stream|interface] [--json]

Prints the value of one feature. An enumeration's value is the name of its entry.
)"},
    {"set", R"(Usage: norvane set SERIAL FEATURE VALUE [--map device|tl|stream|interface] [--json]

Writes a value, verified against range, increment and entries, and prints what the camera then holds. Integers may
be given in hexadecimal (0x...), booleans as true, false, 1 or 0, enumerations by the name of an entry.
)"},
    {"execute",
     R"(Usage: norvane execute SERIAL FEATURE [--map device|tl|stream|interface] [--timeout MS] [--json]

Executes a command feature and waits until the device reports it done.
)"},
    {"describe", R"(Usage: norvane describe FILE [--json]

Loads a camera description (GenICam XML, or a zip archive that holds it) over a register file of zeros and prints
every feature as "features" does, the not implemented ones too. Needs no camera.
)"},
    {"check", R"(Usage: norvane check [--json]

Looks at network adapters, socket buffers, firewall, USB and processors of this host and at the cameras that answer,
and tells what limits them and what mends it. Changes nothing and needs no rights. Exit status 6 when something limits
cameras; advice alone leaves it 0.
)"},
    {"snap", R"(Usage: norvane snap SERIAL FILE [--timeout MS] [--json]

Takes one image and writes it to FILE in the format of its extension (png, jpg, bmp, tif, pgm, ppm, jp2, raw). A
colour mosaic is turned into colour, except for raw and pgm.
)"},
};

MapKind mapKind(const std::string& name) {
    static const std::map<std::string_view, MapKind> kKinds = {{"device", MapKind::Device},
                                                               {"tl", MapKind::TransportLayer},
                                                               {"stream", MapKind::Stream},
                                                               {"interface", MapKind::Interface}};
    const auto found = kKinds.find(name);
    if (found == kKinds.end()) {
        throw Failure(kUsage, "--map takes device, tl, stream or interface, not \"" + name + "\"");
    }
    return found->second;
}

std::int64_t milliseconds(const std::string& text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) {
        throw Failure(kUsage, "--timeout takes a number of milliseconds, not \"" + text + "\"");
    }
    return value;
}

} // namespace

Arguments parseArguments(const std::vector<std::string>& words) {
    Arguments arguments;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (optionsEnded || word.rfind("--", 0) != 0) {
            if (!optionsEnded && word == "-h") {
                arguments.help = true;
            } else if (arguments.command.empty()) {
                arguments.command = word;
            } else {
                arguments.operands.push_back(word);
            }
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto argument = [&]() -> std::string {
            if (equals != std::string::npos) {
                return word.substr(equals + 1);
            }
            if (i + 1 == words.size()) {
                throw Failure(kUsage, name + " needs a value");
            }
            return words[++i];
        };
        if (name == "--map") {
            arguments.map = mapKind(argument());
        } else if (name == "--timeout") {
            arguments.timeoutMs = milliseconds(argument());
        } else if (word == "--") {
            optionsEnded = true;
        } else if (word == "--json") {
            arguments.json = true;
        } else if (word == "--verbose") {
            arguments.verbose = true;
        } else if (word == "--version") {
            arguments.version = true;
        } else if (word == "--help") {
            arguments.help = true;
        } else {
            throw Failure(kUsage, "unknown option \"" + word + "\"; see norvane --help");
        }
    }
    return arguments;
}

std::string helpText(std::string_view command) {
    const auto found = kCommandHelp.find(command);
    return std::string(found == kCommandHelp.end() ? std::string_view(kGeneralHelp) : found->second);
}
