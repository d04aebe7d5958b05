#pragma once

#include "XmlMarkup.h"

#include "shared/PlistValue.h"

/// Reads the content of a <data> element as the bytes its Base64 stands for.
/// Content that runs past 64 KB is decoded as it is found rather than scanned
/// for its end first, so that a large block costs one pass over the text;
/// plain Base64 closed by its end tag goes that way, anything else
/// (references, CDATA, comments, a mistake) the general one, which also words
/// the errors. Stateless.
class XmlData
{
public:
    /// After <data>'s start tag: its content and end tag, as a data value.
    static bool read(XmlMarkup &markup, const XmlMarkup::Tag &tag, PlistValue &value);
};
