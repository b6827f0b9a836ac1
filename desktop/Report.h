// Report: what to tell somebody who is to help with a connection that does not work. Nothing in it is secret.
#pragma once

#include <string>

// Versions, settings that matter, the verdict, the connections; lines are separated by CR LF. "" before there
// is a relay.
std::string ReportText();
