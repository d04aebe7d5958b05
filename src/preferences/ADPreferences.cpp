#include "ADPreferences.h"

#include "KZUserDefaults.h"

#include "model/ADKeySortPreferences.h"
#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

#include <atomic>

namespace {

const QString kDefaultsResource = QStringLiteral(":/defaults/Defaults.plist");

bool isKnownFormat(ADPlistFormat format)
{
    return format == ADPlistFormatASCII || format == ADPlistFormatXML ||
           format == ADPlistFormatBinary || format == ADPlistFormatJSON;
}

QFont sized(QFont font, int pointSize)
{
    font.setPointSize(pointSize);
    return font;
}

std::optional<QFont> fontFromText(const PlistValue &entry)
{
    QFont font;
    if (!entry.isString() || !font.fromString(entry.toString()))
        return std::nullopt;
    return font;
}

PlistArray fontArray(const QList<QFont> &fonts)
{
    PlistArray array = PlistArray::create(fonts.size());
    for (const QFont &font : fonts)
        array.append(PlistValue(font.toString()));
    return array;
}

} // namespace

/// The three sort settings in one word, so that trees built on other threads
/// read them without a lock.
struct ADPreferences::KeySort
{
    enum : int
    {
        CaseSensitive = 1,
        Numeric = 2,
        KeepOrder = 4,
    };
    std::atomic<int> bits{0};

    ADKeySortPreferences::Values values() const
    {
        const int b = bits.load(std::memory_order_relaxed);
        return {(b & CaseSensitive) != 0, (b & Numeric) != 0, (b & KeepOrder) != 0};
    }
};

ADPreferences::ADPreferences(KZUserDefaults &defaults, KZNotificationCenter &center)
    : _defaults(defaults), _center(center), _keySort(std::make_shared<KeySort>())
{
    if (const std::optional<KZError> error = _defaults.loadDefaults(kDefaultsResource))
        qWarning("%s", qPrintable(error->localizedDescription()));
    PlistDictionary fonts = PlistDictionary::create();
    fonts.insert(editFontsKey(), fontArray(defaultFonts()).value());
    _defaults.registerDefaults(fonts);

    connect(&_defaults, &KZUserDefaults::valueChanged, this, &ADPreferences::userDefaultDidChange);
    refreshKeySortSelector();
    ADKeySortPreferences::setProvider([keySort = _keySort] { return keySort->values(); });
}

ADPreferences::~ADPreferences()
{
    ADKeySortPreferences::setProvider({});
}

ADPreferences &ADPreferences::shared()
{
    static ADPreferences *shared = [] {
        auto *prefs = new ADPreferences(KZUserDefaults::standardUserDefaults(),
                                        KZNotificationCenter::defaultCenter());
        prefs->setParent(&KZUserDefaults::standardUserDefaults()); // goes with its defaults
        return prefs;
    }();
    return *shared;
}

QList<QFont> ADPreferences::defaultFonts()
{
    const QFont general = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    return {sized(general, 12), sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), 10),
            sized(general, 12)};
}

qint64 ADPreferences::reopenAction() const
{
    return _defaults.integerForKey(ReopenActionKey);
}

void ADPreferences::setReopenAction(qint64 action)
{
    setAndPost(ReopenActionKey, PlistValue(action));
}

qint64 ADPreferences::searchScope() const
{
    return _defaults.integerForKey(SearchScopeKey);
}

void ADPreferences::setSearchScope(qint64 scope)
{
    setAndPost(SearchScopeKey, PlistValue(scope));
}

qint64 ADPreferences::searchKind() const
{
    return _defaults.integerForKey(SearchKindKey);
}

void ADPreferences::setSearchKind(qint64 kind)
{
    setAndPost(SearchKindKey, PlistValue(kind));
}

bool ADPreferences::searchIgnoreCase() const
{
    return _defaults.boolForKey(SearchIgnoreCaseKey);
}

void ADPreferences::setSearchIgnoreCase(bool ignoreCase)
{
    setAndPost(SearchIgnoreCaseKey, PlistValue(ignoreCase));
}

bool ADPreferences::wrapOnSearch() const
{
    return _defaults.boolForKey(WrapOnSearchKey);
}

void ADPreferences::setWrapOnSearch(bool wrap)
{
    setAndPost(WrapOnSearchKey, PlistValue(wrap));
}

QStringList ADPreferences::scanExtensions() const
{
    QStringList extensions;
    const PlistArray array = _defaults.arrayForKey(ScanExtensionsKey);
    for (qsizetype i = 0; !array.isNull() && i < array.count(); ++i) {
        if (array.at(i).isString())
            extensions.append(array.at(i).toString());
    }
    return extensions;
}

void ADPreferences::setScanExtensions(const QStringList &extensions)
{
    PlistArray array = PlistArray::create(extensions.size());
    for (const QString &extension : extensions)
        array.append(PlistValue(extension));
    setAndPost(ScanExtensionsKey, array.value());
}

PlistValue ADPreferences::browserFindOptions() const
{
    return _defaults.objectForKey(BrowserFindOptionsKey);
}

void ADPreferences::setBrowserFindOptions(const PlistValue &options)
{
    setAndPost(BrowserFindOptionsKey, options);
}

bool ADPreferences::includeSearchType(qint64 searchType) const
{
    const PlistArray types = _defaults.arrayForKey(SearchTypesKey);
    if (types.isNull() || searchType < 0 || searchType >= types.count())
        return false;
    return KZUserDefaults::boolValue(types.at(searchType));
}

void ADPreferences::setInclude(bool include, qint64 searchType)
{
    PlistArray types = _defaults.arrayForKey(SearchTypesKey);
    if (types.isNull())
        types = PlistArray::create();
    if (searchType < 0 || (searchType < types.count() && includeSearchType(searchType) == include &&
                           types.at(searchType).isBoolean()))
        return;
    while (types.count() <= searchType)
        types.append(PlistValue(false));
    types.replace(searchType, PlistValue(include));
    setAndPost(SearchTypesKey, types.value());
}

std::optional<QFont> ADPreferences::fontForEditMode(qint64 mode) const
{
    const PlistArray fonts = _defaults.arrayForKey(editFontsKey());
    if (mode < 0)
        return std::nullopt;
    if (!fonts.isNull() && mode < fonts.count())
        return fontFromText(fonts.at(mode));
    const QList<QFont> defaults = defaultFonts();
    return mode < defaults.size() ? std::optional<QFont>(defaults[mode]) : std::nullopt;
}

void ADPreferences::setFont(const QFont &font, qint64 mode)
{
    PlistArray fonts = _defaults.arrayForKey(editFontsKey());
    if (fonts.isNull())
        return;
    const QList<QFont> defaults = defaultFonts();
    while (fonts.count() < defaults.size())
        fonts.append(PlistValue(defaults[fonts.count()].toString()));
    if (mode < 0 || mode >= fonts.count())
        return;
    fonts.replace(mode, PlistValue(font.toString()));
    setAndPost(editFontsKey(), fonts.value());
}

ADPlistFormat ADPreferences::defaultPlistFormat()
{
    const ADPlistFormat format = _defaults.integerForKey(DefaultPlistFormatKey);
    if (isKnownFormat(format))
        return format;
    _defaults.setInteger(ADPlistFormatXML, DefaultPlistFormatKey);
    return ADPlistFormatXML;
}

void ADPreferences::setDefaultPlistFormat(ADPlistFormat format)
{
    _defaults.setInteger(format, DefaultPlistFormatKey);
}

ADPlistType ADPreferences::defaultPlistType() const
{
    return _defaults.integerForKey(DefaultPlistTypeKey);
}

void ADPreferences::setDefaultPlistType(ADPlistType type)
{
    _defaults.setInteger(type, DefaultPlistTypeKey);
}

QColor ADPreferences::XMLTagColor() const
{
    if (!_cachedXMLTagColor) {
        const QColor stored = QColor::fromString(_defaults.stringForKey(XMLTagColorKey));
        _cachedXMLTagColor =
            stored.isValid() ? stored : QGuiApplication::palette().color(QPalette::Link);
    }
    return *_cachedXMLTagColor;
}

void ADPreferences::setXMLTagColor(const QColor &color)
{
    _defaults.setString(color.name(color.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb),
                        XMLTagColorKey);
}

KZComparison ADPreferences::keySortSelector() const
{
    return ADKeySortPreferences::keySortSelector();
}

void ADPreferences::userDefaultDidChange(const QString &key)
{
    if (key == XMLTagColorKey) {
        _cachedXMLTagColor.reset();
        post(XMLTagColorKey);
    } else if (key == SortCaseSensitiveKey || key == SortNumericKey || key == KeepKeyOrderKey) {
        refreshKeySortSelector();
    }
}

void ADPreferences::refreshKeySortSelector()
{
    int bits = 0;
    if (_defaults.boolForKey(SortCaseSensitiveKey))
        bits |= KeySort::CaseSensitive;
    if (_defaults.boolForKey(SortNumericKey))
        bits |= KeySort::Numeric;
    if (_defaults.boolForKey(KeepKeyOrderKey))
        bits |= KeySort::KeepOrder;
    _keySort->bits.store(bits, std::memory_order_relaxed);
}

void ADPreferences::setAndPost(const QString &key, const PlistValue &value)
{
    _defaults.setObject(value, key);
    post(key);
}

void ADPreferences::post(const QString &key)
{
    _center.postNotification(PreferenceDidChangeNotification, &key, {{QStringLiteral("key"), key}});
}
