#include "ArdeckKeyPath.h"

#include "model/ADPlistObject.h"

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

ADPlistObject *ArdeckKeyPath::resolve(ADPlistObject *root, QString *error) const
{
    ADPlistObject *node = root;
    QStringList walked;
    for (const QString &step : _steps) {
        const QString where =
            walked.isEmpty() ? QStringLiteral("the root") : u'"' + walked.join(u'.') + u'"';
        ADPlistObject *next = nullptr;
        if (node->hasKeys()) {
            next = node->childForKey(step);
        } else if (node->plistType() == ADPlistTypeArray) {
            bool isIndex = false;
            const qint64 index = step.toLongLong(&isIndex);
            if (isIndex && index >= 0 && index < node->childCount())
                next = node->childAtIndex(index);
        } else {
            *error = QStringLiteral("%1 is a %2, which has no \"%3\"")
                         .arg(where, node->plistTypeName(), step);
            return nullptr;
        }
        if (!next) {
            *error = QStringLiteral("%1 has no \"%2\"").arg(where, step);
            return nullptr;
        }
        walked << step;
        node = next;
    }
    return node;
}

ArdeckKeyPath ArdeckKeyPath::parent() const
{
    ArdeckKeyPath up;
    up._steps = _steps.mid(0, _steps.size() - 1);
    return up;
}

QString ArdeckKeyPath::textOf(const ADPlistObject &node)
{
    QStringList steps;
    for (const QVariant &step : node.path()) {
        QString text = step.toString();
        text.replace(u'\\', QStringLiteral("\\\\")).replace(u'.', QStringLiteral("\\."));
        steps << text;
    }
    return steps.join(u'.');
}
