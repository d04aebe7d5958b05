#pragma once

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QString>

#include <vector>

/// The four shapes of file the storage benchmark reads and writes, made with
/// a fixed seed so that every run measures the same bytes.
enum class BenchShape
{
    Wide,    // one dictionary of many mixed keys
    Nested,  // a configuration: dictionaries and arrays several levels deep
    Records, // an array of small records
    Blobs,   // a few large data blocks
};

const std::vector<BenchShape> &allBenchShapes();
QString benchShapeName(BenchShape shape);

/// A value of the shape whose XML form is about `targetBytes` long. With
/// `jsonSafe`, dates and data become strings so that every format can hold it.
PlistValue makeBenchValue(BenchShape shape, qint64 targetBytes, bool jsonSafe);

/// Writes `value` in `format` to `path` and returns the path; a failure ends the benchmark.
QString writeBenchFile(const QString &path, const PlistValue &value, ADPlistFormat format);
