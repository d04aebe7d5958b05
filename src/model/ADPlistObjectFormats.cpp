// The operations of ADPlistObject that fit a tree to a storage format.

#include "ADPlistObject.h"

#include "ADPlistIterator.h"
#include "ADUndoManager.h"
#include "PlistEnumerator.h"

#include "shared/KZLocalizedString.h"

namespace {

constexpr ADPlistMask kAsciiMask = ADPlistMaskForTypes(
    {ADPlistTypeArray, ADPlistTypeData, ADPlistTypeDictionary, ADPlistTypeString});
constexpr ADPlistMask kPlistMask =
    ADPlistMaskForTypes({ADPlistTypeArray, ADPlistTypeBoolean, ADPlistTypeData, ADPlistTypeDate,
                         ADPlistTypeDictionary, ADPlistTypeNumber, ADPlistTypeString});
constexpr ADPlistMask kJsonRootMask =
    ADPlistMaskForTypes({ADPlistTypeArray, ADPlistTypeDictionary});
constexpr ADPlistMask kJsonOtherMask =
    ADPlistMaskForTypes({ADPlistTypeArray, ADPlistTypeBoolean, ADPlistTypeDictionary,
                         ADPlistTypeNumber, ADPlistTypeString, ADPlistTypeNull});

} // namespace

PlistEnumerator ADPlistObject::objectEnumerator()
{
    return PlistEnumerator(shared_from_this());
}

ADPlistMask ADPlistObject::plistTypeMaskForFormat(ADPlistFormat format, bool rootObject)
{
    switch (format) {
    case ADPlistFormatASCII:
        return kAsciiMask;
    case ADPlistFormatXML:
    case ADPlistFormatBinary:
        return kPlistMask;
    case ADPlistFormatJSON:
        return rootObject ? kJsonRootMask : kJsonOtherMask;
    default:
        return 0;
    }
}

bool ADPlistObject::isPlistType(ADPlistType type, ADPlistFormat format, bool rootObject)
{
    return ADPlistMaskContainsType(plistTypeMaskForFormat(format, rootObject), type);
}

bool ADPlistObject::compatibleWithPlistFormat(ADPlistFormat format)
{
    const bool root = isRoot();
    if (!isPlistType(plistType(), format, root))
        return false;
    ADPlistIterator walk(shared_from_this());
    while (const ADPlistObject *node = walk.nextObject()) {
        if (!isPlistType(node->plistType(), format, root))
            return false;
    }
    return true;
}

ADPlistObject *ADPlistObject::firstIncompatibleObjectForFormat(ADPlistFormat format)
{
    if (!isPlistType(plistType(), format, isRoot()))
        return this;
    ADPlistIterator walk(shared_from_this());
    while (ADPlistObject *node = walk.nextObject()) {
        if (!isPlistType(node->plistType(), format, node->isRoot()))
            return node;
    }
    return nullptr;
}

bool ADPlistObject::makeCompatibleWithPlistFormat(ADPlistFormat format)
{
    // Each node once, with its own place's mask. Converting a node again for
    // each ancestor would change nothing more, and would be quadratic in depth.
    auto fit = [format](ADPlistObject &node) {
        const bool root = node.isRoot();
        if (isPlistType(node.plistType(), format, root))
            return true;
        if (!isPlistType(ADPlistTypeString, format, root))
            return false;
        node.coerceToPlistType(ADPlistTypeString);
        return true;
    };
    bool fits = fit(*this);
    if (fits && hasChildren()) {
        PlistEnumerator descendants = objectEnumerator();
        while (ADPlistObject *node = descendants.nextObject()) {
            if (!fit(*node)) {
                fits = false;
                break;
            }
        }
    }
    if (ADUndoManager *undo = undoManager())
        undo->setActionName(KZLocalizedStringWithID(110, QStringLiteral("Convert")));
    return fits;
}
