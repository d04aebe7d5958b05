#pragma once

// A plist document as a window shows it, for the document tests.

#include "document/ADPlainTextSide.h"
#include "document/ADPlistDocument.h"
#include "storage/PlistSerialization.h"
#include "support/DocumentStandIns.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

inline QString textOf(const PlistValue &plist, ADPlistFormat format = ADPlistFormatXML)
{
    return QString::fromUtf8(PlistSerialization::write(plist, format).data);
}

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

/// A document as a window shows it: a text side, the outline's place above
/// the root, and a presenter answering from a script.
struct Scene
{
    explicit Scene(ADPreferences &preferences) : document(preferences), outline(document)
    {
        document.setPresenter(&presenter);
        document.setPanels(&panels);
        document.setTextSide(&text);
    }
    ~Scene() { document.setTextSide(nullptr); }

    /// Opens `bytes` as a file; the read's error, if any.
    std::optional<KZError> open(const QByteArray &bytes)
    {
        path = folder.filePath(QStringLiteral("file.plist"));
        writeFile(path, bytes);
        std::optional<KZError> result = KZError(KZErrorDomain, -1);
        document.setFileURL(path); // as the document controller does
        document.readFromURL(path, ADPlistDocumentPropertyListType,
                             [&result](const std::optional<KZError> &error) { result = error; });
        return result;
    }
    void open(const PlistValue &plist, ADPlistFormat format)
    {
        ASSERT_FALSE(open(PlistSerialization::write(plist, format).data));
    }
    /// The undo group of this pass of the event loop closes.
    static void closeGroup() { QCoreApplication::processEvents(); }
    void editTree(const char *key, const PlistValue &value)
    {
        document.plistRoot()->childForKey(QString::fromUtf8(key))->setPlist(value);
        closeGroup();
    }
    /// Types over `replaced` (its first occurrence) as a user would.
    void typeOver(const QString &replaced, const QString &typed)
    {
        const qint64 at = text.currentText().indexOf(replaced);
        ASSERT_GE(at, 0);
        text.prepareForEdit(at, at + replaced.size());
        QTextCursor cursor(text.textDocument());
        cursor.setPosition(int(at));
        cursor.setPosition(int(at + replaced.size()), QTextCursor::KeepAnchor);
        cursor.insertText(typed);
        closeGroup();
        lastTyped = text.currentText();
    }
    PlistValue tree() const { return document.plistRoot()->plist(); }

    QTemporaryDir folder;
    QString path;
    QString lastTyped;
    ScriptedPresenter presenter;
    ScriptedPanels panels;
    ADPlainTextSide text;
    ADPlistDocument document;
    OutlineStandIn outline;
};
