#include "ADValueViewerElement.h"

namespace {

ADValueViewerElement::Lookup &currentLookup()
{
    static ADValueViewerElement::Lookup lookup;
    return lookup;
}

} // namespace

void ADValueViewerElement::setLookup(Lookup lookup)
{
    currentLookup() = std::move(lookup);
}

const ADValueViewerElement *ADValueViewerElement::elementForPlistObject(const ADPlistObject &object)
{
    return currentLookup() ? currentLookup()(object) : nullptr;
}
