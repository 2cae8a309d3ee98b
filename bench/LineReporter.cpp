#include "LineReporter.h"

#include <cstdio>

bool LineReporter::ReportContext(const Context&) {
    return true;
}

void LineReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred)
            continue;
        const std::string name = run.benchmark_name();
        std::printf("%s %.3f us\n", name.c_str(),
                    run.GetAdjustedRealTime() *
                        benchmark::GetTimeUnitMultiplier(benchmark::kMicrosecond) /
                        benchmark::GetTimeUnitMultiplier(run.time_unit));
        for (const auto& [counter, value] : run.counters)
            std::printf("%s/%s %.3f\n", name.c_str(), counter.c_str(), double(value));
    }
    std::fflush(stdout);
}
