#pragma once

#include "ADValueViewer.h"

#include <QHash>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

class ADPlistObject;
class ADValueViewerElement;

/// One entry of a viewer menu: a viewer (title and identifier, with its
/// check state for the selection) or a separator.
struct ADValueViewerMenuItem
{
    QString title;
    QString identifier;
    Qt::CheckState state = Qt::Unchecked; // PartiallyChecked: several viewers show the selection
    bool isSeparator = false;

    bool operator==(const ADValueViewerMenuItem &) const = default;
};

/// Holds the value viewers of one outline (and `sharedRegistry()` for code
/// outside one), chooses the viewer of each node, and lists the viewers of
/// a selection for its menu. The table of viewers is the "ValueViewers"
/// resource; it must hold a default viewer for every plist type.
///
/// Owns its viewers, which it lends out shared; viewers it makes for
/// previews and allowable values are cached here and never listed. Whether
/// remembered per-key preferences count is a copy of a user default, kept
/// up to date by whoever owns the registry. Main thread.
class ADValueViewerRegistry : public QObject
{
    Q_OBJECT
public:
    using Viewer = std::shared_ptr<ADValueViewer>;

    /// The resource path of the viewer table compiled into the program.
    static QString defaultViewerTablePath();

    /// Registers the viewer and formatter classes, then reads `viewerTablePath`.
    explicit ADValueViewerRegistry(const QString &viewerTablePath = defaultViewerTablePath(),
                                   QObject *parent = nullptr);

    static ADValueViewerRegistry &sharedRegistry();

    /// Reads a viewer table (an array of entries) and registers its viewers
    /// in order; entries that make no viewer are skipped. False when the file
    /// holds no table.
    bool addViewersFromContentsOfFile(const QString &path);
    /// Lists the viewer for its type and identifier; a default replaces the
    /// type's earlier default.
    void registerViewer(const Viewer &viewer);

    std::vector<Viewer> availableViewersForType(ADPlistType type) const;
    Viewer defaultViewerForType(ADPlistType type) const;
    Viewer viewerForIdentifier(const QString &identifier) const;

    /// A viewer of dictionaries that previews the value at `keyPath`; null for an empty path.
    Viewer viewerForDictionaryWithPreviewKeyPath(const QString &keyPath);
    /// A viewer of the element's allowable values, cached by element name; null when it has none.
    Viewer allowableValueViewerForDefinitionElement(const ADValueViewerElement &element);

    /// The node's own viewer, else the one its definition asks for, else its
    /// remembered preference; any of these only when it shows the node's
    /// type, else the type's default.
    Viewer viewerForPlistObject(const ADPlistObject &object);

    /// The viewer menu for a selection: empty unless all nodes are of one
    /// type; the default viewer first, then a separator and the others by
    /// name; the viewers showing the selection checked (mixed when several).
    std::vector<ADValueViewerMenuItem>
    menuItemsForPlistObjects(const std::vector<const ADPlistObject *> &objects);

    std::optional<QString> displayStringForPlistObject(const ADPlistObject &object);
    std::optional<QString> editingStringForPlistObject(const ADPlistObject &object);
    PlistValue plistForEditingString(const QString &string, const ADPlistObject &object,
                                     QString *errorString);
    std::optional<QString> setEditingString(const QString &string, ADPlistObject &object);

    bool savePreferredViewerIdentifiers() const { return _savePreferredViewerIdentifiers; }
    void setSavePreferredViewerIdentifiers(bool save) { _savePreferredViewerIdentifiers = save; }

private:
    Viewer chosenViewerForPlistObject(const ADPlistObject &object);

    QHash<ADPlistType, std::vector<Viewer>> _availableViewers;
    QHash<QString, Viewer> _viewersByIdentifier;
    QHash<QString, Viewer> _dictionaryViewers;
    QHash<ADPlistType, Viewer> _defaultViewers;
    QHash<QString, Viewer> _cachedAllowableValueViewers;
    bool _savePreferredViewerIdentifiers = true;
};
