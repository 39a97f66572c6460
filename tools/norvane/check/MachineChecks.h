#pragma once

#include "check/Finding.h"
#include "check/Machine.h"

#include <string>
#include <vector>

/// Adapters: link, speed, packet size, addresses, the reverse-path filter.
Findings checkNetwork(const Machine& machine);

/// How much a socket may hold while nobody reads.
Findings checkSockets(const Machine& machine);

/// Signs of a packet filter that can be seen without being root.
Findings checkFirewall(const Machine& machine);

/// USB3 Vision cameras: link speed, permissions, sleep, the kernel's memory for transfers.
Findings checkUsb(const Machine& machine);

/// Whether the processors slow down between images.
Findings checkProcessors(const Machine& machine);

/// A camera as the library sees it.
struct SeenCamera {
    std::string name;    ///< number and model
    std::string address; ///< empty for one that has none (USB)
    bool usable = true;  ///< whether the library can open it as things are
};

/// Which cameras answer, and whether they can be reached.
Findings checkCameras(const Machine& machine, const std::vector<SeenCamera>& cameras);
