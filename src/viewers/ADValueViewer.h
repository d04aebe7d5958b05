#pragma once

#include "viewers/formatters/KZFormatter.h"

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class ADPlistObject;
class ADValueViewerRegistry;

/// One way of showing and editing values of one plist type: a formatter (or
/// none, for plain text), the name of the cell view that shows it, and a
/// name for menus. Viewers are made by class name from the "ValueViewers"
/// resource (settings are Q_PROPERTYs), belong to a registry, and are shared
/// by every node they show; the outline works on a `copy()` per cell. The
/// formatter is shared between copies; `showRawKeysAndValues` is per copy.
///
/// The class also keeps the viewers the user preferred per key, in the file
/// "PreferredValueViewerIdentifiers.plist" of the program's data folder:
/// read once on first use, written whole and atomically on every change.
/// Main thread.
class ADValueViewer : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier WRITE setIdentifier)
    Q_PROPERTY(qint64 dataType READ dataType WRITE setDataType)
    Q_PROPERTY(QString name READ name WRITE setName)
    Q_PROPERTY(int nameStringID READ nameStringID WRITE setNameStringID)
    Q_PROPERTY(bool isDefault READ isDefault WRITE setIsDefault)
    Q_PROPERTY(QString nibName READ nibName WRITE setNibName)
    Q_PROPERTY(bool editable READ editable WRITE setEditable)
    Q_PROPERTY(QString infoViewControllerClassName READ infoViewControllerClassName WRITE
                   setInfoViewControllerClassName)
    Q_PROPERTY(PlistValue formatterInfo READ formatterInfo WRITE setFormatterInfo)
public:
    Q_INVOKABLE ADValueViewer() = default;

    // --- the preferred viewers file
    static QString preferredViewerStoragePath();
    /// A null string when none is remembered.
    static QString preferredViewerIdentifierForKey(const QString &key, ADPlistType plistType);
    /// A null identifier forgets the choice. A failed write is ignored.
    static void setPreferredViewerIdentifier(const QString &identifier, const QString &key,
                                             ADPlistType plistType);

    /// A viewer from one entry of the viewer table: "class", "properties" and
    /// an optional "minimumSystemVersion"; null for an unknown class, a
    /// property it cannot take, or a system older than the entry needs.
    static std::shared_ptr<ADValueViewer> valueViewerWithDictionary(const PlistValue &entry);

    /// A new viewer of the same class with the same settings and registry.
    virtual std::shared_ptr<ADValueViewer> copy() const;

    const QString &identifier() const { return _identifier; }
    void setIdentifier(const QString &identifier) { _identifier = identifier; }
    ADPlistType dataType() const { return _dataType; }
    void setDataType(ADPlistType type) { _dataType = type; }
    /// The menu name, in the user's language when it has a string number.
    QString name() const;
    void setName(const QString &name) { _name = name; }
    int nameStringID() const { return _nameStringID; }
    void setNameStringID(int number) { _nameStringID = number; }
    bool isDefault() const { return _isDefault; }
    void setIsDefault(bool isDefault) { _isDefault = isDefault; }
    /// The cell view that shows the viewer's values, by name.
    const QString &nibName() const { return _nibName; }
    void setNibName(const QString &name) { _nibName = name; }
    bool editable() const { return _editable; }
    void setEditable(bool editable) { _editable = editable; }
    /// The class of the panel an info button opens; empty when there is none.
    const QString &infoViewControllerClassName() const { return _infoViewControllerClassName; }
    void setInfoViewControllerClassName(const QString &name)
    {
        _infoViewControllerClassName = name;
    }
    bool showRawKeysAndValues() const { return _showRawKeysAndValues; }
    virtual void setShowRawKeysAndValues(bool showRaw) { _showRawKeysAndValues = showRaw; }
    /// The registry the viewer belongs to; null once that is gone.
    ADValueViewerRegistry *registry() const;
    void setRegistry(ADValueViewerRegistry *registry);

    /// May be null: values then show as their plain text.
    const std::shared_ptr<KZFormatter> &formatter() const { return _formatter; }
    void setFormatter(std::shared_ptr<KZFormatter> formatter) { _formatter = std::move(formatter); }
    /// Makes the formatter from an info dictionary (see KZClassRegistry);
    /// none when that names no formatter.
    void setFormatterInfo(const PlistValue &info);
    const PlistValue &formatterInfo() const { return _formatterInfo; }

    std::optional<QString> displayStringForPlist(const PlistValue &plist) const;
    std::optional<KZStyledText> styledDisplayStringForPlist(const PlistValue &plist) const;
    std::optional<QString> editingStringForPlist(const PlistValue &plist) const;
    /// The value typed text stands for, or none and the reason in `errorString` (may be null).
    PlistValue plistForEditingString(const QString &string, QString *errorString) const;
    /// Parses and, when that succeeds, sets the value on the object (with
    /// undo); answers the reason when it does not.
    std::optional<QString> setEditingString(const QString &string, ADPlistObject &object) const;

protected:
    /// Copies what `copy()` carries into `other`, a new viewer of this class.
    virtual void copySettingsTo(ADValueViewer &other) const;

private:
    bool _isDefault = false;
    bool _showRawKeysAndValues = false;
    bool _editable = true;
    QString _name;
    int _nameStringID = 0;
    QPointer<QObject> _registry; // an ADValueViewerRegistry, not owned
    QString _identifier;
    ADPlistType _dataType = ADPlistTypeUnknown;
    std::shared_ptr<KZFormatter> _formatter;
    PlistValue _formatterInfo;
    QString _nibName;
    QString _infoViewControllerClassName;
};
