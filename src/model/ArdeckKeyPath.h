#pragma once

#include "shared/PlistValue.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

class ADPlistObject;

/// A key path of the command line: dictionary keys and array indexes joined
/// with ".", where "\." is a dot inside a key and "\\" a backslash. The empty
/// path is the root.
class ArdeckKeyPath
{
public:
    explicit ArdeckKeyPath(const QString &text);

    const QStringList &steps() const { return _steps; }
    bool isEmpty() const { return _steps.isEmpty(); }
    /// The path without its last step.
    ArdeckKeyPath parent() const;
    /// The text of a path of keys (strings) and indexes (numbers), for messages.
    static QString textOf(const QVariantList &path);
    /// The node the path reaches, or null with `error` naming the first step
    /// that leads nowhere.
    ADPlistObject *resolve(ADPlistObject *root, QString *error) const;
    /// The same on a plain value, without a tree: what the path reaches as a
    /// tree shows it (an archiver UID as {"CF$UID": n}), or none.
    PlistValue resolve(const PlistValue &root, QString *error) const;

private:
    ArdeckKeyPath() = default;
    template <typename Item, typename Steps>
    Item walk(Item root, Steps steps, QString *error) const;

    QStringList _steps;
};
