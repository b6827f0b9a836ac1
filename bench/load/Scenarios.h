// The scenarios; what each does and gives stands in bench/README.md. Each throws when it fails.
#pragma once

#include <string>

#include "bench/load/Server.h"

namespace bench {

void Throughput(const std::string& name, Mode mode);
void LatencyAlone();
void LatencyBusy();
// So many frames, half of them each way.
void Pace(int framesASecond);
void RateSequential();
void RateConcurrent();
void Scale();
void Churn();
void BackpressureDown();
void BackpressureUp();
void Split();

// Ping after ping on a connection of its own, `count` of them or for so many seconds.
void MeasurePings(const std::string& name, int count, double seconds);

}  // namespace bench
