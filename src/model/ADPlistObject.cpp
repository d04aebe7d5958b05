#include "ADPlistObject.h"
#include "shared/KZReferenceDate.h"

#include "ADKeySortPreferences.h"
#include "ADPlistNotifications.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"
#include "shared/KZStringAdditions.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

// A keyed-archiver UID shows in the tree as the dictionary {"CF$UID": n}.
PlistValue shownValue(const PlistValue &plist)
{
    if (plist.kind() != PlistValue::Kind::Uid)
        return plist;
    PlistDictionary d = PlistDictionary::create(1);
    d.insert(QStringLiteral("CF$UID"), PlistValue(qint64(qint32(plist.toUid()))));
    return d;
}

// Positions of a dictionary's keys in the order the tree shows them.
std::vector<qsizetype> keyOrder(const PlistDictionary &d, const QStringList &keys)
{
    std::vector<qsizetype> order(size_t(d.count()));
    std::iota(order.begin(), order.end(), 0);
    if (ADKeySortPreferences::keepKeyOrder())
        return order;
    const KZComparison comparison = ADKeySortPreferences::keySortSelector();
    // Stable, so equal keys keep the order they came in.
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
        return KZCompareStrings(comparison, keys[a], keys[b]) < 0;
    });
    return order;
}

bool isIdentity(const std::vector<qsizetype> &order)
{
    for (size_t i = 0; i < order.size(); ++i) {
        if (order[i] != qsizetype(i))
            return false;
    }
    return true;
}

// Destroying a node destroys its children; in a tree 100,000 deep that would
// recurse as deep. The outermost destructor on a thread drains a queue of
// children, and destructors run meanwhile only add to it.
thread_local std::vector<ADPlistObject::Pointer> *pendingChildren = nullptr;

QString addressText(const void *object)
{
    return QStringLiteral("<ADPlistObject: 0x%1>").arg(quintptr(object), 0, 16);
}

} // namespace

ADPlistObject::ADPlistObject(Passkey, PlistValue plist, ADPlistParent *parent)
    : _plist(std::move(plist)), _parent(parent)
{}

ADPlistObject::~ADPlistObject()
{
    if (!_children)
        return;
    if (pendingChildren) {
        for (Pointer &child : *_children)
            pendingChildren->push_back(std::move(child));
        return;
    }
    std::vector<Pointer> queue = std::move(*_children);
    pendingChildren = &queue;
    while (!queue.empty()) {
        Pointer last = std::move(queue.back());
        queue.pop_back();
        last.reset(); // may queue its own children
    }
    pendingChildren = nullptr;
}

// --- class operations ------------------------------------------------------------

ADPlistType ADPlistObject::plistTypeForValueKind(PlistValue::Kind kind)
{
    const auto code = ADPlistType(kind);
    return code >= ADPlistTypeArray && code <= ADPlistTypeNull ? code : ADPlistTypeArray;
}

PlistValue::Kind ADPlistObject::valueKindForPlistType(ADPlistType type)
{
    return type >= ADPlistTypeArray && type <= ADPlistTypeNull ? PlistValue::Kind(type)
                                                               : PlistValue::Kind::None;
}

QString ADPlistObject::classNameForPlistType(ADPlistType type)
{
    static const char *const kNames[] = {"Array",      "Boolean", "Data",   "Date",
                                         "Dictionary", "Number",  "String", "Null"};
    if (type < ADPlistTypeArray || type > ADPlistTypeNull)
        return QString();
    return QString::fromLatin1(kNames[type]);
}

PlistValue ADPlistObject::defaultValueForPlistType(ADPlistType type)
{
    switch (type) {
    case ADPlistTypeArray:
        return PlistArray::create();
    case ADPlistTypeBoolean:
        return PlistValue(true);
    case ADPlistTypeData:
        return PlistValue::data(QByteArray());
    case ADPlistTypeDate:
        return PlistValue::date(std::floor(KZReferenceDate::now()));
    case ADPlistTypeDictionary:
        return PlistDictionary::create();
    case ADPlistTypeNumber:
        return PlistValue(0);
    case ADPlistTypeString:
        return PlistValue(QStringLiteral(""));
    case ADPlistTypeNull:
        return PlistValue::null();
    default:
        return PlistValue();
    }
}

// --- construction ----------------------------------------------------------------

ADPlistObject::Pointer ADPlistObject::create()
{
    return createWithPlistType(ADPlistTypeString);
}

ADPlistObject::Pointer ADPlistObject::createWithPlistType(ADPlistType type, ADPlistParent *parent)
{
    return createWithPlist(defaultValueForPlistType(type), parent);
}

ADPlistObject::Pointer ADPlistObject::createWithPlist(const PlistValue &plist,
                                                      ADPlistParent *parent)
{
    Pointer node = std::make_shared<ADPlistObject>(Passkey{}, shownValue(plist), parent);
    node->createChildrenAndNotify(false);
    return node;
}

ADPlistObject::Pointer ADPlistObject::copy() const
{
    return createWithPlist(_plist.kz_copyMutableContainers(), nullptr);
}

// --- tree position -----------------------------------------------------------------

bool ADPlistObject::isRoot() const
{
    return plistObjectParent() == nullptr;
}

ADPlistObject *ADPlistObject::plistObjectParent() const
{
    return dynamic_cast<ADPlistObject *>(_parent);
}

ADPlistObject *ADPlistObject::root()
{
    ADPlistObject *node = this;
    while (ADPlistObject *up = node->plistObjectParent())
        node = up;
    return node;
}

bool ADPlistObject::hasAncestor(const ADPlistObject *object) const
{
    if (!object)
        return false;
    for (const ADPlistObject *node = this; node; node = node->plistObjectParent()) {
        if (node == object)
            return true;
    }
    return false;
}

KZNotificationCenter *ADPlistObject::notificationCenter() const
{
    return _parent ? _parent->notificationCenter() : nullptr;
}

ADUndoManager *ADPlistObject::undoManager() const
{
    return _parent ? _parent->undoManager() : nullptr;
}

ADStructureDefinition *ADPlistObject::structureDefinition() const
{
    return _parent ? _parent->structureDefinition() : nullptr;
}

// --- children ------------------------------------------------------------------------

qint64 ADPlistObject::childCount() const
{
    return _children ? qint64(_children->size()) : 0;
}

ADPlistObject *ADPlistObject::childAtIndex(qint64 index) const
{
    return childPointerAtIndex(index).get();
}

const ADPlistObject::Pointer &ADPlistObject::childPointerAtIndex(qint64 index) const
{
    Q_ASSERT(_children && index >= 0 && index < childCount());
    return (*_children)[size_t(index)];
}

std::vector<ADPlistObject::Pointer>
ADPlistObject::childrenAtIndexes(const KZIndexSet &indexes) const
{
    std::vector<Pointer> found;
    found.reserve(size_t(indexes.count()));
    indexes.forEach([&](qint64 i) { found.push_back(childPointerAtIndex(i)); });
    return found;
}

qint64 ADPlistObject::indexOfChild(const ADPlistObject *child) const
{
    if (!_children)
        return -1;
    const auto it = std::find_if(_children->begin(), _children->end(),
                                 [child](const Pointer &p) { return p.get() == child; });
    return it == _children->end() ? -1 : qint64(it - _children->begin());
}

QString ADPlistObject::keyAtIndex(qint64 index) const
{
    Q_ASSERT(_keys && index >= 0 && index < _keys->size());
    return (*_keys)[index];
}

qint64 ADPlistObject::indexOfKey(const QString &key) const
{
    const qsizetype i = _keys ? _keys->indexOf(key) : -1;
    return i < 0 ? KZNotFound : qint64(i);
}

ADPlistObject *ADPlistObject::childForKey(const QString &key) const
{
    return _childrenByKey ? _childrenByKey->value(key, nullptr) : nullptr;
}

// --- names and paths ---------------------------------------------------------------------

QString ADPlistObject::key() const
{
    const ADPlistObject *up = plistObjectParent();
    if (!up || !up->hasKeys() || _indexInParent < 0)
        return QString();
    return up->keyAtIndex(_indexInParent);
}

QString ADPlistObject::name() const
{
    if (!_name.isNull())
        return _name;
    const QString k = key();
    return k.isNull() ? QStringLiteral("") : k;
}

void ADPlistObject::setName(const QString &name)
{
    if (name.isNull())
        return;
    if (!_parent) {
        _name = name;
        return;
    }
    ADPlistObject *up = plistObjectParent();
    if (!up || !up->hasKeys() || up->childForKey(name))
        return;
    up->setKey(name, _indexInParent);
}

QVariantList ADPlistObject::path() const
{
    QVariantList steps;
    for (const ADPlistObject *node = this; const ADPlistObject *up = node->plistObjectParent();
         node = up) {
        if (node->_indexInParent < 0)
            continue;
        if (up->hasKeys())
            steps.prepend(up->keyAtIndex(node->_indexInParent));
        else
            steps.prepend(node->_indexInParent);
    }
    return steps;
}

ADPlistObject *ADPlistObject::objectAtPath(const QVariantList &path)
{
    ADPlistObject *node = this;
    for (const QVariant &step : path) {
        const bool isNumber =
            step.typeId() == QMetaType::LongLong || step.typeId() == QMetaType::Int ||
            step.typeId() == QMetaType::ULongLong || step.typeId() == QMetaType::UInt ||
            step.typeId() == QMetaType::Double;
        if (isNumber && node->plistType() == ADPlistTypeArray) {
            const auto index = qint32(step.toLongLong());
            if (index < 0 || index >= node->childCount())
                return nullptr;
            node = node->childAtIndex(index);
        } else if (step.typeId() == QMetaType::QString && node->hasKeys()) {
            node = node->childForKey(step.toString());
            if (!node)
                return nullptr;
        } else {
            return nullptr;
        }
    }
    return node;
}

QString ADPlistObject::uniqueKey() const
{
    return uniqueKeyWithPrefix(KZLocalizedStringWithID(111, QStringLiteral("New item")));
}

QString ADPlistObject::uniqueKeyWithPrefix(const QString &prefix) const
{
    const QString base =
        prefix.isNull() ? KZLocalizedStringWithID(112, QStringLiteral("New item")) : prefix;
    QSet<QString> taken;
    if (_keys)
        taken = QSet<QString>(_keys->begin(), _keys->end());
    return kz_uniquifyInStrings(base, taken);
}

// --- structure definition questions ----------------------------------------------------------

ADDefinitionElement *ADPlistObject::structureDefinitionElement() const
{
    return nullptr; // no definition elements yet
}

ADDefinitionElement *ADPlistObject::definitionElementForChildAtIndex(qint64) const
{
    return nullptr;
}

bool ADPlistObject::canBePlistType(ADPlistType) const
{
    return structureDefinitionElement() == nullptr;
}

PlistValue ADPlistObject::defaultValue() const
{
    return PlistValue();
}

bool ADPlistObject::shouldDisplayLocalizedKey() const
{
    return structureDefinition() != nullptr && isRoot();
}

bool ADPlistObject::keyIsRequired() const
{
    return false;
}

QString ADPlistObject::rawKeyForLocalizedKey(const QString &localizedKey) const
{
    return localizedKey;
}

// --- building children ----------------------------------------------------------------------

void ADPlistObject::createChildrenAndNotify(bool notify)
{
    // The subtree is built breadth by breadth from a work list, not by recursion.
    std::vector<ADPlistObject *> work{this};
    while (!work.empty()) {
        ADPlistObject *node = work.back();
        work.pop_back();
        node->buildOwnChildren();
        if (!node->_children)
            continue;
        for (const Pointer &child : *node->_children) {
            if (child->hasChildren())
                work.push_back(child.get());
        }
    }
    if (notify && _children)
        post(PlistObjectDidAddChildNotification,
             {{PlistObjectChildIndexesKey,
               QVariant::fromValue(KZIndexSet::range(0, childCount()))}});
}

void ADPlistObject::buildOwnChildren()
{
    if (!_plist.isContainer()) {
        _keys.reset();
        _children.reset();
        _childrenByKey.reset();
        return;
    }
    auto makeChild = [this](const PlistValue &value, qint64 index) {
        Pointer child = std::make_shared<ADPlistObject>(Passkey{}, shownValue(value), this);
        child->_indexInParent = index;
        return child;
    };
    if (_plist.isArray()) {
        const PlistArray array = _plist.toArray();
        _keys.reset();
        _childrenByKey.reset();
        _children.emplace();
        _children->reserve(size_t(array.count()));
        for (qsizetype i = 0; i < array.count(); ++i)
            _children->push_back(makeChild(array.at(i), i));
        return;
    }
    PlistDictionary dictionary = _plist.toDictionary();
    QStringList fileKeys;
    fileKeys.reserve(dictionary.count());
    for (qsizetype i = 0; i < dictionary.count(); ++i)
        fileKeys.append(dictionary.keyAt(i));
    const std::vector<qsizetype> order = keyOrder(dictionary, fileKeys);
    if (!isIdentity(order))
        dictionary.reorder(order); // the plain dictionary shows the tree's order
    _keys.emplace();
    _keys->reserve(dictionary.count());
    _children.emplace();
    _children->reserve(size_t(dictionary.count()));
    _childrenByKey.emplace();
    _childrenByKey->reserve(dictionary.count());
    for (qsizetype i = 0; i < dictionary.count(); ++i) {
        const QString &key = fileKeys[order[size_t(i)]];
        _children->push_back(makeChild(dictionary.valueAt(i), i));
        _keys->append(key);
        _childrenByKey->insert(key, _children->back().get());
    }
}

void ADPlistObject::destroyChildrenAndNotify(bool notify)
{
    if (!hasChildren())
        return;
    const KZIndexSet all = KZIndexSet::range(0, childCount());
    if (_children) {
        for (const Pointer &child : *_children) {
            child->_parent = nullptr;
            child->_indexInParent = -1;
        }
    }
    _children.emplace();
    _keys.emplace();
    _childrenByKey.emplace();
    if (notify)
        post(PlistObjectDidRemoveChildNotification,
             {{PlistObjectChildIndexesKey, QVariant::fromValue(all)}});
}

void ADPlistObject::post(const QString &name, const QVariantMap &userInfo) const
{
    if (KZNotificationCenter *center = notificationCenter())
        center->postNotification(name, this, userInfo);
}

// --- debug texts ------------------------------------------------------------------------------

QString ADPlistObject::valueDescription() const
{
    const QString shown = _plist.displayString();
    return shown.isNull() ? classNameForPlistType(plistType()) : shown;
}

QString ADPlistObject::description() const
{
    if (!hasChildren())
        return QStringLiteral("[%1: plist = %2]").arg(addressText(this), valueDescription());
    QStringList children;
    for (const Pointer &child : _children.value_or(std::vector<Pointer>()))
        children << addressText(child.get());
    const QString keys = _keys ? u'(' + _keys->join(u", ") + u')' : QStringLiteral("(null)");
    return QStringLiteral("[%1: keys = %2, children = (%3)]")
        .arg(addressText(this), keys, children.join(u", "));
}

QString ADPlistObject::shortDescription() const
{
    const QString last =
        hasChildren() ? QStringLiteral("%1 children").arg(childCount()) : valueDescription();
    const QString k = key();
    return QStringLiteral("[%1: plistType = %2; key=%3; indexInParent=%4; %5]")
        .arg(addressText(this), plistTypeName(), k.isNull() ? QStringLiteral("(null)") : k)
        .arg(_indexInParent)
        .arg(last);
}
