#pragma once

#include "ADPlistParent.h"

#include "shared/KZIndexSet.h"
#include "shared/PlistValue.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>
#include <optional>
#include <vector>

class ADDefinitionElement;
class ADValueViewer;

/// One node of a plist tree. A node does not replace the plain value, it
/// shadows it: a container node keeps its real mutable plain container in
/// `_plist` and beside it child nodes whose `_plist` is the very entry of that
/// container. So the root's `plist()` is at every moment the document's whole
/// plain value, and each edit writes both sides.
///
/// Invariants, with n children:
/// - dictionary: `_keys`, `_children` have n entries; `_childrenByKey[_keys[i]]`
///   is `_children[i]`; the plain dictionary holds the same keys in the same
///   order, `_plist[_keys[i]]` being `_children[i]->_plist`;
/// - array: `_plist[i]` is `_children[i]->_plist`; no keys;
/// - scalar: no keys, children or key table;
/// - each child's `_indexInParent` is its place and its `_parent` is the node.
///
/// A node owns its children (shared, so that undo can keep a removed node
/// alive); the parent link is a plain pointer cleared on removal. Nodes are
/// made only through `create...`, always inside a shared_ptr. Used on one
/// thread at a time; a parentless tree may be built and read on any thread.
class ADPlistObject : public ADPlistParent, public std::enable_shared_from_this<ADPlistObject>
{
    struct Passkey
    {};

public:
    using Pointer = std::shared_ptr<ADPlistObject>;

    ADPlistObject(Passkey, PlistValue plist, ADPlistParent *parent);
    ~ADPlistObject() override;
    ADPlistObject(const ADPlistObject &) = delete;
    ADPlistObject &operator=(const ADPlistObject &) = delete;

    // --- class operations
    /// The type code of a kind of value; kinds that are no plist type give 0 (Array).
    static ADPlistType plistTypeForValueKind(PlistValue::Kind kind);
    static PlistValue::Kind valueKindForPlistType(ADPlistType type);
    /// "Array", "Boolean", ...; a null string for an unknown code.
    static QString classNameForPlistType(ADPlistType type);
    /// What a new node of the type starts with (a boolean starts true, a date
    /// at the current whole second); none for an unknown code.
    static PlistValue defaultValueForPlistType(ADPlistType type);

    // --- construction
    /// A string node with no parent.
    static Pointer create();
    static Pointer createWithPlistType(ADPlistType type, ADPlistParent *parent = nullptr);
    /// Builds the node and its subtree over `plist`, which is not copied: pass
    /// a value whose containers nobody else edits.
    static Pointer createWithPlist(const PlistValue &plist, ADPlistParent *parent = nullptr);
    /// A new parentless tree over a deep copy; keys come out in sort order.
    Pointer copy() const;

    // --- tree position
    ADPlistParent *parent() const { return _parent; }
    void setParent(ADPlistParent *parent) { _parent = parent; }
    qint64 indexInParent() const { return _indexInParent; }
    void setIndexInParent(qint64 index) { _indexInParent = index; }
    /// True when the parent is not a node: a parentless node, or one under an outline.
    bool isRoot() const;
    ADPlistObject *plistObjectParent() const;
    ADPlistObject *root();
    /// Whether `object` is this node or one above it.
    bool hasAncestor(const ADPlistObject *object) const;

    // --- what the parent chain offers
    KZNotificationCenter *notificationCenter() const override;
    ADUndoManager *undoManager() const override;
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return _plist.plistType(); }
    ADStructureDefinition *structureDefinition() const override;

    // --- value
    const PlistValue &plist() const { return _plist; }
    QString plistTypeName() const { return classNameForPlistType(plistType()); }
    /// True for arrays and dictionaries, empty or not.
    bool hasChildren() const { return _plist.isContainer(); }
    bool hasKeys() const { return _plist.isDictionary(); }
    const std::shared_ptr<ADValueViewer> &valueViewer() const { return _valueViewer; }

    // --- children
    qint64 childCount() const;
    ADPlistObject *childAtIndex(qint64 index) const;
    const Pointer &childPointerAtIndex(qint64 index) const;
    std::vector<Pointer> childrenAtIndexes(const KZIndexSet &indexes) const;
    /// -1 when the object is not a child.
    qint64 indexOfChild(const ADPlistObject *child) const;
    QString keyAtIndex(qint64 index) const;
    /// A copy of the keys; none on an array or scalar.
    std::optional<QStringList> keys() const { return _keys; }
    /// First index of the key, or KZNotFound.
    qint64 indexOfKey(const QString &key) const;
    ADPlistObject *childForKey(const QString &key) const;

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

    // --- editing
    /// Gives the child at `index` a new key, in place, and posts the change.
    void setKey(const QString &key, qint64 childIndex);

    // --- building children
    /// Builds the children from `_plist` (keys in preference order, which the
    /// plain dictionary then takes too), the whole subtree without recursion;
    /// with `notify`, posts that all children were added.
    void createChildrenAndNotify(bool notify);
    /// Detaches all children, leaving empty collections; `_plist` is untouched.
    void destroyChildrenAndNotify(bool notify);

    // --- debug texts
    QString description() const;
    QString shortDescription() const;

private:
    void buildOwnChildren();
    void post(const QString &name, const QVariantMap &userInfo) const;
    QString valueDescription() const;

    PlistValue _plist;
    std::optional<QStringList> _keys;
    std::optional<std::vector<Pointer>> _children;
    std::optional<QHash<QString, ADPlistObject *>> _childrenByKey;
    QString _name;
    std::shared_ptr<ADValueViewer> _valueViewer;
    ADPlistParent *_parent = nullptr;
    qint64 _indexInParent = -1;
};
