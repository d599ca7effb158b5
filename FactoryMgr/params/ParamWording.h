#pragma once

#include <QString>

// A text of the parameter code (a reason, a problem, a label) in the language
// chosen in the wording service; the English text itself until one is chosen.
QString ParamWording(const char* szEnglish);
QString ParamWording(const QString& strEnglish);
