#pragma once

#include "PlistValue.h"

#include <QHash>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

/// The one table of classes that resources name: formatters, value viewers
/// and info panels are made by class name through it. Each is a QObject with
/// a Q_INVOKABLE constructor that takes no arguments and Q_PROPERTYs for what
/// a resource may set. Libraries register their classes before use (each
/// has one function for it); registering twice changes nothing. Main thread.
class KZClassRegistry
{
public:
    template <typename T> static void registerClass() { registerMetaObject(T::staticMetaObject); }
    static void registerMetaObject(const QMetaObject &metaObject);
    /// Null for a name nobody registered.
    static const QMetaObject *metaObjectForClassName(const QString &className);

    /// A new object of the named class, or null when the name is unknown.
    static std::unique_ptr<QObject> newObjectOfClass(const QString &className);

    /// An object from an info dictionary: "class" names the class and
    /// "properties" (optional) holds values to set by property name. Null for
    /// an unknown class or a property the class does not have or cannot take.
    static std::unique_ptr<QObject> objectFromInfoDictionary(const PlistValue &info);

    /// Sets each entry of `properties` (a dictionary) on `object` by name;
    /// false when one of them is no property of the object or does not fit it.
    static bool setValuesForKeys(QObject &object, const PlistValue &properties);

    /// A plain value as a property takes it: strings, numbers and booleans as
    /// themselves, dates as UTC date-times, everything else as the value.
    static QVariant variantForPlist(const PlistValue &value);
};
