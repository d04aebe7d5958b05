#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

/// Prints the usual console report, then a table that sets each of our runs
/// beside its comparison: libplist for the same operation, or our own XML
/// reader for the formats libplist lacks. "xmltaken", our XML reader given
/// bytes of its own, is set beside libplist's XML read. JSON and old-style text
/// hold the same value in fewer bytes than XML, so they are also set beside XML
/// by the time each takes to read that value. Run names are
/// "<op>/<format>/<shape>/<size>/<ours|libplist>".
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    std::map<std::string, double> _mbPerSecond; // by run name
    std::map<std::string, double> _seconds;     // one iteration, by run name
};
