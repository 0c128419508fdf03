// Benchmark mode: requests are answered from a prepared answer per function code.
#pragma once

namespace sim {
bool BenchMode();
void SetBenchMode(bool on);
}  // namespace sim
