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
    return PlistEnumerator(Pointer(this));
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
    ADPlistIterator walk(Pointer(this));
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
    ADPlistIterator walk(Pointer(this));
    while (ADPlistObject *node = walk.nextObject()) {
        if (!isPlistType(node->plistType(), format, node->isRoot()))
            return node;
    }
    return nullptr;
}

std::optional<ADPlistObject::Misfit>
ADPlistObject::firstIncompatibleValueForFormat(const PlistValue &plist, ADPlistFormat format)
{
    const PlistValue top = shownValueForPlist(plist);
    if (!isPlistType(top.plistType(), format, true))
        return Misfit{{}, top.plistType()};
    // Depth first with a value before its children, as the tree walks; each
    // frame's index has passed the child being looked at.
    struct Frame
    {
        PlistValue container;
        qsizetype next = 0;
    };
    std::vector<Frame> stack{{top}};
    while (!stack.empty()) {
        Frame &frame = stack.back();
        if (frame.next >= frame.container.containerCount()) {
            stack.pop_back();
            continue;
        }
        const PlistValue &entry = frame.container.containerValueAt(frame.next++);
        // Only an archiver UID shows as something else; the rest need no copy.
        if (entry.kind() != PlistValue::Kind::Uid &&
            isPlistType(entry.plistType(), format, false) && entry.containerCount() == 0)
            continue;
        PlistValue child = shownValueForPlist(entry);
        if (!isPlistType(child.plistType(), format, false)) {
            QVariantList path;
            for (const Frame &f : stack) {
                if (f.container.isDictionary())
                    path << f.container.containerKeyAt(f.next - 1).toString();
                else
                    path << qint64(f.next - 1);
            }
            return Misfit{path, child.plistType()};
        }
        if (child.containerCount() > 0)
            stack.push_back({std::move(child)}); // `frame` is stale from here
    }
    return std::nullopt;
}

bool ADPlistObject::makeCompatibleWithPlistFormat(ADPlistFormat format)
{
    // Each node once, with its own place's mask. Converting a node again for
    // each ancestor would change nothing more, and would be quadratic in depth.
    const Context context = this->context();
    auto fit = [format, &context](ADPlistObject &node) {
        const bool root = node.isRoot();
        if (isPlistType(node.plistType(), format, root))
            return true;
        if (!isPlistType(ADPlistTypeString, format, root))
            return false;
        node.coerceToPlistType(context, ADPlistTypeString);
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
    setActionName(context, KZLocalizedStringWithID(110, QStringLiteral("Convert")));
    return fits;
}
