#pragma once

#include "shared/KZError.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class ADPlistObject;

/// Does for the key column what a value viewer does for values: which text
/// a node's key shows (a fixed text for the root, a definition's localised
/// name, or the key itself), which raw key typed text stands for, and
/// whether a new key would replace a sibling, which is a question to the
/// user. Shared by the nodes it shows. Main thread.
class ADKeyViewer
{
public:
    struct KeyInfo
    {
        QString keyName;
        QString localizedString;
    };

    /// A viewer that shows keys as they are.
    ADKeyViewer() = default;
    /// Shows the keys of a definition by their localised names, or with raw
    /// keys as stored; completes either.
    ADKeyViewer(const std::vector<KeyInfo> &keyInfos, bool showRawKeys);

    /// The key viewer of a node: the root's fixed text, a definition's viewer
    /// for the children of its dictionary, else a plain one. Null for no node.
    static std::shared_ptr<ADKeyViewer> keyViewerForPlistObject(const ADPlistObject *object,
                                                                bool showRawKeys);
    /// With raw keys the node's key itself (null for an array element);
    /// otherwise the text its key viewer shows.
    static QString keyStringForPlistObject(const ADPlistObject &object, bool showRawKeys);

    const QString &cellViewNibName() const { return _cellViewNibName; }
    void setCellViewNibName(const QString &name) { _cellViewNibName = name; }
    /// A fixed text for the key; null when keys show their own.
    const QString &keyString() const { return _keyString; }
    void setKeyString(const QString &text) { _keyString = text; }
    const QStringList &knownKeyStrings() const { return _knownKeyStrings; }

    /// The raw key for typed text: a localised name's key, else the text.
    QString rawKeyForKeyString(const QString &keyString) const;
    QString keyStringForPlistObject(const ADPlistObject &object) const;
    /// Renames the node (with undo); nothing for a fixed text.
    void setKeyString(const QString &keyString, ADPlistObject &object) const;
    /// None when the key may be set as it is; the "Key already exists"
    /// question, with Replace and Cancel, when a sibling has it.
    std::optional<KZError> validateKeyString(const QString &keyString,
                                             const ADPlistObject &object) const;

private:
    QString _cellViewNibName = QStringLiteral("PlainKeyCellView");
    QString _keyString;
    std::optional<QHash<QString, QString>> _keysToLocalizedStrings;
    std::optional<QHash<QString, QString>> _localizedStringsToKeys;
    QStringList _knownKeyStrings;
};
