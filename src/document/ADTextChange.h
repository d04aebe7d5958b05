#pragma once

#include "shared/KZRange.h"

#include <QString>
#include <QStringView>

/// The one replacement that turns a text into another: what both share at
/// the start and at the end stays, and the part between is replaced. A view
/// that shows a text made again after a small edit of the tree changes only
/// that part, instead of taking in the whole text anew.
struct ADTextChange
{
    KZRange replaced; // in the old text
    KZRange inserted; // in the new text

    static ADTextChange between(QStringView old, QStringView now);
};
