#include "ParamWording.h"

#include "CTranslator.h"

QString ParamWording(const char* szEnglish)
{
    return ParamWording(QString::fromUtf8(szEnglish));
}

QString ParamWording(const QString& strEnglish)
{
    return CTranslator::GetInstance()->GetWording(strEnglish);
}
