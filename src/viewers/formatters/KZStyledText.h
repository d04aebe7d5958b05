#pragma once

#include <QString>

/// Display text with its styling named, not painted: a label part and a text
/// part, each with a role that the outline's delegates map to palette colours
/// (so light and dark themes both work), and whether the text takes the
/// outline's text font preference. The label is never part of what is edited.
/// A plain value.
struct KZStyledText
{
    enum class Role
    {
        Plain,     // the cell's own text colour
        Secondary, // a dimmer colour, for labels
        Disabled,  // the disabled text colour, for summaries that are not typed in
        Error,     // the colour of an error, in place of a value
    };
    enum class Font
    {
        Cell,        // the cell's font
        OutlineFont, // the text font preference of the outline (edit mode 0)
    };

    QString label;
    Role labelRole = Role::Secondary;
    QString text;
    Role textRole = Role::Plain;
    Font font = Font::Cell;

    QString toString() const { return label + text; }
    bool operator==(const KZStyledText &) const = default;
};
