// Renders the editor's window in its typical states to PNG files, on
// whatever platform Qt runs on (offscreen by default), so that a reviewer
// sees the program without running it. Usage: arbordeck-screenshots FOLDER

#include "app/ADAppController.h"
#include "document/ADPlistDocument.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "storage/PlistSerialization.h"
#include "ui/document/KZMessageBoxPresenter.h"
#include "ui/outline/ADPlistOutlineView.h"
#include "ui/window/ADPlistWindow.h"
#include "ui/window/ADPlistWindowController.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QPainter>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

QString gFolder;
QTemporaryDir gFiles;

void settle()
{
    for (int pass = 0; pass < 5; ++pass)
        QCoreApplication::processEvents();
}

QString writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = gFiles.filePath(name);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
    return path;
}

QByteArray sampleBytes()
{
    QFile sample(QStringLiteral(ARBORDECK_SAMPLE));
    return sample.open(QIODevice::ReadOnly) ? sample.readAll() : QByteArray();
}

PlistValue samplePlist()
{
    return PlistSerialization::read(sampleBytes()).value;
}

// The window, with its sheets and alerts drawn where they show: below the title, centred.
void shoot(ADPlistWindowController &controller, const char *name)
{
    settle();
    QWidget *window = controller.window();
    QPixmap picture = window->grab();
    QPainter painter(&picture);
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (top == window || !top->isVisible() || top->parentWidget() != window)
            continue;
        const QPixmap sheet = top->grab();
        const int x = (picture.width() - sheet.width()) / 2;
        painter.fillRect(x - 1, 39, sheet.width() + 2, sheet.height() + 2,
                         window->palette().color(QPalette::Shadow));
        painter.drawPixmap(x, 40, sheet);
    }
    painter.end();
    const QString path = QDir(gFolder).filePath(QString::fromUtf8(name) + QStringLiteral(".png"));
    std::printf("%s %s\n", picture.save(path) ? "wrote" : "could not write",
                qPrintable(QDir::toNativeSeparators(path)));
}

QMessageBox *openMessageBox(QWidget *window)
{
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(top);
            box && box->isVisible() && box->parentWidget() == window)
            return box;
    }
    return nullptr;
}

void clickButton(QMessageBox *box, const QString &title)
{
    for (QAbstractButton *button : box->buttons()) {
        if (button->text() == title)
            button->click();
    }
    settle();
}

class Gallery
{
public:
    explicit Gallery(ADPreferences &preferences) : _preferences(preferences) {}

    ADPlistWindowController &open(const QString &path)
    {
        auto document = std::make_unique<ADPlistDocument>(_preferences);
        document->setFileURL(path);
        bool read = false; // a big file is read aside
        document->readFromURL(path, ADPlistDocumentPropertyListType,
                              [&read](const std::optional<KZError> &) { read = true; });
        while (!read)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return show(std::move(document));
    }
    ADPlistWindowController &show(std::unique_ptr<ADPlistDocument> document)
    {
        auto window = std::make_unique<ADPlistWindowController>(*document, _preferences);
        window->window()->resize(820, 620);
        window->showWindow();
        ADPlistOutlineController &outline = window->outlineController();
        outline.model().expandItem(outline.plistRoot());
        _documents.push_back(std::move(document));
        _windows.push_back(std::move(window));
        return *_windows.back();
    }
    void selectRows(ADPlistWindowController &window, std::initializer_list<int> rows)
    {
        ADPlistObject *root = window.outlineController().plistRoot();
        std::vector<ADPlistObject *> items;
        for (const int row : rows)
            items.push_back(root->childAtIndex(row));
        window.outlineController().selectItems(items);
    }

private:
    ADPreferences &_preferences;
    std::vector<std::unique_ptr<ADPlistDocument>> _documents;
    std::vector<std::unique_ptr<ADPlistWindowController>> _windows;
};

PlistValue largeRecords(int count)
{
    PlistArray records = PlistArray::create(count);
    for (int i = 0; i < count; ++i) {
        PlistDictionary record = PlistDictionary::create();
        record.insert(QStringLiteral("identifier"), PlistValue(qint64(100000 + i)));
        record.insert(QStringLiteral("name"), PlistValue(QStringLiteral("Record %1").arg(i)));
        record.insert(QStringLiteral("enabled"), PlistValue(i % 3 != 0));
        records.append(record.value());
    }
    return records.value();
}

void renderGallery(ADPreferences &preferences)
{
    Gallery gallery(preferences);

    ADPlistWindowController &xml =
        gallery.open(writeFile(QStringLiteral("Agent.plist"), sampleBytes()));
    ADPlistObject *environment =
        xml.outlineController().plistRoot()->childForKey(QStringLiteral("EnvironmentVariables"));
    xml.outlineView()->expand(xml.outlineController().model().indexForItem(environment));
    xml.outlineController().selectItems({environment->childAtIndex(0)});
    shoot(xml, "xml-document");

    ADPlistWindowController &binary =
        gallery.open(writeFile(QStringLiteral("Backup.plist"),
                               PlistSerialization::write(samplePlist(), ADPlistFormatBinary).data));
    shoot(binary, "binary-document");

    PlistDictionary json = PlistDictionary::create();
    json.insert(QStringLiteral("name"), PlistValue(QStringLiteral("arbordeck")));
    json.insert(QStringLiteral("version"), PlistValue(QStringLiteral("0.1.0")));
    json.insert(QStringLiteral("keywords"), [] {
        PlistArray words = PlistArray::create();
        for (const char *word : {"plist", "editor", "qt"})
            words.append(PlistValue(QString::fromUtf8(word)));
        return words.value();
    }());
    json.insert(QStringLiteral("private"), PlistValue(true));
    ADPlistWindowController &jsonWindow =
        gallery.open(writeFile(QStringLiteral("package.json"),
                               PlistSerialization::write(json.value(), ADPlistFormatJSON).data));
    shoot(jsonWindow, "json-document");

    // A broken file: first the question with its reason, then its raw text.
    auto broken = std::make_unique<ADPlistDocument>(preferences);
    ADPlistDocument *brokenDocument = broken.get();
    ADPlistWindowController &raw = gallery.show(std::move(broken));
    QByteArray bytes = sampleBytes();
    bytes.replace("</array>", "</arary>");
    const QString brokenPath = writeFile(QStringLiteral("Broken.plist"), bytes);
    brokenDocument->setFileURL(brokenPath);
    brokenDocument->readFromURL(brokenPath, ADPlistDocumentPropertyListType,
                                [](const std::optional<KZError> &) {});
    shoot(raw, "raw-text-question");
    if (QMessageBox *box = openMessageBox(raw.window()))
        clickButton(box, QStringLiteral("Open"));
    shoot(raw, "raw-text");

    ADPlistWindowController &convert =
        gallery.open(writeFile(QStringLiteral("Convert.plist"), sampleBytes()));
    convert.document().changePlistFormat(ADPlistFormatJSON);
    shoot(convert, "conversion-question");
    if (QMessageBox *box = openMessageBox(convert.window()))
        box->reject();

    ADPlistWindowController &large = gallery.open(
        writeFile(QStringLiteral("Records.plist"),
                  PlistSerialization::write(largeRecords(200000), ADPlistFormatXML).data));
    shoot(large, "large-file-opening"); // its text still being made
    {
        // What opening a big file shows while it is read, over the window it will fill.
        KZMessageBoxPresenter presenter(large.window());
        const std::unique_ptr<KZProgressIndicator> progress =
            presenter.beginProgress(QStringLiteral("Opening “Records.plist”…"), [] {});
        QElapsedTimer shown;
        shown.start();
        while (shown.elapsed() < 300)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        shoot(large, "large-file-reading");
    }
    large.document().finishMakingText();
    gallery.selectRows(large, {2});
    large.outlineView()->expand(large.outlineController().model().indexForItem(
        large.outlineController().plistRoot()->childAtIndex(2)));
    shoot(large, "large-file");

    ADPlistWindowController &sheet =
        gallery.open(writeFile(QStringLiteral("Sheet.plist"), sampleBytes()));
    ADPlistObject *arguments =
        sheet.outlineController().plistRoot()->childForKey(QStringLiteral("ProgramArguments"));
    sheet.outlineView()->expand(sheet.outlineController().model().indexForItem(arguments));
    sheet.outlineController().selectItems(
        {arguments->childAtIndex(0), arguments->childAtIndex(1), arguments->childAtIndex(2)});
    sheet.showEditValueSheet();
    shoot(sheet, "edit-sheet");
    if (sheet.editSheet())
        sheet.editSheet()->reject();
}

// The same window under a dark palette, as a dark desktop theme gives it.
void renderDark(ADPreferences &preferences)
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(45, 45, 48));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    dark.setColor(QPalette::Base, QColor(30, 30, 32));
    dark.setColor(QPalette::AlternateBase, QColor(40, 40, 44));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    dark.setColor(QPalette::Button, QColor(55, 55, 60));
    dark.setColor(QPalette::ButtonText, QColor(230, 230, 230));
    dark.setColor(QPalette::Highlight, QColor(50, 110, 190));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
    QApplication::setPalette(dark);
    Gallery gallery(preferences);
    ADPlistWindowController &xml =
        gallery.open(writeFile(QStringLiteral("Dark.plist"), sampleBytes()));
    gallery.selectRows(xml, {3});
    shoot(xml, "xml-document-dark");
}

} // namespace

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    gFolder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots");
    QDir().mkpath(gFolder);
    QTemporaryDir settings;
    KZUserDefaults defaults(settings.filePath(QStringLiteral("settings.plist")));
    KZNotificationCenter center;
    ADPreferences preferences(defaults, center);
    defaults.setBool(true, PlistDocumentSyncButtonsVisibleKey);
    renderGallery(preferences);
    renderDark(preferences);
    return 0;
}
