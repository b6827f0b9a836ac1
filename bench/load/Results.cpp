#include "bench/load/Results.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "bench/load/Options.h"
#include "bench/load/Server.h"

namespace bench {

namespace {

struct Result {
    std::string name;
    double value;
    std::string unit;
};

std::vector<Result> results;
std::vector<std::string> failures;

}  // namespace

void Report(const std::string& name, double value, const std::string& unit) {
    results.push_back({name, value, unit});
    printf("  %-36s %14.3f %s\n", name.c_str(), value, unit.c_str());
    fflush(stdout);
}

namespace {

void ReportFailure(const std::string& scenario, const std::string& what) {
    failures.push_back(scenario + ": " + what);
    printf("  FAILED %s: %s\n", scenario.c_str(), what.c_str());
    fflush(stdout);
}

}  // namespace

void Guarded(const std::string& name, const std::function<void()>& scenario) {
    try {
        scenario();
    } catch (const std::exception& e) {
        ReportFailure(name, e.what());
    }
    for (const auto& e : server.TakeErrors()) ReportFailure(name, e);
    WaitUntilServerIsIdle();
}

double Percentile(const std::vector<double>& sorted, double p) {
    if (sorted.empty()) return NAN;
    return sorted[std::min(sorted.size() - 1, std::size_t(double(sorted.size()) * p))];
}

std::size_t CountFailures() {
    return failures.size();
}

namespace {

std::string Quoted(const std::string& s) {
    std::string q = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') q += '\\';
        q += c;
    }
    return q + "\"";
}

}  // namespace

void WriteJson() {
    std::ofstream f(options.jsonPath);
    f << "{\n  \"label\": " << Quoted(options.label) << ",\n  \"results\": {";
    const char* comma = "";
    for (const auto& r : results) {
        f << comma << "\n    " << Quoted(r.name) << ": {\"value\": " << (std::isfinite(r.value) ? r.value : 0)
          << ", \"unit\": " << Quoted(r.unit) << "}";
        comma = ",";
    }
    f << "\n  },\n  \"failures\": [";
    comma = "";
    for (const auto& e : failures) {
        f << comma << "\n    " << Quoted(e);
        comma = ",";
    }
    f << "\n  ]\n}\n";
}

}  // namespace bench
