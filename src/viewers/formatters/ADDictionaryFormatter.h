#pragma once

#include "ADCollectionFormatter.h"

/// What the value column shows for a dictionary: its number of pairs, and
/// with a `previewKeyPath` the value found there when it is a boolean,
/// date, number or string ("3 key/value pairs (Name = 5)"). Styled in the
/// disabled colour and the outline's font. Dictionaries are not typed in:
/// parsing always fails, with no message.
class ADDictionaryFormatter : public ADCollectionFormatter
{
    Q_OBJECT
    Q_PROPERTY(QString previewKeyPath READ previewKeyPath WRITE setPreviewKeyPath)
public:
    Q_INVOKABLE ADDictionaryFormatter();

    const QString &previewKeyPath() const { return _previewKeyPath; }
    void setPreviewKeyPath(const QString &keyPath) { _previewKeyPath = keyPath; }

    QString stringForDictionary(const PlistValue &dictionary) const;
    /// The value at a dotted key path ("a.b" is the entry "b" of the
    /// dictionary at "a"); none when a step is missing or no dictionary.
    static PlistValue valueForKeyPath(const PlistValue &dictionary, const QString &keyPath);

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;

private:
    QString _previewKeyPath;
    QString _countFormat; // the texts, looked up once
    QString _previewFormat;
};
