#include "Wording.h"

#include "CTranslator.h"

QString Wording(const char* szEnglish)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szEnglish));
}
