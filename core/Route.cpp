#include "core/Route.h"

std::string TextOf(const Place& place) {
    const bool isIPv6 = place.host.find(':') != std::string::npos;
    return (isIPv6 ? "[" + place.host + "]" : place.host) + ":" + std::to_string(place.port);
}
