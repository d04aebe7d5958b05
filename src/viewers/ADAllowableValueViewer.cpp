#include "ADAllowableValueViewer.h"

ADAllowableValueViewer::ADAllowableValueViewer(const AllowableValues &allowableValues,
                                               const ADValueViewer &rawViewer)
    : _allowableValues(allowableValues),
      _allowableValueFormatter(std::make_shared<KZDictionaryFormatter>(allowableValues))
{
    if (rawViewer.formatter())
        _rawFormatter = std::shared_ptr<KZFormatter>(rawViewer.formatter()->copy());
    _allowableValueFormatter->setMissingValueFormatter(_rawFormatter);
    setDataType(rawViewer.dataType());
    setFormatter(_allowableValueFormatter);
}

QStringList ADAllowableValueViewer::orderedKeys() const
{
    QStringList keys;
    for (const auto &[key, value] : _allowableValues)
        keys.append(key);
    return keys;
}

void ADAllowableValueViewer::setShowRawKeysAndValues(bool showRaw)
{
    ADValueViewer::setShowRawKeysAndValues(showRaw);
    if (_allowableValueFormatter)
        _allowableValueFormatter->setStringToObjectDictionary(showRaw ? AllowableValues()
                                                                      : _allowableValues);
}

void ADAllowableValueViewer::copySettingsTo(ADValueViewer &other) const
{
    ADValueViewer::copySettingsTo(other);
    auto &allowable = static_cast<ADAllowableValueViewer &>(other);
    allowable._allowableValues = _allowableValues;
    allowable._rawFormatter = _rawFormatter;
    if (_allowableValueFormatter) {
        allowable._allowableValueFormatter.reset(
            static_cast<KZDictionaryFormatter *>(_allowableValueFormatter->copy().release()));
        allowable.setFormatter(allowable._allowableValueFormatter);
    }
}
