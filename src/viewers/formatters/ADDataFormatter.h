#pragma once

#include "KZFormatter.h"

/// Data as hexadecimal, a blank after every two bytes, labelled with its
/// length. Data longer than `maxNumBytes` shows its first and last bytes
/// around an ellipsis, so a cell never shows more than that many; the
/// editing string always holds every byte. Typed text may hold blanks.
class ADDataFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(int bytesPerChunk READ bytesPerChunk WRITE setBytesPerChunk)
    Q_PROPERTY(uint maxNumBytes READ maxNumBytes WRITE setMaxNumBytes)
public:
    Q_INVOKABLE ADDataFormatter() = default;

    int bytesPerChunk() const { return _bytesPerChunk; }
    void setBytesPerChunk(int bytes) { _bytesPerChunk = bytes; }
    uint maxNumBytes() const { return _maxNumBytes; }
    void setMaxNumBytes(uint bytes) { _maxNumBytes = bytes; }

    QString stringForData(QByteArrayView data) const;
    /// "%lu bytes: "; subclasses say what the bytes are.
    virtual QString labelForData(QByteArrayView data) const;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    std::optional<QString> editingStringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;

private:
    int _bytesPerChunk = 4; // read by nothing yet; a setting resources may carry
    uint _maxNumBytes = 280;
};
