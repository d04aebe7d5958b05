#include "ADPlistPasteboard.h"

#include "storage/PlistSerialization.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace {

class GeneralPasteboard : public ADPlistPasteboard
{
public:
    void writePropertyList(const PlistValue &list) override
    {
        QGuiApplication::clipboard()->setMimeData(mimeDataForPropertyList(list).release());
    }
    std::optional<PlistValue> propertyList() const override
    {
        return propertyListFromMimeData(QGuiApplication::clipboard()->mimeData());
    }
};

class PrivatePasteboard : public ADPlistPasteboard
{
public:
    void writePropertyList(const PlistValue &list) override { _list = list; }
    std::optional<PlistValue> propertyList() const override { return _list; }

private:
    std::optional<PlistValue> _list;
};

// Only containers are property lists a paste can take apart.
std::optional<PlistValue> containerFrom(const QByteArray &bytes)
{
    ReadResult read = PlistSerialization::read(bytes);
    if (!read || !read.value.isContainer())
        return std::nullopt;
    return std::move(read.value);
}

} // namespace

ADPlistPasteboard &ADPlistPasteboard::general()
{
    static GeneralPasteboard pasteboard;
    return pasteboard;
}

ADPlistPasteboard &ADPlistPasteboard::privatePasteboard()
{
    static PrivatePasteboard pasteboard;
    return pasteboard;
}

std::unique_ptr<QMimeData> ADPlistPasteboard::mimeDataForPropertyList(const PlistValue &list)
{
    auto data = std::make_unique<QMimeData>();
    const WriteResult xml = PlistSerialization::write(list, ADPlistFormatXML);
    if (!xml)
        return data;
    data->setData(PlistObjectsPboardType, xml.data);
    data->setText(QString::fromUtf8(xml.data));
    return data;
}

std::optional<PlistValue> ADPlistPasteboard::propertyListFromMimeData(const QMimeData *data)
{
    if (!data)
        return std::nullopt;
    if (data->hasFormat(PlistObjectsPboardType))
        return containerFrom(data->data(PlistObjectsPboardType));
    if (data->hasText())
        return containerFrom(data->text().toUtf8());
    return std::nullopt;
}
