#pragma once

#include <QByteArray>

namespace HostileFiles {
// A value in the settings layer's own encoding that nests a list in a list
// nLevels deep, as an INI file spells it: decoded, it takes the stack down.
inline QByteArray NestedVariant(int nLevels = 25000)
{
    return "@Variant(" + QByteArray("\\0\\0\\0\\t\\0\\0\\0\\x1").repeated(nLevels) + ")";
}
}
