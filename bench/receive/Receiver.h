#pragma once

#include <cstdint>

/// What the simulated camera is to send.
struct Load {
    std::uint32_t size;       ///< width and height, pixels of 8 bits
    std::uint32_t frameRate;  ///< images a second
    std::uint32_t packetSize; ///< bytes, with all headers
};

/// What came through in one run.
struct Received {
    std::uint64_t complete = 0;
    std::uint64_t failures = 0; ///< incomplete images and images that found no buffer
};

/// Opens the first camera, lets it send for so many seconds, and counts what the library's stream hands out.
/// @throws std::exception when there is no camera or it cannot be opened
Received Receive(const Load& load, int seconds);
