#pragma once

#include "KZNumberFormatter.h"

/// Numbers in decimal: integers by one pattern and reals by another, and for
/// editing by two more. What is typed becomes a real when it holds the
/// locale's decimal separator and an integer otherwise; thousand separators
/// are dropped first. The four patterns are properties, for resources to set.
class ADNumberFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(QString integerFormat READ integerFormat WRITE setIntegerFormat)
    Q_PROPERTY(QString floatFormat READ floatFormat WRITE setFloatFormat)
    Q_PROPERTY(QString editingIntegerFormat READ editingIntegerFormat WRITE setEditingIntegerFormat)
    Q_PROPERTY(QString editingFloatFormat READ editingFloatFormat WRITE setEditingFloatFormat)
public:
    Q_INVOKABLE ADNumberFormatter();

    QString integerFormat() const { return _intFormatter.format(); }
    void setIntegerFormat(const QString &format) { _intFormatter.setFormat(format); }
    QString floatFormat() const { return _floatFormatter.format(); }
    void setFloatFormat(const QString &format) { _floatFormatter.setFormat(format); }
    QString editingIntegerFormat() const { return _editingIntFormatter.format(); }
    void setEditingIntegerFormat(const QString &format) { _editingIntFormatter.setFormat(format); }
    QString editingFloatFormat() const { return _editingFloatFormatter.format(); }
    void setEditingFloatFormat(const QString &format) { _editingFloatFormatter.setFormat(format); }

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    std::optional<QString> editingStringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;

private:
    KZNumberFormatter _intFormatter;
    KZNumberFormatter _floatFormatter;
    KZNumberFormatter _editingIntFormatter;
    KZNumberFormatter _editingFloatFormatter;
};
