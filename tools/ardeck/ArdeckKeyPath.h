#pragma once

#include <QString>
#include <QStringList>

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
    /// The text of a node's path, for messages: keys and indexes joined with ".".
    static QString textOf(const ADPlistObject &node);
    /// The node the path reaches, or null with `error` naming the first step
    /// that leads nowhere.
    ADPlistObject *resolve(ADPlistObject *root, QString *error) const;

private:
    ArdeckKeyPath() = default;
    QStringList _steps;
};
