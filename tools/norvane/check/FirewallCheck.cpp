#include "check/MachineChecks.h"

#include <algorithm>
#include <sstream>

namespace {

bool moduleInUse(const Machine& machine, const std::string& wanted) {
    const auto modules = machine.lines("proc/modules");
    return std::any_of(modules.begin(), modules.end(), [&](const std::string& line) {
        std::istringstream columns(line);
        std::string name;
        long size = 0, users = 0;
        return columns >> name >> size >> users && name == wanted && users > 0;
    });
}

bool hasLine(const Machine& machine, const std::string& path, const std::string& wanted) {
    const auto lines = machine.lines(path);
    return std::find(lines.begin(), lines.end(), wanted) != lines.end();
}

} // namespace

Findings checkFirewall(const Machine& machine) {
    const auto found = [](const std::string& what, const std::string& remedy) {
        return Findings{
            {Weight::Advice, "firewall",
             what + ": answers of cameras and their image packets (UDP, any port) may be dropped.", remedy}};
    };
    if (hasLine(machine, "etc/ufw/ufw.conf", "ENABLED=yes")) {
        return found("The firewall ufw is on",
                     "sudo ufw allow in on ADAPTER, for the adapter of the cameras");
    }
    if (machine.exists("run/firewalld")) {
        return found("The firewall firewalld runs",
                     "sudo firewall-cmd --zone=trusted --change-interface=ADAPTER");
    }
    // Only root may list the rules. These modules are there for rules alone: a table of filters, or what one
    // refers to.
    for (const char* module : {"iptable_filter", "ip_tables", "nf_tables"}) {
        if (moduleInUse(machine, module)) {
            return found(std::string("The kernel holds packet rules (") + module + " is in use)",
                         "Look with sudo nft list ruleset (or sudo iptables -S), and accept all UDP from the "
                         "adapter of the cameras");
        }
    }
    return {{Weight::Good, "firewall", "There is no sign of a packet filter.", {}}};
}
