#pragma once

#include "Cameras.h"
#include "check/Finding.h"
#include "check/Machine.h"

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

/// Which cameras answer, where, and whether they can be opened.
Findings checkCameras(const std::vector<InterfaceSummary>& interfaces);
