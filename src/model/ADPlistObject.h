#pragma once

#include "ADPlistParent.h"

#include "shared/KZComparison.h"
#include "shared/KZIndexMap.h"
#include "shared/KZIndexSet.h"
#include "shared/KZRange.h"
#include "shared/PlistValue.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class ADDefinitionElement;
class PlistEnumerator;
class ADValueViewer;
class KZError;

/// Keys of the attributes `plistObjectWithData` fills in.
inline const QString PlistObjectFormat = QStringLiteral("PlistObjectFormat");
inline const QString PlistObjectErrorString = QStringLiteral("PlistObjectErrorString");

/// One node of a plist tree. A node does not replace the plain value, it
/// shadows it: a container node keeps its real mutable plain container in
/// `_plist`, and its child nodes hold the very entries of that container. So
/// the root's `plist()` is at every moment the document's whole plain value,
/// and each edit writes both sides.
///
/// A node stands over its value at little more than the value's own cost:
/// - a dictionary's keys, their order and the lookup by key are the plain
///   dictionary's own (its order is always the order the tree shows);
/// - child nodes are made one by one when first asked for, and kept from then
///   on, so a node's children are always the same objects;
/// - nodes are counted in place (`Pointer`) and come from the value nodes' pool.
///
/// Invariants, with n the plain container's count:
/// - container: n child slots once any child was asked for; slot i, when
///   made, holds the child whose `_plist` is entry i (a keyed-archiver UID
///   entry has a child showing it as {"CF$UID": n}, see `shownValueForPlist`);
/// - scalar: no child slots;
/// - each made child's `_indexInParent` is its place and its `_parent` is the node.
/// After `destroyChildrenAndNotify` a container shows no children, whatever
/// its plain value holds, until `createChildrenAndNotify`.
///
/// A node owns its children (counted, so that undo can keep a removed node
/// alive); the parent link is a plain pointer cleared on removal. Nodes are
/// made only through `create...`. Used on one thread at a time, reading
/// included, since reading makes children; a parentless tree may be built and
/// read on any thread.
class ADPlistObject final : public ADPlistParent
{
    struct Passkey
    {};

public:
    class Pointer;

    ADPlistObject(Passkey, PlistValue plist, ADPlistParent *parent);
    ~ADPlistObject() override;
    ADPlistObject(const ADPlistObject &) = delete;
    ADPlistObject &operator=(const ADPlistObject &) = delete;
    // From the value nodes' pool: a big file's tree has millions of nodes.
    static void *operator new(size_t size);
    static void operator delete(void *node, size_t size) noexcept;

    // --- class operations
    /// The type code of a kind of value; kinds that are no plist type give 0 (Array).
    static ADPlistType plistTypeForValueKind(PlistValue::Kind kind);
    static PlistValue::Kind valueKindForPlistType(ADPlistType type);
    /// "Array", "Boolean", ...; a null string for an unknown code.
    static QString classNameForPlistType(ADPlistType type);
    /// What a new node of the type starts with (a boolean starts true, a date
    /// at the current whole second); none for an unknown code.
    static PlistValue defaultValueForPlistType(ADPlistType type);
    /// The value a node shows for a plain value: a keyed-archiver UID as a new
    /// dictionary {"CF$UID": n}, anything else as it is.
    static PlistValue shownValueForPlist(const PlistValue &plist);

    // --- files: the only route between the disk and a tree (any thread)
    /// The plain value of a file in XML, binary, old-style text or, when none
    /// of those reads it, JSON, with mutable containers; none on failure.
    /// `format` (may be null) gets the format or -1, `error` (may be null) the reason.
    static PlistValue readPlistFromFile(const QString &path, bool authorizeIfNecessary,
                                        ADPlistFormat *format, std::optional<KZError> *error);
    /// The reading behind `readPlistFromFile` for bytes already in memory;
    /// `path` names them in the message.
    static PlistValue readPlistFromData(const QByteArray &data, const QString &path,
                                        ADPlistFormat *format, std::optional<KZError> *error);
    /// A parentless tree over the file's value, or null. Never throws.
    static Pointer plistObjectWithContentsOfFile(const QString &path, bool authorizeIfNecessary,
                                                 ADPlistFormat *format,
                                                 std::optional<KZError> *error);
    /// A parentless tree over data in memory, or null; `attributes` (may be
    /// null) gets PlistObjectFormat, or PlistObjectErrorString on failure.
    static Pointer plistObjectWithData(const QByteArray &data, QVariantMap *attributes);
    /// Writes atomically: on any failure the old file is left as it was.
    static std::optional<KZError> writePlist(const PlistValue &plist, const QString &path,
                                             ADPlistFormat format, bool humanReadable);
    /// "XML", "Binary", "ASCII" or "JSON"; a null string for any other code.
    static QString displayStringForPlistFormat(ADPlistFormat format);

    // --- construction
    /// A string node with no parent.
    static Pointer create();
    static Pointer createWithPlistType(ADPlistType type, ADPlistParent *parent = nullptr);
    /// Builds the node over `plist`, which is not copied: pass a value whose
    /// containers nobody else edits. Its dictionaries take the key order.
    static Pointer createWithPlist(const PlistValue &plist, ADPlistParent *parent = nullptr);
    /// A new parentless tree over a deep copy; keys come out in sort order.
    Pointer copy() const;

    // --- tree position
    ADPlistParent *parent() const { return _parent; }
    void setParent(ADPlistParent *parent);
    qint64 indexInParent() const { return _indexInParent; }
    /// True when the parent is not a node: a parentless node, or one under an outline.
    bool isRoot() const { return plistObjectParent() == nullptr; }
    ADPlistObject *plistObjectParent() const { return _parentIsNode ? nodeOf(_parent) : nullptr; }
    ADPlistObject *root();
    /// Whether `object` is this node or one above it.
    bool hasAncestor(const ADPlistObject *object) const;

    // --- what the parent chain offers
    KZNotificationCenter *notificationCenter() const override;
    ADUndoManager *undoManager() const override;
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return _type; }
    ADStructureDefinition *structureDefinition() const override;

    // --- value
    const PlistValue &plist() const { return _plist; }
    /// What a container holds for this node, and what a file holds for a
    /// root: its value, or the keyed-archiver UID it shows.
    PlistValue entryValue() const;
    QString plistTypeName() const { return classNameForPlistType(plistType()); }
    /// True for arrays and dictionaries, empty or not.
    bool hasChildren() const { return _type == ADPlistTypeArray || _type == ADPlistTypeDictionary; }
    bool hasKeys() const { return _type == ADPlistTypeDictionary; }
    const std::shared_ptr<ADValueViewer> &valueViewer() const;

    // --- children (made when first asked for)
    qint64 childCount() const;
    ADPlistObject *childAtIndex(qint64 index) const;
    const Pointer &childPointerAtIndex(qint64 index) const;
    std::vector<Pointer> childrenAtIndexes(const KZIndexSet &indexes) const;
    /// -1 when the object is not a child.
    qint64 indexOfChild(const ADPlistObject *child) const;
    QString keyAtIndex(qint64 index) const;
    /// A copy of the keys; none on an array or scalar.
    std::optional<QStringList> keys() const;
    /// Index of the key, or KZNotFound.
    qint64 indexOfKey(const QString &key) const;
    ADPlistObject *childForKey(const QString &key) const;
    /// Every descendant, depth first.
    PlistEnumerator objectEnumerator();

    // --- names and paths
    /// A null string unless the parent is a dictionary node.
    QString key() const;
    QString name() const;
    /// Renames within a dictionary parent unless a sibling has the name; names a parentless node.
    void setName(const QString &name);
    /// Keys (strings) and indexes (numbers) from the root down; empty for the root.
    QVariantList path() const;
    ADPlistObject *objectAtPath(const QVariantList &path);
    QString uniqueKey() const;
    QString uniqueKeyWithPrefix(const QString &prefix) const;

    // --- what the structure definition says (nothing while none applies)
    ADDefinitionElement *structureDefinitionElement() const;
    ADDefinitionElement *definitionElementForChildAtIndex(qint64 index) const;
    bool canBePlistType(ADPlistType type) const;
    PlistValue defaultValue() const;
    bool shouldDisplayLocalizedKey() const;
    bool keyIsRequired() const;
    QString rawKeyForLocalizedKey(const QString &localizedKey) const;

    // --- editing: every change of a tree goes through these. Each registers
    // its inverse with the undo manager, changes the nodes and the plain
    // containers, renumbers and posts, in that order. The undo manager and
    // centre are looked up once per call, so that walks over deep trees stay
    // linear.
    /// Replaces the value (a copy of it); an equal value on a scalar changes nothing.
    void setPlist(const PlistValue &plist);
    void coerceToPlistType(ADPlistType type);
    void setValueViewer(const std::shared_ptr<ADValueViewer> &viewer);
    /// Renames a child; a sibling that has the key already is removed.
    void setKey(const QString &key, qint64 childIndex);
    /// Puts `children` at `indexes` of the result; for a dictionary, under
    /// `keys`, which must be new. The values go in as they are.
    void insertChildren(const std::vector<Pointer> &children, const QStringList &keys,
                        const KZIndexSet &indexes);
    void insertChild(const Pointer &child, qint64 index, const QString &key = QString());
    void addChild(const Pointer &child, const QString &key = QString());
    /// A child with the type's default value; a dictionary key is made unique from `key`.
    ADPlistObject *createNewChildOfType(ADPlistType type, qint64 index,
                                        const QString &key = QString());
    void removeChildrenAtIndexes(const KZIndexSet &indexes);
    void removeChildAtIndex(qint64 index);
    void removeAllChildren();
    /// For arrays: removes the child at `index` and inserts `object` there.
    void replaceChildAtIndex(qint64 index, const Pointer &object);
    void moveChildIndexes(const KZIndexSet &indexes, qint64 toIndex);
    void reorderChildrenUsingMap(const KZIndexMap &map,
                                 const std::vector<Pointer> &movedChildren = {});
    void sortKeysUsingSelector(KZComparison comparison, bool sortRecursively = false);
    void sortValuesUsingSelector(KZComparison comparison, bool sortRecursively = false);
    /// Dictionaries first, by their value under `subkey` (missing: last); then the others.
    void sortValuesBySubkey(const QString &subkey, KZComparison comparison);
    QSet<QString> unionOfChildrenSubkeys() const;
    /// Whether that union has anything in it; stops at the first subkey.
    bool hasChildrenSubkeys() const;

    // --- format compatibility
    /// The types a format holds at the root or below it; 0 for an unknown format.
    static ADPlistMask plistTypeMaskForFormat(ADPlistFormat format, bool rootObject);
    static bool isPlistType(ADPlistType type, ADPlistFormat format, bool rootObject);
    /// Whether this node and every descendant fit the format, each tested with
    /// the mask of this node's place: asked of a root for JSON, that is the
    /// root's narrow mask for every node, which the conversion prompt relies on.
    bool compatibleWithPlistFormat(ADPlistFormat format);
    /// Turns what does not fit (each node at its own place) into strings, with
    /// undo ("Convert"); false when even a string does not fit (a scalar root
    /// for JSON), leaving earlier conversions in place.
    bool makeCompatibleWithPlistFormat(ADPlistFormat format);
    /// The first node, from this one down, that does not fit its own place; null when all fit.
    ADPlistObject *firstIncompatibleObjectForFormat(ADPlistFormat format);
    /// A value that does not fit its place in a format: its path from the top
    /// and its type.
    struct Misfit
    {
        QVariantList path;
        ADPlistType type;
    };
    /// What `firstIncompatibleObjectForFormat` finds on a root built over
    /// `plist` with the plain key order, found without building a tree.
    static std::optional<Misfit> firstIncompatibleValueForFormat(const PlistValue &plist,
                                                                 ADPlistFormat format);

    // --- comparing nodes for sorting
    /// Types in code order; strings by the key sort default; containers keep
    /// their order under an array, go by key under a dictionary. `other` null
    /// stands for the null value.
    int plistCompare(const ADPlistObject *other) const;
    int compareUsingSelector(KZComparison comparison, const ADPlistObject *other) const;
    /// The scripting code of the type: 'PLTA', 'bool', 'rdat', 'ldt ', 'cDCT', 'nmbr', 'TEXT'; 0
    /// for null.
    quint32 plistTypeEnum() const;

    // --- building children
    /// Puts every dictionary from here down into the preference's key order
    /// (the plain dictionaries take it too) and lets the children be made
    /// anew when asked for; with `notify`, posts that all children were added.
    void createChildrenAndNotify(bool notify);
    /// Detaches all children, leaving none shown; `_plist` is untouched.
    void destroyChildrenAndNotify(bool notify);

    // --- debug texts
    QString description() const;
    QString shortDescription() const;

private:
    /// What an edit reaches through the parent chain, looked up once per call.
    struct Context
    {
        ADUndoManager *undo = nullptr;
        KZNotificationCenter *center = nullptr;
    };
    /// Rarely set: most nodes have neither.
    struct Extras
    {
        QString name;
        std::shared_ptr<ADValueViewer> valueViewer;
    };
    using Slots = std::vector<Pointer>;

    static ADPlistObject *nodeOf(ADPlistParent *parent);
    /// Waits first for any reader on another thread that holds the tree's
    /// root (`ADPlistReadLease`): every edit starts here.
    Context context() const;
    Slots &childSlots() const;
    /// Entry `index` of the plain container.
    const PlistValue &entryAtIndex(qint64 index) const;
    Pointer makeChild(qint64 index) const;
    void attachChild(ADPlistObject &child, qint64 index);
    void renumberChildren();
    std::unique_ptr<Slots> detachChildren();
    void createChildren(const Context &context, bool notify);
    void destroyChildren(const Context &context, bool notify);
    void registerUndo(const Context &context, std::function<void(ADPlistObject &)> inverse);
    static void setActionName(const Context &context, const QString &name);
    void post(const Context &context, const QString &name, const QVariantMap &userInfo) const;
    void writeThroughToParent();
    void writeThroughShadow();
    Extras &extras();

    void setPlist(const Context &context, const PlistValue &plist);
    void coerceToPlistType(const Context &context, ADPlistType type);
    void setValueViewer(const Context &context, const std::shared_ptr<ADValueViewer> &viewer);
    /// Keys as string values: a removal hands its own back to its undo, shared, not copied.
    void insertChildren(const Context &context, const std::vector<Pointer> &children,
                        std::vector<PlistValue> keys, const KZIndexSet &indexes);
    void removeChildrenAtIndexes(const Context &context, const KZIndexSet &indexes);
    void reorderChildrenUsingMap(const Context &context, const KZIndexMap &map,
                                 const std::vector<Pointer> &movedChildren);
    QString valueDescription() const;

    mutable std::atomic<quint32> _references{0};
    bool _parentIsNode = false;
    bool _showsUid = false; // `_plist` shows a keyed-archiver UID of the parent's container
    // `destroyChildrenAndNotify` ran, `createChildrenAndNotify` not yet.
    bool _childrenDropped = false;
    // The type of `_plist`, kept beside it: outlines ask every row, and the
    // value itself lies elsewhere in memory.
    qint8 _type = qint8(ADPlistTypeUnknown);
    PlistValue _plist;
    mutable std::unique_ptr<Slots> _children; // made with the first child asked for
    ADPlistParent *_parent = nullptr;
    qint64 _indexInParent = -1;
    std::unique_ptr<Extras> _extras;
};

/// A counted reference to a node: copies share the node, the last one to go
/// frees it (and, without recursion, the subtree it alone held). Counting is
/// atomic, so a reference may be handed to another thread.
class ADPlistObject::Pointer
{
public:
    Pointer() noexcept = default;
    Pointer(std::nullptr_t) noexcept {}
    explicit Pointer(ADPlistObject *node) noexcept : _node(node) { retain(); }
    Pointer(const Pointer &other) noexcept : _node(other._node) { retain(); }
    Pointer(Pointer &&other) noexcept : _node(std::exchange(other._node, nullptr)) {}
    Pointer &operator=(Pointer other) noexcept
    {
        std::swap(_node, other._node);
        return *this;
    }
    ~Pointer() { release(); }

    ADPlistObject *get() const noexcept { return _node; }
    ADPlistObject *operator->() const noexcept { return _node; }
    ADPlistObject &operator*() const noexcept { return *_node; }
    explicit operator bool() const noexcept { return _node != nullptr; }
    void reset() noexcept { Pointer().swap(*this); }
    void swap(Pointer &other) noexcept { std::swap(_node, other._node); }
    friend bool operator==(const Pointer &a, const Pointer &b) noexcept
    {
        return a._node == b._node;
    }
    friend bool operator==(const Pointer &a, std::nullptr_t) noexcept { return !a._node; }

private:
    void retain() const noexcept
    {
        if (_node)
            _node->_references.fetch_add(1, std::memory_order_relaxed);
    }
    void release() noexcept;

    ADPlistObject *_node = nullptr;
};

using ADPlistObjectList = std::vector<ADPlistObject::Pointer>;
Q_DECLARE_METATYPE(ADPlistObjectList)
