#pragma once

#include <QString>

// A text the person reads, in the language chosen in the wording service
// (CTranslator); the English text itself, which is its key in the wording
// tables, until another language is chosen.
QString Wording(const char* szEnglish);
