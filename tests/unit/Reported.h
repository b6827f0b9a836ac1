// Reported: what is reported while it stands; the reporter before hears nothing of it.
#pragma once

#include <string>
#include <vector>

#include "base/Trap.h"

struct Report {
    std::string description, where;
    std::int32_t number;
};

class Reported {
 public:
    Reported() { reports.clear(); }
    ~Reported() { SetErrorReporter(before_); }
    Reported(const Reported&) = delete;
    Reported& operator=(const Reported&) = delete;

    static inline std::vector<Report> reports;

    // Each as "number: description".
    static std::vector<std::string> Lines() {
        std::vector<std::string> lines;
        for (const auto& report : reports)
            lines.push_back(std::to_string(report.number) + ": " + report.description);
        return lines;
    }

 private:
    ErrorReporter before_ = SetErrorReporter(
        [](const std::string& description, std::int32_t number, const std::string& where, std::int16_t) {
            reports.push_back({description, where, number});
        });
};
