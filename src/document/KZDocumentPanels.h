#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

/// One entry of a file panel's list of types: "Property List (*.plist)".
struct KZFileTypeFilter
{
    QString label;
    QString type; // the document type it saves or opens as
    QStringList extensions;
};

struct KZSavePanelRequest
{
    QString directory;
    QString fileName;
    std::vector<KZFileTypeFilter> filters;
    qsizetype selectedFilter = 0;
};

struct KZSavePanelResult
{
    QString path;
    qsizetype filterIndex = 0; // into the request's filters
};

struct KZOpenPanelRequest
{
    QString directory;
    std::vector<KZFileTypeFilter> filters; // any file may be chosen too
};

/// The panels that choose where a document is saved and which files are
/// opened. The window side shows the system's file dialogs, attached to the
/// document's window; tests answer from a script. Not owned by the documents
/// that use it. Main thread only.
class KZDocumentPanels
{
public:
    virtual ~KZDocumentPanels() = default;

    /// Calls `done` once with the place chosen, or none when cancelled. The
    /// panel itself asks before an existing file is replaced.
    virtual void
    runSavePanel(const KZSavePanelRequest &request,
                 std::function<void(const std::optional<KZSavePanelResult> &)> done) = 0;
    /// Calls `done` once with the files chosen; none when cancelled.
    virtual void runOpenPanel(const KZOpenPanelRequest &request,
                              std::function<void(const QStringList &paths)> done) = 0;
};
