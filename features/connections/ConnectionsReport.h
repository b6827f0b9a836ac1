// ConnectionsReport: all that helps somebody else to see why a sign-on fails, and nothing that is secret.
#pragma once

#include <string>

#include "features/connections/Connections.h"
#include "features/connections/SignOnVerdict.h"

// Versions, the settings that matter, the verdict, the legs: lines that end with "\n". `program` is
// "wrenlow.exe" or "wrenlow-relay".
std::string ConnectionsReport(const std::string& program, Connections& connections,
                              const ClientFacts& client);
