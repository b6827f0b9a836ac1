// Signing on, as clients do it: the authorisation connection, then BOS.
#pragma once

#include <memory>
#include <string>

#include "sandbox/aim/Oscar.h"

// The BOS connection of the signed-on name. Throws std::runtime_error.
std::unique_ptr<Line> SignOn(const std::string& name, const Address& service,
                             const std::optional<Address>& proxy);
