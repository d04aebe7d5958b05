#include "ADFormatterClasses.h"

#include "ADAliasDataFormatter.h"
#include "ADArrayFormatter.h"
#include "ADBinaryPlistFormatter.h"
#include "ADBookmarkDataFormatter.h"
#include "ADBooleanFormatter.h"
#include "ADDataFormatter.h"
#include "ADDateFormatter.h"
#include "ADDictionaryFormatter.h"
#include "ADFourCharCodeNumberFormatter.h"
#include "ADHMSFormatter.h"
#include "ADHexNumberFormatter.h"
#include "ADNullFormatter.h"
#include "ADNumberFormatter.h"
#include "ADStorageSizeFormatter.h"
#include "ADTextDataFormatter.h"
#include "ADTimeIntervalNumberFormatter.h"
#include "KZDictionaryFormatter.h"

#include "shared/KZClassRegistry.h"

void ADRegisterFormatterClasses()
{
    KZClassRegistry::registerClass<ADAliasDataFormatter>();
    KZClassRegistry::registerClass<ADArrayFormatter>();
    KZClassRegistry::registerClass<ADBinaryPlistFormatter>();
    KZClassRegistry::registerClass<ADBookmarkDataFormatter>();
    KZClassRegistry::registerClass<ADBooleanFormatter>();
    KZClassRegistry::registerClass<ADDataFormatter>();
    KZClassRegistry::registerClass<ADDateFormatter>();
    KZClassRegistry::registerClass<ADDictionaryFormatter>();
    KZClassRegistry::registerClass<ADFourCharCodeNumberFormatter>();
    KZClassRegistry::registerClass<ADHMSFormatter>();
    KZClassRegistry::registerClass<ADHexNumberFormatter>();
    KZClassRegistry::registerClass<ADNullFormatter>();
    KZClassRegistry::registerClass<ADNumberFormatter>();
    KZClassRegistry::registerClass<ADStorageSizeFormatter>();
    KZClassRegistry::registerClass<ADTextDataFormatter>();
    KZClassRegistry::registerClass<ADTimeIntervalNumberFormatter>();
    KZClassRegistry::registerClass<KZDictionaryFormatter>();
    KZClassRegistry::registerClass<KZHMSFormatter>();
    KZClassRegistry::registerClass<KZHexNumberFormatter>();
    KZClassRegistry::registerClass<KZNumberFormatter>();
    KZClassRegistry::registerClass<KZStorageSizeFormatter>();
}
