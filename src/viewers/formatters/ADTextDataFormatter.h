#pragma once

#include "KZFormatter.h"
#include "KZStringEncoding.h"

/// Data as the text it holds in `encoding` (see KZStringEncoding), labelled
/// with the encoding's name. Data that is no valid text in the encoding has
/// no display or editing string; its styled form says so as an error.
class ADTextDataFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(qulonglong encoding READ encoding WRITE setEncoding)
public:
    Q_INVOKABLE ADTextDataFormatter() = default;

    qulonglong encoding() const { return _encoding; }
    void setEncoding(qulonglong encoding) { _encoding = encoding; }
    QString encodingName() const { return KZStringEncoding::name(_encoding); }

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;

private:
    qulonglong _encoding = KZStringEncoding::UTF8;
};
