// The figures and failures of a run: printed at once, and written as JSON at the end.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

void Report(const std::string& name, double value, const std::string& unit);

// Runs one scenario; a failure on either end is reported under its name.
void Guarded(const std::string& name, const std::function<void()>& scenario);

// Not a number when there are no values. `p` is 0 to 1.
double Percentile(const std::vector<double>& sorted, double p);

std::size_t CountFailures();
void WriteJson();

}  // namespace bench
