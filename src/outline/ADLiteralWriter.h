#pragma once

#include "shared/PlistValue.h"

#include <QString>

#include <optional>
#include <vector>

/// Writes plain plist values as one line of source code in a language whose
/// literal forms the subclass gives: one value as its literal, none or
/// several as an array literal of them. No options, no line breaks.
///
/// Dictionary values are written as `Optional("…")` around the value's
/// literal in quoted debug form (or `nil` for a date, data or null value),
/// which the copy commands have always given; keys are sorted by code point.
/// A date, data or null value inside an array gets its own form (`nil` for
/// null) rather than stopping the program.
class ADLiteralWriter
{
public:
    virtual ~ADLiteralWriter() = default;

protected:
    /// The texts around each kind of value.
    struct Forms
    {
        QString stringPrefix;
        QString trueText, falseText;
        QString numberOpen, numberClose;
        QString dateOpen, dateClose;
        QString dataOpen, dataClose;
        QString arrayOpen, arrayClose;
        QString dictionaryOpen, dictionaryClose;
    };

    ADLiteralWriter(std::vector<PlistValue> plists, Forms forms);

    /// The literal of the values.
    QString literal() const;

private:
    QString literalOf(const PlistValue &value) const;
    /// What a value that answers for itself writes: strings, numbers, arrays
    /// and dictionaries; none for a date, data or null.
    std::optional<QString> answeredLiteral(const PlistValue &value) const;
    QString stringLiteral(const QString &text) const;
    QString arrayLiteral(const std::vector<PlistValue> &values) const;
    QString dictionaryLiteral(const PlistValue &dictionary) const;

    std::vector<PlistValue> _plists;
    Forms _forms;
};
