#pragma once

#include <QString>

// Names and user-info keys of the notifications a tree posts on its
// document's private centre; each equals its own name.

inline const QString PlistObjectDidChangeNotification =
    QStringLiteral("PlistObjectDidChangeNotification");
inline const QString PlistObjectDidChangeChildrenNotification =
    QStringLiteral("PlistObjectDidChangeChildrenNotification");
inline const QString PlistObjectDidAddChildNotification =
    QStringLiteral("PlistObjectDidAddChildNotification");
inline const QString PlistObjectDidRemoveChildNotification =
    QStringLiteral("PlistObjectDidRemoveChildNotification");

inline const QString PlistObjectOldValue = QStringLiteral("PlistObjectOldValue");
inline const QString PlistObjectOldValueViewer = QStringLiteral("PlistObjectOldValueViewer");
inline const QString PlistObjectOldKey = QStringLiteral("PlistObjectOldKey");
inline const QString PlistObjectReorderMapKey = QStringLiteral("PlistObjectReorderMapKey");
inline const QString PlistObjectMovedChildrenKey = QStringLiteral("PlistObjectMovedChildrenKey");
inline const QString PlistObjectChildIndexesKey = QStringLiteral("PlistObjectChildIndexesKey");
inline const QString PlistObjectChildKey = QStringLiteral("PlistObjectChildKey");
