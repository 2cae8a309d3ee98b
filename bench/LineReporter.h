#pragma once

#include <benchmark/benchmark.h>

// Prints each benchmark as "name value unit" lines, the one format every bench program of the
// project reports in, so results can be compared with grep and diff.
class LineReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
};
