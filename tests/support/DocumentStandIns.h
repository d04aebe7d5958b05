#pragma once

// What stands around a plist document in tests: a presenter that answers
// from a script, file panels that answer from a script, and a window that
// holds the outline's place above the root, as the outline controller does.

#include "document/ADPlistDocument.h"
#include "document/ADPlistDocumentWindow.h"
#include "document/KZDocumentPanels.h"
#include "document/KZDocumentPresenter.h"
#include "model/ADPlistParent.h"

#include <QObject>

#include <gtest/gtest.h>

#include <deque>
#include <vector>

/// Answers each question with the button of the next title in the script.
/// A question the script does not expect fails the test. Progress is noted,
/// with the way to cancel it, and counted while shown.
class ScriptedPresenter : public KZDocumentPresenter
{
public:
    void willAnswer(const QString &button) { _script.push_back(button); }
    void ask(const KZQuestion &question, std::function<void(int button)> answer) override
    {
        asked.push_back(question);
        const int cancel = std::max(question.cancelButton, 0);
        if (_script.empty()) {
            ADD_FAILURE() << "unexpected question: " << question.title.toStdString() << " / "
                          << question.informativeText.toStdString();
            answer(cancel);
            return;
        }
        const QString button = _script.front();
        _script.pop_front();
        const int index = int(question.buttons.indexOf(button));
        EXPECT_GE(index, 0) << "no button " << button.toStdString() << " in "
                            << question.title.toStdString();
        answer(index < 0 ? cancel : index);
    }
    bool scriptDone() const { return _script.empty(); }
    std::unique_ptr<KZProgressIndicator> beginProgress(const QString &title,
                                                       std::function<void()> cancel) override
    {
        struct Shown : KZProgressIndicator
        {
            explicit Shown(int &count) : count(++count) {}
            ~Shown() override { --count; }
            int &count;
        };
        progressTitles.push_back(title);
        cancelProgress = std::move(cancel);
        return std::make_unique<Shown>(progressShown);
    }

    std::vector<KZQuestion> asked;
    std::vector<QString> progressTitles;
    std::function<void()> cancelProgress;
    int progressShown = 0;

private:
    std::deque<QString> _script;
};

/// The save panel chooses the next path and entry of the script; an empty
/// path cancels.
class ScriptedPanels : public KZDocumentPanels
{
public:
    void willChoose(const QString &path, qsizetype filterIndex = 0)
    {
        _script.push_back({path, filterIndex});
    }
    void runSavePanel(const KZSavePanelRequest &request,
                      std::function<void(const std::optional<KZSavePanelResult> &)> done) override
    {
        requests.push_back(request);
        if (_script.empty()) {
            ADD_FAILURE() << "unexpected save panel";
            done(std::nullopt);
            return;
        }
        const KZSavePanelResult result = _script.front();
        _script.pop_front();
        done(result.path.isEmpty() ? std::nullopt : std::optional(result));
    }
    void runOpenPanel(const KZOpenPanelRequest &,
                      std::function<void(const QStringList &paths)> done) override
    {
        done(openPaths);
    }

    std::vector<KZSavePanelRequest> requests;
    QStringList openPaths;

private:
    std::deque<KZSavePanelResult> _script;
};

/// Stands above the document's root as the outline controller does, so that
/// tree edits reach the document's undo manager and centre.
class OutlineStandIn : public ADPlistParent, public ADPlistDocumentWindow
{
public:
    explicit OutlineStandIn(ADPlistDocument &document) : _document(document)
    {
        document.setWindow(this);
        adopt(document.plistRoot());
        QObject::connect(&document, &ADPlistDocument::plistRootChanged, &_context,
                         [this](const ADPlistObject::Pointer &root) { adopt(root); });
    }
    ~OutlineStandIn() override
    {
        _document.setWindow(nullptr);
        _root->setParent(nullptr);
    }

    KZNotificationCenter *notificationCenter() const override
    {
        return &_document.notificationCenter();
    }
    ADUndoManager *undoManager() const override { return &_document.undoManager(); }
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return ADPlistTypeUnknown; }
    ADStructureDefinition *structureDefinition() const override { return nullptr; }

    bool commitEditing() override
    {
        ++commits;
        return true;
    }
    void exposePlistTextView() override { ++textExposed; }
    void reloadStructureDefinition() override { ++definitionReloads; }
    void bringToFront() override {}
    ADPlistObject *firstSelectedItem() override { return nullptr; }
    ADPlistObjectList selectedItems() override { return {}; }
    void selectItems(const ADPlistObjectList &) override {}
    void editValueForItem(ADPlistObject *, KZRange) override {}
    void editKeyForItem(ADPlistObject *, KZRange) override {}

    int commits = 0;
    int textExposed = 0;
    int definitionReloads = 0;

private:
    void adopt(const ADPlistObject::Pointer &root)
    {
        if (_root)
            _root->setParent(nullptr);
        _root = root;
        _root->setParent(this);
    }

    ADPlistDocument &_document;
    ADPlistObject::Pointer _root;
    QObject _context;
};
