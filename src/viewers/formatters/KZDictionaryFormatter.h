#pragma once

#include "KZFormatter.h"

#include <utility>
#include <vector>

/// Maps display strings to values and back, for values chosen from a list
/// (a definition's allowable values). A value outside the list goes to the
/// `missingValueFormatter` when there is one; a string shows as itself.
/// Each of the two tables is kept with its inverse; when two strings name
/// the same value, the later one shows it.
class KZDictionaryFormatter : public KZFormatter
{
    Q_OBJECT
public:
    using StringToObject = std::vector<std::pair<QString, PlistValue>>;
    using ObjectToString = std::vector<std::pair<PlistValue, QString>>;

    Q_INVOKABLE KZDictionaryFormatter() = default;
    explicit KZDictionaryFormatter(const StringToObject &stringToObject);

    static ObjectToString invertDictionary(const StringToObject &stringToObject);
    static StringToObject invertDictionary(const ObjectToString &objectToString);

    const StringToObject &stringToObjectDictionary() const { return _stringToObject; }
    void setStringToObjectDictionary(const StringToObject &dictionary);
    const ObjectToString &objectToStringDictionary() const { return _objectToString; }
    void setObjectToStringDictionary(const ObjectToString &dictionary);
    /// May be null.
    const std::shared_ptr<KZFormatter> &missingValueFormatter() const
    {
        return _missingValueFormatter;
    }
    void setMissingValueFormatter(std::shared_ptr<KZFormatter> formatter);

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::unique_ptr<KZFormatter> copy() const override;

private:
    StringToObject _stringToObject;
    ObjectToString _objectToString;
    std::shared_ptr<KZFormatter> _missingValueFormatter;
};
