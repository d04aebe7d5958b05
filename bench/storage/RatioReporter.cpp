#include "RatioReporter.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <vector>

namespace {

std::vector<std::string> split(const std::string &name)
{
    std::vector<std::string> parts;
    std::stringstream in(name);
    for (std::string part; std::getline(in, part, '/');)
        parts.push_back(part);
    return parts;
}

void printRow(const std::string &label, double ours, double other)
{
    std::printf("%-34s %10.1f %10.1f %8.2fx\n", label.c_str(), ours, other,
                other > 0 ? ours / other : 0.0);
}

} // namespace

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run &run : runs) {
        const auto it = run.counters.find("bytes_per_second");
        if (run.run_type != Run::RT_Iteration || it == run.counters.end())
            continue;
        _mbPerSecond[run.run_name.function_name] = it->second.value / 1e6;
        _seconds[run.run_name.function_name] =
            run.real_accumulated_time /
            double(std::max<benchmark::IterationCount>(1, run.iterations));
    }
}

void RatioReporter::Finalize()
{
    ConsoleReporter::Finalize();
    std::printf("\n%-34s %10s %10s %9s\n", "operation", "ours MB/s", "base MB/s", "ratio");
    for (const auto &[name, ours] : _mbPerSecond) {
        const std::vector<std::string> p = split(name);
        if (p.size() != 5 || p[4] != "ours")
            continue;
        const std::string label = p[0] + " " + p[1] + " " + p[2] + " " + p[3];
        const std::string stem = p[0] + "/" + p[1] + "/" + p[2] + "/" + p[3] + "/";
        // Reading taken bytes is set beside libplist reading the same XML.
        const std::string theirs = p[1] == "xmltaken"
                                       ? p[0] + "/xml/" + p[2] + "/" + p[3] + "/libplist"
                                       : stem + "libplist";
        if (const auto base = _mbPerSecond.find(theirs); base != _mbPerSecond.end()) {
            printRow(label + " vs libplist", ours, base->second);
            continue;
        }
        const std::string xml = p[0] + "/xmlsafe/" + p[2] + "/" + p[3] + "/ours";
        if (const auto base = _mbPerSecond.find(xml);
            base != _mbPerSecond.end() && p[1] != "xmlsafe") {
            printRow(label + " vs our xml", ours, base->second);
            // Reads of the same value per second, in the MB/s columns.
            printRow(label + " vs xml, reads/s", 1 / _seconds[name], 1 / _seconds[xml]);
        }
    }
    // Linear means the large file reads about as fast as the small one.
    for (const auto &[name, large] : _mbPerSecond) {
        const std::vector<std::string> p = split(name);
        if (p.size() != 5 || p[3] != "100MB" || p[4] != "ours" || p[0] != "read")
            continue;
        const auto small = _mbPerSecond.find(p[0] + "/" + p[1] + "/" + p[2] + "/1MB/ours");
        if (small != _mbPerSecond.end())
            printRow(p[0] + " " + p[1] + " " + p[2] + " 100MB vs 1MB", large, small->second);
    }
}
