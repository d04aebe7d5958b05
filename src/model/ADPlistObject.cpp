#include "ADPlistObject.h"

#include "ADKeyOrder.h"
#include "ADKeySortPreferences.h"
#include "ADPlistNotifications.h"
#include "ADPlistReadLease.h"

#include "shared/KZError.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"
#include "shared/KZReferenceDate.h"
#include "shared/KZStringAdditions.h"
#include "shared/NodeAllocator.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValueInternals.h"
#include "storage/PlistFileIO.h"

#include <QSet>

#include <cmath>
#include <exception>

namespace {

// Destroying a node destroys the children only it holds; in a tree 100,000
// deep that would recurse as deep. The outermost destructor on a thread
// drains a queue of children, and destructors run meanwhile only add to it.
thread_local std::vector<ADPlistObject::Pointer> *pendingChildren = nullptr;

QString addressText(const void *object)
{
    return QStringLiteral("<ADPlistObject: 0x%1>").arg(quintptr(object), 0, 16);
}

} // namespace

ADPlistObject::ADPlistObject(Passkey, PlistValue plist, ADPlistParent *parent)
    : _plist(std::move(plist))
{
    _type = qint8(_plist.plistType());
    setParent(parent);
}

ADPlistObject::~ADPlistObject()
{
    if (!_children)
        return;
    if (pendingChildren) {
        for (Pointer &child : *_children) {
            if (child)
                pendingChildren->push_back(std::move(child));
        }
        return;
    }
    std::vector<Pointer> queue;
    pendingChildren = &queue;
    for (Pointer &child : *_children)
        child.reset(); // may queue its own children
    while (!queue.empty()) {
        Pointer last = std::move(queue.back());
        queue.pop_back();
        last.reset();
    }
    pendingChildren = nullptr;
}

void *ADPlistObject::operator new(size_t size)
{
    return plist_detail::NodeAllocator::allocate(size);
}

void ADPlistObject::operator delete(void *node, size_t size) noexcept
{
    plist_detail::NodeAllocator::deallocate(node, size);
}

void ADPlistObject::Pointer::release() noexcept
{
    if (_node && _node->_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete _node;
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

PlistValue ADPlistObject::shownValueForPlist(const PlistValue &plist)
{
    if (plist.kind() != PlistValue::Kind::Uid)
        return plist;
    PlistDictionary d = PlistDictionary::create(1);
    d.insert(QStringLiteral("CF$UID"), PlistValue(plist.toUid()));
    return d;
}

// --- files -------------------------------------------------------------------------

PlistValue ADPlistObject::readPlistFromFile(const QString &path, bool authorizeIfNecessary,
                                            ADPlistFormat *format, std::optional<KZError> *error)
{
    return PlistFileIO::readPlistFromFile(path, authorizeIfNecessary, format, error);
}

PlistValue ADPlistObject::readPlistFromData(const QByteArray &data, const QString &path,
                                            ADPlistFormat *format, std::optional<KZError> *error)
{
    return PlistFileIO::readPlistFromData(data, path, format, error);
}

ADPlistObject::Pointer ADPlistObject::plistObjectWithContentsOfFile(const QString &path,
                                                                    bool authorizeIfNecessary,
                                                                    ADPlistFormat *format,
                                                                    std::optional<KZError> *error)
{
    try {
        const PlistValue plist = readPlistFromFile(path, authorizeIfNecessary, format, error);
        return plist.isNone() ? nullptr : createWithPlist(plist);
    } catch (const std::exception &e) {
        // Nothing a file holds may take the program down here.
        if (error)
            *error = PlistFileIO::readError(QString::fromLocal8Bit(e.what()));
        return nullptr;
    }
}

ADPlistObject::Pointer ADPlistObject::plistObjectWithData(const QByteArray &data,
                                                          QVariantMap *attributes)
{
    const PlistFileIO::DataRead read = PlistFileIO::readPlistData(data);
    if (attributes)
        attributes->insert(PlistObjectFormat, read.plistFormat);
    if (!read.value.isNone())
        return createWithPlist(read.value);
    if (attributes)
        attributes->insert(PlistObjectErrorString, read.errorString);
    return nullptr;
}

std::optional<KZError> ADPlistObject::writePlist(const PlistValue &plist, const QString &path,
                                                 ADPlistFormat format, bool humanReadable)
{
    return PlistFileIO::writePlist(plist, path, format, humanReadable);
}

QString ADPlistObject::displayStringForPlistFormat(ADPlistFormat format)
{
    return PlistFileIO::displayStringForPlistFormat(format);
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
    Pointer node(new ADPlistObject(Passkey{}, shownValueForPlist(plist), parent));
    node->_showsUid = plist.kind() == PlistValue::Kind::Uid;
    node->createChildrenAndNotify(false);
    return node;
}

ADPlistObject::Pointer ADPlistObject::copy() const
{
    return createWithPlist(_plist.kz_copyMutableContainers(), nullptr);
}

// --- tree position -----------------------------------------------------------------

void ADPlistObject::setParent(ADPlistParent *parent)
{
    _parent = parent;
    _parentIsNode = dynamic_cast<ADPlistObject *>(parent) != nullptr;
}

ADPlistObject *ADPlistObject::nodeOf(ADPlistParent *parent)
{
    return static_cast<ADPlistObject *>(parent);
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

// The chain is walked up to what stands above the root, without a virtual
// call for each node on the way.
KZNotificationCenter *ADPlistObject::notificationCenter() const
{
    const ADPlistObject *top = this;
    while (const ADPlistObject *up = top->plistObjectParent())
        top = up;
    return top->_parent ? top->_parent->notificationCenter() : nullptr;
}

ADPlistObject::Context ADPlistObject::context() const
{
    const ADPlistObject *top = this;
    while (const ADPlistObject *up = top->plistObjectParent())
        top = up;
    ADPlistReadLease::waitUntilReleased(top->_plist);
    return {top->undoManager(), top->notificationCenter()};
}

ADUndoManager *ADPlistObject::undoManager() const
{
    const ADPlistObject *top = this;
    while (const ADPlistObject *up = top->plistObjectParent())
        top = up;
    return top->_parent ? top->_parent->undoManager() : nullptr;
}

ADStructureDefinition *ADPlistObject::structureDefinition() const
{
    const ADPlistObject *top = this;
    while (const ADPlistObject *up = top->plistObjectParent())
        top = up;
    return top->_parent ? top->_parent->structureDefinition() : nullptr;
}

const std::shared_ptr<ADValueViewer> &ADPlistObject::valueViewer() const
{
    static const std::shared_ptr<ADValueViewer> none;
    return _extras ? _extras->valueViewer : none;
}

ADPlistObject::Extras &ADPlistObject::extras()
{
    if (!_extras)
        _extras = std::make_unique<Extras>();
    return *_extras;
}

// --- children ------------------------------------------------------------------------

qint64 ADPlistObject::childCount() const
{
    return hasChildren() && !_childrenDropped ? _plist.containerCount() : 0;
}

ADPlistObject::Slots &ADPlistObject::childSlots() const
{
    if (!_children)
        _children = std::make_unique<Slots>(size_t(childCount()));
    return *_children;
}

const PlistValue &ADPlistObject::entryAtIndex(qint64 index) const
{
    return _plist.containerValueAt(index);
}

ADPlistObject::Pointer ADPlistObject::makeChild(qint64 index) const
{
    const PlistValue &entry = entryAtIndex(index);
    // Children are mostly asked for in order: fetch a later entry's value meanwhile.
    if (constexpr qint64 kAhead = 8; index + kAhead < _plist.containerCount())
        plist_detail::PlistValueInternals::prefetch(entryAtIndex(index + kAhead));
    // Making a child is no change of the tree: the node only becomes visible.
    auto *self = const_cast<ADPlistObject *>(this);
    Pointer child(new ADPlistObject(Passkey{}, shownValueForPlist(entry), nullptr));
    child->_showsUid = entry.kind() == PlistValue::Kind::Uid;
    self->attachChild(*child, index);
    return child;
}

void ADPlistObject::attachChild(ADPlistObject &child, qint64 index)
{
    child._parent = this;
    child._parentIsNode = true;
    child._indexInParent = index;
}

ADPlistObject *ADPlistObject::childAtIndex(qint64 index) const
{
    return childPointerAtIndex(index).get();
}

const ADPlistObject::Pointer &ADPlistObject::childPointerAtIndex(qint64 index) const
{
    Slots &all = childSlots();
    Q_ASSERT(index >= 0 && index < qint64(all.size()));
    Pointer &slot = all[size_t(index)];
    if (!slot)
        slot = makeChild(index);
    return slot;
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
    return child && child->plistObjectParent() == this ? child->_indexInParent : -1;
}

QString ADPlistObject::keyAtIndex(qint64 index) const
{
    Q_ASSERT(hasKeys() && index >= 0 && index < childCount());
    return _plist.containerKeyAt(index).toString();
}

std::optional<QStringList> ADPlistObject::keys() const
{
    if (!hasKeys())
        return std::nullopt;
    QStringList all;
    all.reserve(childCount());
    for (qint64 i = 0; i < childCount(); ++i)
        all.append(keyAtIndex(i));
    return all;
}

qint64 ADPlistObject::indexOfKey(const QString &key) const
{
    if (!hasKeys() || _childrenDropped)
        return KZNotFound;
    const qsizetype i = _plist.toDictionary().indexOf(key);
    return i < 0 ? KZNotFound : qint64(i);
}

ADPlistObject *ADPlistObject::childForKey(const QString &key) const
{
    const qint64 i = indexOfKey(key);
    return i == KZNotFound ? nullptr : childAtIndex(i);
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
    if (_extras && !_extras->name.isNull())
        return _extras->name;
    const QString k = key();
    return k.isNull() ? QStringLiteral("") : k;
}

void ADPlistObject::setName(const QString &name)
{
    if (name.isNull())
        return;
    if (!_parent) {
        extras().name = name;
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
    const QStringList taken = keys().value_or(QStringList());
    return kz_uniquifyInStrings(base, QSet<QString>(taken.begin(), taken.end()));
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
    createChildren(context(), notify);
}

void ADPlistObject::createChildren(const Context &context, bool notify)
{
    detachChildren();
    _childrenDropped = false;
    ADKeyOrder::applyToSubtree(_plist, ADKeySortPreferences::current());
    if (notify && hasChildren())
        post(context, PlistObjectDidAddChildNotification,
             {{PlistObjectChildIndexesKey,
               QVariant::fromValue(KZIndexSet::range(0, childCount()))}});
}

void ADPlistObject::destroyChildrenAndNotify(bool notify)
{
    destroyChildren(context(), notify);
}

void ADPlistObject::destroyChildren(const Context &context, bool notify)
{
    if (!hasChildren())
        return;
    const KZIndexSet all = KZIndexSet::range(0, childCount());
    // The old children live until the listeners have heard of their going: a
    // view may still hold them.
    std::unique_ptr<Slots> dropped = detachChildren();
    _children = std::make_unique<Slots>();
    _childrenDropped = true;
    if (notify)
        post(context, PlistObjectDidRemoveChildNotification,
             {{PlistObjectChildIndexesKey, QVariant::fromValue(all)}});
}

// Detaches every child made so far and hands them over; the plain value is
// not touched.
std::unique_ptr<ADPlistObject::Slots> ADPlistObject::detachChildren()
{
    if (_children) {
        for (const Pointer &child : *_children) {
            if (!child)
                continue;
            child->_parent = nullptr;
            child->_parentIsNode = false;
            child->_indexInParent = -1;
        }
    }
    return std::move(_children);
}

void ADPlistObject::post(const Context &context, const QString &name,
                         const QVariantMap &userInfo) const
{
    if (context.center)
        context.center->postNotification(name, this, userInfo);
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
    for (qint64 i = 0; i < childCount(); ++i)
        children << addressText(childAtIndex(i));
    const std::optional<QStringList> k = keys();
    const QString keyText = k ? u'(' + k->join(u", ") + u')' : QStringLiteral("(null)");
    return QStringLiteral("[%1: keys = %2, children = (%3)]")
        .arg(addressText(this), keyText, children.join(u", "));
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
