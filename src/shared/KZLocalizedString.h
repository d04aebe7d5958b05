#pragma once

#include <QString>
#include <QStringList>

/// The text the user sees for message `number`: the strings table of the
/// user's language among the resources, else the English table, else
/// `defaultText`. Tables load once, on first use, from any thread.
QString KZLocalizedStringWithID(int number, const QString &defaultText);

/// The text of message `number` with its placeholders filled from `arguments`.
QString KZLocalizedStringWithFormat(int number, const QString &defaultText,
                                    const QStringList &arguments);

/// Fills a message's placeholders in order: "%@" and the integer forms
/// ("%d", "%ld", "%lu", ...) each take the next argument; "%%" is a percent sign.
QString KZStringWithFormat(const QString &format, const QStringList &arguments);
