#pragma once

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class ADKeyViewer;
class ADPlistObject;

/// What value and key viewers ask of the structure definition element that
/// describes a node. Definitions stand above the viewers, so their element
/// class implements this and installs the lookup from a node to its element
/// with `setLookup`; until then no node has one, which is the case of a
/// document without a definition. Main thread.
class ADValueViewerElement
{
public:
    using AllowableValues = std::vector<std::pair<QString, PlistValue>>;
    using Lookup = std::function<const ADValueViewerElement *(const ADPlistObject &)>;

    virtual ~ADValueViewerElement() = default;

    /// The element's name within its definition.
    virtual QString name() const = 0;
    /// The identifier of the definition the element belongs to.
    virtual QString structureDefinitionIdentifier() const = 0;
    virtual QString localizedString() const = 0;
    virtual ADPlistType plistType() const = 0;
    /// The viewer the definition asks for; empty for none.
    virtual QString valueViewerIdentifier() const = 0;
    /// Localised name and value of each allowable value, in order.
    virtual AllowableValues allowableValues() const = 0;
    virtual bool isDictionaryElement() const = 0;
    /// For a dictionary element: the key whose value previews `object`; empty for none.
    virtual QString identifyingKeyInPlistObject(const ADPlistObject &object) const = 0;
    /// For a dictionary element: the key viewer of its children; null for none.
    virtual std::shared_ptr<ADKeyViewer> keyViewerForPlistObject(const ADPlistObject &object,
                                                                 bool showRawKeys) const = 0;

    static void setLookup(Lookup lookup);
    /// The element describing `object`; null without a definition.
    static const ADValueViewerElement *elementForPlistObject(const ADPlistObject &object);
};
