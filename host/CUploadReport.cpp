#include "CUploadReport.h"

#include "CTranslator.h"
#include "FactoryParams.h"

#include <functional>

namespace {
QString Wording(const char* szText)
{
    return CTranslator::GetInstance()->GetWording(QString::fromUtf8(szText));
}

struct Field
{
    const char* szLabel;   // the dialog's label, as its wording key
    QString strWhere;      // the axis or the laser, translated; empty for one of a kind
    std::function<double(const FactoryParams&)> read;
};

// The fields the plug-in's check compares, in its order.
QList<Field> CheckedFields()
{
    QList<Field> fields;
    const char* const kAxes[] = {"X", "Y", "Z", "U"};
    const QList<QPair<const char*, double MotorParams::*>> motor{
        {"Step(p/um)", &MotorParams::pulsePerMm},       {"Move Distance(mm)", &MotorParams::size},
        {"Zero Offset(mm)", &MotorParams::zeroOffset},  {"Ini Speed(mm/s)", &MotorParams::speedJump},
        {"Max Speed(mm/s)", &MotorParams::speedMax},    {"Max Acc(mm/s²)", &MotorParams::accMax},
        {"Emergency stop Acc(mm/s²)", &MotorParams::accUrgentStop}, {"Button Acc(mm/s²)", &MotorParams::accKey},
        {"Keypad Speed(mm/s)", &MotorParams::speedKeyJump}};
    for (int a = 0; a < 4; ++a)
        for (const auto& [szLabel, pField] : motor)
            fields << Field{szLabel, QString::fromLatin1(kAxes[a]),
                            [a, pField = pField](const FactoryParams& p) { return p.motor[a].*pField; }};
    const QList<QPair<const char*, double LaserParams::*>> laser{
        {"Min power(%)", &LaserParams::powerMin},           {"Max power(%)", &LaserParams::powerMax},
        {"Laser Attenuation(%)", &LaserParams::powerReduction}, {"Laser Frequency(kHz)", &LaserParams::frequency},
        {"Pre-burning frequency(kHz)", &LaserParams::burningFrequency},
        {"Pre-ignition pulse width(%)", &LaserParams::burningWidth}};
    for (int k = 0; k < 2; ++k)
        for (const auto& [szLabel, pField] : laser)
            fields << Field{szLabel, Wording(k == 0 ? "Laser 1" : "Laser 2"),
                            [k, pField = pField](const FactoryParams& p) { return p.laser.lasers[k].*pField; }};
    const QList<QPair<const char*, double SpeedSection::*>> speed{
        {"Idle speed(mm/s)", &SpeedSection::cutSpeedSpace},
        {"Corner speed(mm/s)", &SpeedSection::cutSpeedCorner},
        {"Idle Acc(mm/s²)", &SpeedSection::cutAccSpace},
        {"PMax Acc(mm/s²)", &SpeedSection::cutAccCorner},
        {"Working Acc(mm/s²)", &SpeedSection::cutAccWork},
        {"Engraving X-axis Ini speed(mm/s)", &SpeedSection::sweepSpeedXStart},
        {"Engraving Y-axis Ini speed(mm/s)", &SpeedSection::sweepSpeedYStart},
        {"Engraving DPI speed(mm/s)", &SpeedSection::sweepSpeedNewline},
        {"Engraving X-axis Acc(mm/s²)", &SpeedSection::sweepAccX},
        {"Engraving Y-axis Acc(mm/s²)", &SpeedSection::sweepAccY},
        {"Reset speed(mm/s)", &SpeedSection::panelSpeedReset}};
    for (const auto& [szLabel, pField] : speed)
        fields << Field{szLabel, QString(), [pField = pField](const FactoryParams& p) { return p.speed.*pField; }};
    fields << Field{"Moving parts", QString(), [](const FactoryParams& p) { return double(p.machine.motiveMode); }}
           << Field{"Dual head Distance", QString(), [](const FactoryParams& p) { return p.machine.laserSpace; }}
           << Field{"Machine zero", QString(), [](const FactoryParams& p) { return double(p.machine.machineZero); }}
           << Field{"Lid protection", QString(), [](const FactoryParams& p) { return double(p.machine.openProject); }}
           << Field{"Blowing", QString(), [](const FactoryParams& p) { return double(p.machine.blow); }}
           << Field{"Machine type", QString(), [](const FactoryParams& p) { return double(p.machine.machineType); }}
           << Field{"Feed mode", QString(), [](const FactoryParams& p) { return double(p.machine.feedMode); }}
           << Field{"Power-off delay", QString(), [](const FactoryParams& p) { return double(p.machine.outageDelay); }};
    return fields;
}

QString Number(double dValue)
{
    return QString::number(dValue, 'f', 2);
}
}

QStringList CUploadReport::PutBackLines(const FactoryParams& sent, const FactoryParams& kept,
                                        const FactoryParams& putBack)
{
    QStringList lines;
    for (const Field& field : CheckedFields()) {
        if (field.read(sent) == field.read(kept))
            continue;
        const QString strName = field.strWhere.isEmpty() ? Wording(field.szLabel)
                                                         : Wording(field.szLabel) + ", " + field.strWhere;
        lines << Wording("%1: sent %2, the controller kept %3, put back %4")
                     .arg(strName, Number(field.read(sent)), Number(field.read(kept)), Number(field.read(putBack)));
    }
    return lines;
}

QString CUploadReport::Text(bool bKept, quint32 nFlags, const QStringList& lines, bool bSaved)
{
    QStringList text;
    if (bKept && nFlags == 0) {
        text << Wording("The controller kept every value.");
    } else {
        QStringList sections;
        if (nFlags & 1)
            sections << Wording("Motor");
        if (nFlags & 2)
            sections << Wording("Laser");
        if (nFlags & 4)
            sections << Wording("Processing");
        if (nFlags & 8)
            sections << Wording("Machine");
        text << (nFlags == 0 ? Wording("The controller changed values the check does not put back.")
                             : Wording("The controller did not keep %1 value(s) (%2); they are put back and marked red:")
                                   .arg(lines.size())
                                   .arg(sections.join(", ")));
        text << lines;
    }
    text << (bSaved ? Wording("The parameters are saved.") : Wording("The parameter file could not be saved."));
    return text.join('\n');
}
