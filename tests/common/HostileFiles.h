#pragma once

#include <QByteArray>
#include <QVariant>

// What a tester puts in files to break their readers, shared by the tests
// and the fuzz targets.
namespace HostileFiles {
// A value in the settings layer's own encoding that nests a list in a list
// nLevels deep, as an INI file spells it: decoded, it takes the stack down.
inline QByteArray NestedVariant(int nLevels = 25000)
{
    return "@Variant(" + QByteArray("\\0\\0\\0\\t\\0\\0\\0\\x1").repeated(nLevels) + ")";
}

// Whether what the settings layer made of a value came out of its decoder:
// anything but a text, a list of texts or a byte array.
inline bool Decoded(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::QStringList:
    case QMetaType::QByteArray:
        return false;
    case QMetaType::QVariantList:
        for (const QVariant& item : value.toList())
            if (Decoded(item))
                return true;
        return false;
    default:
        return value.isValid();
    }
}
}
