#pragma once

#include "StorageResult.h"

#include <QByteArray>
#include <QByteArrayView>

/// Reads an XML property list held in memory.
///
/// Accepts the property list elements (a <plist> with one value, or a bare
/// value element as the root) in UTF-8, UTF-16 or UTF-32, with the XML around
/// them: declaration, DOCTYPE (an internal subset may hold comments but no
/// declarations), comments, processing instructions, CDATA, the predefined
/// entities and character references. A dictionary whose only key is "CF$UID"
/// with a non-negative integer reads as a UID; a repeated key keeps its first
/// place and takes the last value. Text is taken as it stands: line ends are
/// not normalised, so a file written back keeps its bytes.
///
/// One forward pass with an explicit stack of open containers: any depth, time
/// linear in the input. A refusal names what was expected, what was found and
/// where (line and column). Stateless; safe on any thread.
class XmlReader
{
public:
    /// True when the bytes are meant as an XML property list: after an optional
    /// byte-order mark and white space, the first markup is "<?xml", "<!"
    /// (DOCTYPE or comment) or "<plist". Cheap; reads a prefix.
    static bool recognizes(QByteArrayView bytes);
    /// The value, with format ADPlistFormatXML, or why the bytes were refused.
    static ReadResult read(QByteArrayView bytes);
};
