#pragma once

#include "ADValueViewer.h"

#include "viewers/formatters/KZDictionaryFormatter.h"

/// Values chosen from a definition's list of allowable values, shown by
/// their localised names. A value outside the list passes through the
/// formatter of the raw viewer it was made with; with raw keys and values
/// shown, every value does.
class ADAllowableValueViewer : public ADValueViewer
{
    Q_OBJECT
    Q_PROPERTY(QStringList orderedKeys READ orderedKeys)
public:
    using AllowableValues = KZDictionaryFormatter::StringToObject;

    Q_INVOKABLE ADAllowableValueViewer() = default;
    /// Takes over the raw viewer's type and a copy of its formatter.
    ADAllowableValueViewer(const AllowableValues &allowableValues, const ADValueViewer &rawViewer);

    const AllowableValues &allowableValues() const { return _allowableValues; }
    /// The localised names, in the order of the list.
    QStringList orderedKeys() const;
    const std::shared_ptr<KZDictionaryFormatter> &allowableValueFormatter() const
    {
        return _allowableValueFormatter;
    }
    void setShowRawKeysAndValues(bool showRaw) override;

protected:
    void copySettingsTo(ADValueViewer &other) const override;

private:
    AllowableValues _allowableValues;
    std::shared_ptr<KZDictionaryFormatter> _allowableValueFormatter;
    std::shared_ptr<KZFormatter> _rawFormatter; // may be null
};
