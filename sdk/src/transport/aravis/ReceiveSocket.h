#pragma once

#include "transport/aravis/GObjectPtr.h"

#include <string>

namespace Norvane::Transport {

/// Gives the stream's socket as large a receive buffer as the system allows, reads it back, and writes one
/// log line with the remedy when that is too little: at the usual default nine images of ten are lost. Where
/// this process may use packet sockets, Aravis receives through one, with a buffer of its own, and nothing is
/// said.
void SizeReceiveSocket(ArvGvStream* stream, int wantedBytes, const std::string& label);

} // namespace Norvane::Transport
