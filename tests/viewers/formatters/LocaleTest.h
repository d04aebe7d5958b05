#pragma once

#include <QLocale>

#include <gtest/gtest.h>

/// A test that runs under each of the locales its parameter names, as the
/// default locale of the process; formatters made in the test follow it.
class LocaleTest : public testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        _saved = QLocale();
        QLocale::setDefault(QLocale(QString::fromLatin1(GetParam())));
    }
    void TearDown() override { QLocale::setDefault(_saved); }
    bool german() const { return QLocale().language() == QLocale::German; }

private:
    QLocale _saved;
};

#define AD_INSTANTIATE_LOCALES(suite)                                                              \
    INSTANTIATE_TEST_SUITE_P(Locales, suite, testing::Values("en_US", "de_DE"),                    \
                             [](const auto &info) { return std::string(info.param); })
