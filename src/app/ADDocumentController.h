#pragma once

#include "document/KZDocumentController.h"

#include <QByteArray>

class ADPlistDocument;
class ADPreferences;

/// The program's document controller: makes plist documents, with the
/// autosave delay of the settings, and opens plist data handed over whole
/// (standard input, the clipboard) as an untitled document. The preferences
/// outlive it. Main thread only.
class ADDocumentController : public KZDocumentController
{
    Q_OBJECT

public:
    explicit ADDocumentController(ADPreferences &preferences, QObject *parent = nullptr);

    /// "public.json" when new documents are JSON, else the property list type.
    QString defaultType() const override;

    /// An untitled, unedited document over `data`; data that no reader takes
    /// is offered as raw text. `done` gets null when that is declined or the
    /// data is no text, perhaps before this returns.
    void createDocumentWithPlistData(const QByteArray &data,
                                     std::function<void(ADPlistDocument *document)> done);

private:
    ADPreferences &_preferences;
};
