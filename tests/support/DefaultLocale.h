#pragma once

#include <QLocale>

/// Makes a locale the process's default while it lives, for a test whose
/// expected text is written in that locale's numbers: the suite also runs
/// under a locale with a decimal comma.
class DefaultLocale
{
public:
    explicit DefaultLocale(const char *name)
    {
        QLocale::setDefault(QLocale(QLatin1StringView(name)));
    }
    ~DefaultLocale() { QLocale::setDefault(_saved); }
    DefaultLocale(const DefaultLocale &) = delete;
    DefaultLocale &operator=(const DefaultLocale &) = delete;

private:
    const QLocale _saved;
};
