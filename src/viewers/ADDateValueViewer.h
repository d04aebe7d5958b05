#pragma once

#include "ADValueViewer.h"

/// Dates, through a date formatter in the medium styles of the locale.
class ADDateValueViewer : public ADValueViewer
{
    Q_OBJECT
public:
    Q_INVOKABLE ADDateValueViewer();
};
