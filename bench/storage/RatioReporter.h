#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

/// Prints the usual console report, then a table that sets each of our runs
/// beside its comparison: libplist for the same operation, or our own XML
/// reader for the formats libplist lacks. Run names are
/// "<op>/<format>/<shape>/<size>/<ours|libplist>".
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    std::map<std::string, double> _mbPerSecond; // by run name
};
