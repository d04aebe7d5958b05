#include "ArdeckKeyPath.h"

#include "model/ADPlistObject.h"
#include "shared/PlistDictionary.h"

namespace {

// What a walk asks of a node.
struct NodeSteps
{
    static bool isDictionary(ADPlistObject *node) { return node->hasKeys(); }
    static qint64 count(ADPlistObject *node) { return node->childCount(); }
    static ADPlistType type(ADPlistObject *node) { return node->plistType(); }
    static ADPlistObject *byKey(ADPlistObject *node, const QString &key)
    {
        return node->childForKey(key);
    }
    static ADPlistObject *byIndex(ADPlistObject *node, qint64 index)
    {
        return node->childAtIndex(index);
    }
    static bool found(ADPlistObject *node) { return node != nullptr; }
};

// What a walk asks of a plain value, each step shown as a tree shows it.
struct ValueSteps
{
    static bool isDictionary(const PlistValue &v) { return v.isDictionary(); }
    static qint64 count(const PlistValue &v) { return v.containerCount(); }
    static ADPlistType type(const PlistValue &v) { return v.plistType(); }
    static PlistValue byKey(const PlistValue &v, const QString &key)
    {
        const PlistValue found = v.toDictionary().value(key);
        return found.isNone() ? found : ADPlistObject::shownValueForPlist(found);
    }
    static PlistValue byIndex(const PlistValue &v, qint64 index)
    {
        return ADPlistObject::shownValueForPlist(v.containerValueAt(index));
    }
    static bool found(const PlistValue &v) { return !v.isNone(); }
};

} // namespace

ArdeckKeyPath::ArdeckKeyPath(const QString &text)
{
    if (text.isEmpty())
        return;
    QString step;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\\' && i + 1 < text.size() && (text[i + 1] == u'.' || text[i + 1] == u'\\')) {
            step += text[++i];
        } else if (c == u'.') {
            _steps << step;
            step.clear();
        } else {
            step += c;
        }
    }
    _steps << step;
}

template <typename Item, typename Steps>
Item ArdeckKeyPath::walk(Item root, Steps, QString *error) const
{
    Item item = std::move(root);
    QStringList walked;
    for (const QString &step : _steps) {
        const QString where =
            walked.isEmpty() ? QStringLiteral("the root") : u'"' + walked.join(u'.') + u'"';
        Item next{};
        if (Steps::isDictionary(item)) {
            next = Steps::byKey(item, step);
        } else if (Steps::type(item) == ADPlistTypeArray) {
            bool isIndex = false;
            const qint64 index = step.toLongLong(&isIndex);
            if (isIndex && index >= 0 && index < Steps::count(item))
                next = Steps::byIndex(item, index);
        } else {
            *error = QStringLiteral("%1 is a %2, which has no \"%3\"")
                         .arg(where, ADPlistObject::classNameForPlistType(Steps::type(item)), step);
            return Item{};
        }
        if (!Steps::found(next)) {
            *error = QStringLiteral("%1 has no \"%2\"").arg(where, step);
            return Item{};
        }
        walked << step;
        item = std::move(next);
    }
    return item;
}

ADPlistObject *ArdeckKeyPath::resolve(ADPlistObject *root, QString *error) const
{
    return walk(root, NodeSteps{}, error);
}

PlistValue ArdeckKeyPath::resolve(const PlistValue &root, QString *error) const
{
    return walk(ADPlistObject::shownValueForPlist(root), ValueSteps{}, error);
}

ArdeckKeyPath ArdeckKeyPath::parent() const
{
    ArdeckKeyPath up;
    up._steps = _steps.mid(0, _steps.size() - 1);
    return up;
}

QString ArdeckKeyPath::textOf(const QVariantList &path)
{
    QStringList steps;
    for (const QVariant &step : path) {
        QString text = step.toString();
        text.replace(u'\\', QStringLiteral("\\\\")).replace(u'.', QStringLiteral("\\."));
        steps << text;
    }
    return steps.join(u'.');
}
