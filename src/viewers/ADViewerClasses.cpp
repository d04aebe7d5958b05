#include "ADViewerClasses.h"

#include "ADAllowableValueViewer.h"
#include "ADDateValueViewer.h"
#include "ADValueViewer.h"

#include "shared/KZClassRegistry.h"
#include "viewers/formatters/ADFormatterClasses.h"

void ADRegisterViewerClasses()
{
    ADRegisterFormatterClasses();
    KZClassRegistry::registerClass<ADValueViewer>();
    KZClassRegistry::registerClass<ADDateValueViewer>();
    KZClassRegistry::registerClass<ADAllowableValueViewer>();
}
