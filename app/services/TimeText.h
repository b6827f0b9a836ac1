// TimeText: local times as texts that sort: in logs, in names of files, in lists.
#pragma once

#include <string>

#include "os/Clock.h"

std::string DateText(const os::LocalTime& time);  // "2004-05-06"
std::string TimeText(const os::LocalTime& time);  // "13:05:09"
