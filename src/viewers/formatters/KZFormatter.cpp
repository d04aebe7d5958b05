#include "KZFormatter.h"

#include "shared/KZClassRegistry.h"

#include <QMetaProperty>

std::optional<QString> KZFormatter::editingStringForObjectValue(const PlistValue &value) const
{
    return stringForObjectValue(value);
}

std::optional<KZStyledText>
KZFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return KZStyledText{{}, KZStyledText::Role::Secondary, *text};
}

std::unique_ptr<KZFormatter> KZFormatter::copy() const
{
    const QMetaObject *meta = metaObject();
    std::unique_ptr<KZFormatter> other(qobject_cast<KZFormatter *>(meta->newInstance()));
    Q_ASSERT(other); // every formatter has a Q_INVOKABLE constructor without arguments
    for (int i = staticMetaObject.propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        if (property.isWritable())
            property.write(other.get(), property.read(this));
    }
    return other;
}

KZStyledText KZFormatter::attributedStringWithLabel(const QString &label, const QString &text)
{
    return KZStyledText{label, KZStyledText::Role::Secondary, text};
}

QLocale KZFormatter::currentLocale()
{
    const QLocale locale;
    return locale == QLocale::system() ? QLocale(locale.name()) : locale;
}

bool KZFormatter::fail(QString *errorDescription, const QString &message)
{
    if (errorDescription)
        *errorDescription = message;
    return false;
}
