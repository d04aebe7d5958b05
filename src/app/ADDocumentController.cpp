#include "ADDocumentController.h"

#include "document/ADPlistDocument.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"

#include <QPointer>

ADDocumentController::ADDocumentController(ADPreferences &preferences, QObject *parent)
    : KZDocumentController(
          [&preferences](const QString &) {
              auto document = std::make_unique<ADPlistDocument>(preferences);
              document->setAutosavingDelay(
                  preferences.userDefaults().doubleForKey(DocumentAutoSaveIntervalKey));
              return document;
          },
          ADPlistDocument::documentTypeFilters(), parent),
      _preferences(preferences)
{}

QString ADDocumentController::defaultType() const
{
    return _preferences.defaultPlistFormat() == ADPlistFormatJSON ? ADPlistDocumentJSONType
                                                                  : ADPlistDocumentPropertyListType;
}

void ADDocumentController::createDocumentWithPlistData(
    const QByteArray &data, std::function<void(ADPlistDocument *document)> done)
{
    auto *document = static_cast<ADPlistDocument *>(openUntitledDocumentOfType(defaultType()));
    QVariantMap attributes;
    if (const ADPlistObject::Pointer root = ADPlistObject::plistObjectWithData(data, &attributes)) {
        document->setPlistRoot(root);
        document->setPlistFormat(ADPlistFormat(attributes.value(PlistObjectFormat).toLongLong()));
        document->undoManager().removeAllActions();
        document->updateChangeCount(KZDocument::ChangeType::Cleared);
        done(document);
        return;
    }
    document->readPlistData(data, attributes.value(PlistObjectErrorString).toString(),
                            [document = QPointer(document), done = std::move(done)](bool opened) {
                                if (document && !opened)
                                    document->close();
                                if (!document || !opened) {
                                    done(nullptr);
                                    return;
                                }
                                document->updateChangeCount(KZDocument::ChangeType::Cleared);
                                done(document);
                            });
}
