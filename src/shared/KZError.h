#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

inline const QString ADErrorDomain = QStringLiteral("ADErrorDomain");
inline const QString KZErrorDomain = QStringLiteral("KZErrorDomain");

/// A failure in ordinary use, or a question to the user: a domain and code, the
/// texts shown, and recovery options, each a button title with a handler.
/// A handler that answers no error lets the interrupted operation go on.
/// Errors are values; the handlers they carry are copied with them.
class KZError
{
public:
    using RecoveryHandler = std::function<std::optional<KZError>()>;
    struct RecoveryOption
    {
        QString title;
        RecoveryHandler handler;
    };

    KZError(const QString &domain, qint64 code, const QString &localizedDescription = QString());

    const QString &domain() const { return _domain; }
    qint64 code() const { return _code; }
    const QString &localizedDescription() const { return _localizedDescription; }
    void setLocalizedDescription(const QString &text) { _localizedDescription = text; }
    const QString &localizedRecoverySuggestion() const { return _localizedRecoverySuggestion; }
    void setLocalizedRecoverySuggestion(const QString &text)
    {
        _localizedRecoverySuggestion = text;
    }
    /// Anything else the error carries, such as the path it concerns.
    const QVariantMap &userInfo() const { return _userInfo; }
    void setUserInfoValue(const QString &key, const QVariant &value)
    {
        _userInfo.insert(key, value);
    }

    const std::vector<RecoveryOption> &recoveryOptions() const { return _recoveryOptions; }
    QStringList localizedRecoveryOptions() const;
    void addRecoveryOption(const QString &title, RecoveryHandler handler);
    /// Runs the handler of option `index` (from 0). An option without a handler recovers.
    std::optional<KZError> attemptRecovery(qsizetype index) const;

    bool is(const QString &domain, qint64 code) const { return _domain == domain && _code == code; }

private:
    QString _domain;
    qint64 _code;
    QString _localizedDescription;
    QString _localizedRecoverySuggestion;
    QVariantMap _userInfo;
    std::vector<RecoveryOption> _recoveryOptions;
};
