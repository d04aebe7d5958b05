#pragma once

#include "StorageResult.h"

/// Writes a value as an XML property list in the platform's own layout, so
/// that a file its tools wrote comes back byte for byte: the XML declaration
/// and DOCTYPE lines, `<plist version="1.0">`, one tab per level, `<true/>`,
/// `<dict/>` for empty containers, & < > ' and " escaped as entities, reals in the shortest
/// text that reads back bit for bit, dates in UTC to the second, and data as
/// Base64 lines of 76 columns less the indentation (tabs counted as 8).
///
/// Dictionaries are written in their own order; a UID as a dictionary of
/// "CF$UID". Null (JSON only) cannot be written. Iterative: any depth; past
/// 128 levels the indentation stops growing, so output stays linear.
/// Stateless; safe on any thread.
class XmlWriter
{
public:
    static WriteResult write(const PlistValue &value);
};
