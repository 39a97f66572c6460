#include "Subnet.h"

#include <bit>
#include <sstream>

std::string Subnet::text() const {
    std::ostringstream text;
    text << (network >> 24) << '.' << (network >> 16 & 255) << '.' << (network >> 8 & 255) << '.'
         << (network & 255) << '/' << std::popcount(mask);
    return text.str();
}
