#pragma once

#include <QtGlobal>

#include <initializer_list>

/// The codes every subsystem passes around: plist types, storage formats,
/// which side of a document holds unsynced edits, and sets of types as masks.

using ADPlistType = qint64;
constexpr ADPlistType ADPlistTypeUnknown = -1; // no plist value, or what stands above a root
constexpr ADPlistType ADPlistTypeArray = 0;
constexpr ADPlistType ADPlistTypeBoolean = 1;
constexpr ADPlistType ADPlistTypeData = 2;
constexpr ADPlistType ADPlistTypeDate = 3;
constexpr ADPlistType ADPlistTypeDictionary = 4;
constexpr ADPlistType ADPlistTypeNumber = 5;
constexpr ADPlistType ADPlistTypeString = 6;
constexpr ADPlistType ADPlistTypeNull = 7; // JSON only

using ADPlistFormat = qint64;
constexpr ADPlistFormat ADPlistFormatUnknown = -1;
constexpr ADPlistFormat ADPlistFormatASCII = 1;
constexpr ADPlistFormat ADPlistFormatXML = 100;
constexpr ADPlistFormat ADPlistFormatBinary = 200;
constexpr ADPlistFormat ADPlistFormatJSON = 1000;

using ADEditMode = qint64;
constexpr ADEditMode ADEditModeNone = -1;   // both sides agree
constexpr ADEditMode ADEditModeOutline = 0; // the outline holds edits the text lacks
constexpr ADEditMode ADEditModeText = 1;    // the text holds edits the outline lacks

/// A set of plist types: bit n stands for type code n.
using ADPlistMask = qint64;

constexpr ADPlistMask ADPlistMaskForType(ADPlistType type)
{
    return type < 0 || type > 62 ? 0 : ADPlistMask(1) << type;
}

/// The set of all the types given.
constexpr ADPlistMask ADPlistMaskForTypes(std::initializer_list<ADPlistType> types)
{
    ADPlistMask mask = 0;
    for (const ADPlistType type : types)
        mask |= ADPlistMaskForType(type);
    return mask;
}

constexpr bool ADPlistMaskContainsType(ADPlistMask mask, ADPlistType type)
{
    return (mask & ADPlistMaskForType(type)) != 0;
}

/// Calls `body` with each type code in the mask, from 0 up to 7; higher bits are never looked at.
template <typename Body> void ADEnumeratePlistMask(ADPlistMask mask, Body &&body)
{
    for (ADPlistType type = ADPlistTypeArray; type <= ADPlistTypeNull; ++type) {
        if (ADPlistMaskContainsType(mask, type))
            body(type);
    }
}
