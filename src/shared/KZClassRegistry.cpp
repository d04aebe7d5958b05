#include "KZClassRegistry.h"

#include "KZReferenceDate.h"
#include "PlistDictionary.h"

#include <QMetaProperty>

namespace {

QHash<QString, const QMetaObject *> &classes()
{
    static QHash<QString, const QMetaObject *> table;
    return table;
}

} // namespace

void KZClassRegistry::registerMetaObject(const QMetaObject &metaObject)
{
    classes().insert(QString::fromLatin1(metaObject.className()), &metaObject);
}

const QMetaObject *KZClassRegistry::metaObjectForClassName(const QString &className)
{
    return classes().value(className);
}

std::unique_ptr<QObject> KZClassRegistry::newObjectOfClass(const QString &className)
{
    const QMetaObject *metaObject = metaObjectForClassName(className);
    if (!metaObject)
        return nullptr;
    return std::unique_ptr<QObject>(metaObject->newInstance());
}

std::unique_ptr<QObject> KZClassRegistry::objectFromInfoDictionary(const PlistValue &info)
{
    if (!info.isDictionary())
        return nullptr;
    const PlistDictionary dictionary = info.toDictionary();
    const PlistValue className = dictionary.value(QStringLiteral("class"));
    if (!className.isString())
        return nullptr;
    std::unique_ptr<QObject> object = newObjectOfClass(className.toString());
    if (!object)
        return nullptr;
    const PlistValue properties = dictionary.value(QStringLiteral("properties"));
    if (!properties.isNone() && !setValuesForKeys(*object, properties))
        return nullptr;
    return object;
}

bool KZClassRegistry::setValuesForKeys(QObject &object, const PlistValue &properties)
{
    if (!properties.isDictionary())
        return false;
    const QMetaObject *metaObject = object.metaObject();
    const PlistDictionary dictionary = properties.toDictionary();
    for (qsizetype i = 0; i < dictionary.count(); ++i) {
        const QByteArray name = dictionary.keyAt(i).toLatin1();
        const int index = metaObject->indexOfProperty(name.constData());
        if (index < 0)
            return false;
        if (!metaObject->property(index).write(&object, variantForPlist(dictionary.valueAt(i))))
            return false;
    }
    return true;
}

QVariant KZClassRegistry::variantForPlist(const PlistValue &value)
{
    switch (value.kind()) {
    case PlistValue::Kind::String:
        return value.toString();
    case PlistValue::Kind::Boolean:
        return value.toBool();
    case PlistValue::Kind::Number:
        if (value.isReal())
            return value.toReal();
        return value.isUnsigned() ? QVariant(value.toUnsigned()) : QVariant(value.toInteger());
    case PlistValue::Kind::Date:
        return KZReferenceDate::toDateTime(value.toDate());
    default:
        return QVariant::fromValue(value);
    }
}
