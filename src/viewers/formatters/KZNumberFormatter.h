#pragma once

#include "KZFormatter.h"

#include <QLocale>

#include <string_view>
#include <vector>

/// Numbers as text by a pattern, with the separators and signs of the locale
/// it was made in, and back.
///
/// A pattern is "positive[;zero[;negative]]". In each part, "#" and "0" stand
/// for digits: a "," among the integer digits groups them by thousands, the
/// count of "0" before "." is the least number of integer digits, after "."
/// the "0"s are fraction digits always shown and the "#"s fraction digits
/// shown when not zero. Text around the digits is kept as it is. A negative
/// number shows a minus sign unless its part writes one itself, so that no
/// editing string loses the sign; a part of text alone ("zero") shows that
/// text.
///
/// A part that allows 17 fraction digits or more, and the empty pattern,
/// show every digit of the shortest text that reads back to the same real,
/// so that editing never rounds. Reals below 1e-4 or from 1e15 up show in
/// scientific notation, with a decimal separator, so they still read as reals.
class KZNumberFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(QString format READ format WRITE setFormat)
    Q_PROPERTY(bool allowsFloats READ allowsFloats WRITE setAllowsFloats)
public:
    Q_INVOKABLE KZNumberFormatter();

    QString format() const { return _format; }
    void setFormat(const QString &format);
    bool allowsFloats() const { return _allowsFloats; }
    void setAllowsFloats(bool allowsFloats) { _allowsFloats = allowsFloats; }
    const QString &decimalSeparator() const { return _decimalPoint; }
    const QString &thousandSeparator() const { return _groupSeparator; }

    /// The number (integer or real) by the pattern.
    QString stringFromNumber(const PlistValue &number) const;
    /// Integers as integers (unsigned past the signed range), everything else
    /// with a fraction or exponent as a real when floats are allowed.
    std::optional<PlistValue> numberFromString(const QString &string,
                                               QString *errorDescription) const;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;

private:
    struct Part
    {
        QString prefix;
        QString suffix;
        bool hasDigits = true;
        bool grouping = false;
        int minimumIntegerDigits = 1;
        int minimumFractionDigits = 0;
        int maximumFractionDigits = 0;
        bool shortest = true;
    };
    static Part parsePart(const QString &text);
    const Part &partFor(bool negative, bool zero, bool *needsSign) const;
    QString assemble(const Part &part, std::string_view integerDigits,
                     std::string_view fractionDigits, bool negativeSign) const;
    QString realText(const Part &part, double magnitude, bool negativeSign) const;

    QLocale _locale;
    QString _decimalPoint; // the locale's symbols, asked once
    QString _groupSeparator;
    QString _negativeSign;
    QString _exponential;
    QString _format;
    std::vector<Part> _parts; // positive, then zero and negative when given
    bool _allowsFloats = true;
};
