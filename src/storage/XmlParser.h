#pragma once

#include "StorageResult.h"

#include <QByteArrayView>

/// Reads one XML property list from UTF-8 text in one pass: the prolog, the
/// elements with the containers they open on an explicit stack, then the
/// epilog. Markup is read by XmlMarkup and <data> by XmlData; the parser makes
/// the leaves' values and checks where each element may stand (keys and
/// values alternating in a <dict>, one value in <plist>). The first failure
/// ends the pass. Stateless; safe on any thread.
class XmlParser
{
public:
    /// The document's value, with format ADPlistFormatXML, or why it was refused.
    static ReadResult parse(QByteArrayView utf8);
};
