#include "CPatternConverter.h"

#include "CShapeFile.h"

int CPatternConverter::ConvertPattern(const char* szPatternPath, const char* szJobPath, double dPower)
{
    if (!szPatternPath || !szJobPath)
        return 1;
    CShapeFile pattern;
    QString strError;
    if (!pattern.Read(QString::fromUtf8(szPatternPath), "LCPX", strError) || pattern.shapes.isEmpty())
        return 1;
    CShapeFile job;
    job.shapes = pattern.shapes;
    job.fields.insert("POWER", QByteArray::number(dPower, 'g', 10));
    return job.Write(QString::fromUtf8(szJobPath), "TL") ? 0 : 2;
}
