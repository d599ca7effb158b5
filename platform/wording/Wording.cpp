#include "Wording.h"

#include "CTranslator.h"

QString FactoryMgrPlatform::Wording(const char* szEnglish)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szEnglish));
}
