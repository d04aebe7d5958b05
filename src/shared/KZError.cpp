#include "KZError.h"

KZError::KZError(const QString &domain, qint64 code, const QString &localizedDescription)
    : _domain(domain), _code(code), _localizedDescription(localizedDescription)
{}

QStringList KZError::localizedRecoveryOptions() const
{
    QStringList titles;
    for (const RecoveryOption &option : _recoveryOptions)
        titles << option.title;
    return titles;
}

void KZError::addRecoveryOption(const QString &title, RecoveryHandler handler)
{
    _recoveryOptions.push_back({title, std::move(handler)});
}

std::optional<KZError> KZError::attemptRecovery(qsizetype index) const
{
    Q_ASSERT(index >= 0 && size_t(index) < _recoveryOptions.size());
    const RecoveryHandler &handler = _recoveryOptions[size_t(index)].handler;
    return handler ? handler() : std::nullopt;
}
