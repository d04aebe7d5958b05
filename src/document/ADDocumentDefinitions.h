#pragma once

#include <QString>

class ADStructureDefinition;

/// Posted on the default centre by the definition manager when its
/// definitions change.
inline const QString ADStructureDefinitionManagerDidChangeDefinitionsNotification =
    QStringLiteral("ADStructureDefinitionManagerDidChangeDefinitionsNotification");

/// What a document asks of the definition manager: which definition suits a
/// file, and the definition behind an identifier. The document keeps only
/// the identifier. Main thread only.
class ADDocumentDefinitions
{
public:
    virtual ~ADDocumentDefinitions() = default;

    /// The identifier of the definition matching the file (by its path, name
    /// or extended attribute); a null string when none does.
    virtual QString definitionIdentifierForFileAtPath(const QString &path) = 0;
    /// May be null.
    virtual ADStructureDefinition *structureDefinitionForIdentifier(const QString &identifier) = 0;
};
