#pragma once

#include "KZStyledText.h"

#include "shared/PlistValue.h"

#include <QLocale>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

/// Turns plist values into text and text back into values: the four
/// operations every viewer's formatter answers. A display or editing string
/// is none for a value of a kind the formatter does not show. Parsing answers
/// false with a message (when `errorDescription` is not null), never throws.
///
/// Formatters are made by class name from resources (see KZClassRegistry):
/// each subclass has a Q_INVOKABLE constructor without arguments and exposes
/// its settings as Q_PROPERTYs. Settings are made once, before a formatter is
/// shared; after that a formatter is only read, on any one thread at a time.
/// Numbers and dates follow the default QLocale at construction.
class KZFormatter : public QObject
{
    Q_OBJECT
public:
    ~KZFormatter() override = default;

    virtual std::optional<QString> stringForObjectValue(const PlistValue &value) const = 0;
    /// The text put into an editor; by default the display string.
    virtual std::optional<QString> editingStringForObjectValue(const PlistValue &value) const;
    [[nodiscard]] virtual bool getObjectValue(PlistValue *value, const QString &string,
                                              QString *errorDescription) const = 0;
    /// The display string with its styling; by default the display string, plain.
    virtual std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const;

    /// A new formatter of the same class with the same settings: by default
    /// made by class name with every property copied.
    virtual std::unique_ptr<KZFormatter> copy() const;

    /// A secondary label before the text, as labelled formatters show values.
    static KZStyledText attributedStringWithLabel(const QString &label, const QString &text);

    /// The default locale as locale data of its own: the system's locale
    /// otherwise asks the system again for every separator and name, which
    /// showing millions of values cannot afford.
    static QLocale currentLocale();

protected:
    KZFormatter() = default;
    /// Sets `*errorDescription` when there is a place for it; answers false.
    static bool fail(QString *errorDescription, const QString &message);
};
