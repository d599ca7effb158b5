#pragma once

#include <QString>

namespace FactoryMgrPlatform {
// A text the person reads, in the language chosen in the wording service
// (CTranslator); the English text itself, which is its key in the wording
// tables, until another language is chosen. In a namespace of its own, as
// libTranslator exports it to hosts that may have a Wording of their own.
QString Wording(const char* szEnglish);
}

using FactoryMgrPlatform::Wording;
