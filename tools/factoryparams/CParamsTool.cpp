#include "CParamsTool.h"

#include "CParamBackups.h"
#include "CParamCheck.h"
#include "CParamDiff.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <cmath>

namespace {
const char* const kToolHelp =
    "Reads, compares, checks and changes FactoryMgr parameter files.\n"
    "\n"
    "Commands:\n"
    "  show FILE [--json]           every field: label, axis or laser, unit, value\n"
    "  diff A B [--json]            the fields that differ (exit code 1 when any do)\n"
    "  check FILE...                the marker, the keys and every value against its range\n"
    "  set FILE KEY=VALUE...        change values by their file keys; the old file is kept in Backups/\n"
    "  fleet REFERENCE DIR [--json] every parameter file under DIR against REFERENCE\n"
    "\n"
    "factoryparams COMMAND --help tells more. Exit codes: 0 done (nothing different or wrong),\n"
    "1 differences or problems found, 2 the command could not do its work.";

QJsonValue JsonNumber(double dValue)
{
    // JSON has no NaN or infinity: those are given as the text the file holds.
    return std::isfinite(dValue) ? QJsonValue(dValue) : QJsonValue(CParamDiff::Number(dValue));
}

QJsonObject JsonField(const QString& strKey, const QString& strLabel, const QString& strWhere, const QString& strUnit)
{
    return QJsonObject{{"key", strKey}, {"label", strLabel}, {"where", strWhere}, {"unit", strUnit}};
}

// A parser with the tool's own --help. arguments: name and description of each
// positional argument; the first is shown after the command's name.
struct CommandLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, QStringLiteral("Show this help.")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("Answer in JSON, for another program.")};

    CommandLine(const QString& strCommand, const QString& strDescription,
                const QList<QPair<QString, QString>>& arguments, bool bJson)
    {
        parser.setApplicationDescription(strDescription);
        parser.addOption(help);
        if (bJson)
            parser.addOption(json);
        for (int i = 0; i < arguments.size(); ++i)
            parser.addPositionalArgument(arguments[i].first, arguments[i].second,
                                         i == 0 ? strCommand + " " + arguments[i].first : arguments[i].first);
    }

    QString HelpText() const
    {
        // The usage line names the tool, not the path it was started by.
        QString strText = parser.helpText();
        strText.replace(QCoreApplication::arguments().constFirst(), QStringLiteral("factoryparams"));
        return strText;
    }
};
}

CParamsTool::CParamsTool(QTextStream& out, QTextStream& err)
    : m_out(out)
    , m_err(err)
{
}

void CParamsTool::Complain(const QString& strText)
{
    m_err << "factoryparams: " << strText << Qt::endl;
}

bool CParamsTool::Load(const QString& strPath, FactoryParams& record)
{
    switch (ReadFactoryParamFile(record, strPath)) {
    case ParamFileStatus::Loaded: return true;
    case ParamFileStatus::NoFile:
        Complain(QFileInfo(strPath).isDir() ? QStringLiteral("%1: is a directory, not a parameter file").arg(strPath)
                                            : QStringLiteral("%1: no such file").arg(strPath));
        return false;
    case ParamFileStatus::TooLarge:
        Complain(QStringLiteral("%1: larger than %2 bytes, not a parameter file").arg(strPath).arg(kMaxParamFileSize));
        return false;
    case ParamFileStatus::WrongMarker:
        Complain(QStringLiteral("%1: not a parameter file (no FACTORY_PARAM/FILE_FLAG=__FACTORY_PARAM__)").arg(strPath));
        return false;
    }
    return false;
}

namespace {
// The tool's own command line: options before the command, then the command
// and its arguments, which the command parses itself.
struct ToolLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, QStringLiteral("Show this help.")};
    QCommandLineOption version{{"v", "version"}, QStringLiteral("Show the version.")};

    ToolLine()
    {
        parser.setApplicationDescription(QString::fromUtf8(kToolHelp));
        parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
        parser.addOption(help);
        parser.addOption(version);
        parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("show, diff, check, set or fleet."),
                                     QStringLiteral("COMMAND [arguments]"));
    }

    QString HelpText() const
    {
        QString strText = parser.helpText();
        strText.replace(QCoreApplication::arguments().constFirst(), QStringLiteral("factoryparams"));
        return strText;
    }
};
}

int CParamsTool::Usage()
{
    m_err << ToolLine().HelpText();
    m_err.flush();
    return ExitFailed;
}

int CParamsTool::Run(const QStringList& arguments)
{
    ToolLine line;
    if (!line.parser.parse(QStringList{QStringLiteral("factoryparams")} + arguments)) {
        Complain(line.parser.errorText());
        return Usage();
    }
    if (line.parser.isSet(line.help)) {
        m_out << line.HelpText();
        return ExitOk;
    }
    if (line.parser.isSet(line.version)) {
        m_out << "factoryparams " << QCoreApplication::applicationVersion() << "\n";
        return ExitOk;
    }
    const QStringList command = line.parser.positionalArguments();
    if (command.isEmpty())
        return Usage();
    const QString strCommand = command.first();
    if (strCommand == "show")
        return Show(command);
    if (strCommand == "diff")
        return Diff(command);
    if (strCommand == "check")
        return Check(command);
    if (strCommand == "set")
        return Set(command);
    if (strCommand == "fleet")
        return Fleet(command);
    Complain(QStringLiteral("no command \"%1\"").arg(strCommand));
    return Usage();
}

namespace {
// Parses the command's arguments: 0 to go on, otherwise the exit code
// (after --help, or a complaint).
int ParseCommand(CommandLine& line, const QStringList& arguments, int nMin, int nMax, QTextStream& out,
                 const std::function<void(const QString&)>& complain)
{
    if (!line.parser.parse(QStringList{QStringLiteral("factoryparams")} + arguments)) {
        complain(line.parser.errorText());
        return CParamsTool::ExitFailed;
    }
    if (line.parser.isSet(line.help)) {
        out << line.HelpText();
        return -1;
    }
    // The command's own name is the first positional argument.
    const qsizetype nCount = line.parser.positionalArguments().size() - 1;
    if (nCount < nMin || (nMax >= 0 && nCount > nMax)) {
        complain(QStringLiteral("%1 takes %2; see factoryparams %3 --help")
                     .arg(arguments.first(),
                          nMin == nMax ? QString::number(nMin) + " argument(s)"
                                       : QStringLiteral("at least %1 argument(s)").arg(nMin),
                          arguments.first()));
        return CParamsTool::ExitFailed;
    }
    return 0;
}
}

int CParamsTool::Show(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("show"),
                     QStringLiteral("Shows every field of a parameter file, as the plug-in reads it: its key, "
                                    "its label in the settings dialog, the axis or laser, the unit and the value."),
                     {{QStringLiteral("FILE"), QStringLiteral("The parameter file.")}}, true);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, 1, m_out, complain))
        return n < 0 ? ExitOk : n;
    const QString strPath = line.parser.positionalArguments().at(1);
    FactoryParams record;
    if (!Load(strPath, record))
        return ExitFailed;
    const QVector<FactoryParamKey> keys = FactoryParamKey::ForRecord(record);
    if (line.parser.isSet(line.json)) {
        QJsonArray fields;
        for (const FactoryParamKey& key : keys) {
            QJsonObject field = JsonField(key.strKey, QString::fromUtf8(key.szLabel), key.Where(),
                                          QString::fromUtf8(key.szUnit));
            field.insert("section", key.strSection);
            field.insert("value", JsonNumber(key.Value()));
            fields << field;
        }
        m_out << QJsonDocument(QJsonObject{{"file", strPath}, {"fields", fields}}).toJson(QJsonDocument::Indented);
        return ExitOk;
    }
    for (const FactoryParamKey& key : keys) {
        const QString strWhere = key.Where();
        const QString strName = QString::fromUtf8(key.szLabel) + (strWhere.isEmpty() ? QString() : ", " + strWhere);
        QString strValue = CParamDiff::Number(key.Value());
        if (*key.szUnit)
            strValue += " " + QString::fromUtf8(key.szUnit);
        m_out << key.strKey.leftJustified(28) << " " << strName.leftJustified(44) << " " << strValue << "\n";
    }
    return ExitOk;
}

int CParamsTool::Diff(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("diff"),
                     QStringLiteral("Shows the fields that hold different values in two parameter files, as "
                                    "\"label, axis or laser: A → B unit\". Exit code 0 when they hold the same "
                                    "values, 1 when they differ."),
                     {{QStringLiteral("A"), QStringLiteral("The first parameter file.")},
                      {QStringLiteral("B"), QStringLiteral("The second parameter file.")}},
                     true);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 2, 2, m_out, complain))
        return n < 0 ? ExitOk : n;
    const QString strA = line.parser.positionalArguments().at(1);
    const QString strB = line.parser.positionalArguments().at(2);
    FactoryParams a;
    FactoryParams b;
    if (!Load(strA, a) || !Load(strB, b))
        return ExitFailed;
    const QList<SParamDifference> differences = CParamDiff::Compare(a, b);
    if (line.parser.isSet(line.json)) {
        QJsonArray list;
        for (const SParamDifference& d : differences) {
            QJsonObject field = JsonField(d.strKey, d.strLabel, d.strWhere, d.strUnit);
            field.insert("a", JsonNumber(d.dA));
            field.insert("b", JsonNumber(d.dB));
            list << field;
        }
        m_out << QJsonDocument(QJsonObject{{"a", strA}, {"b", strB}, {"differences", list}})
                     .toJson(QJsonDocument::Indented);
    } else {
        for (const SParamDifference& d : differences)
            m_out << d.strKey.leftJustified(28) << " " << CParamDiff::Describe(d) << "\n";
    }
    return differences.isEmpty() ? ExitOk : ExitDifferent;
}

int CParamsTool::Check(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("check"),
                     QStringLiteral("Checks parameter files: the marker, every key present and none unknown, and "
                                    "each value a number of its field's kind and range (switches 0 or 1, the laser "
                                    "count 1 or 2, the laser type 0 to 4, percentages 0 to 100, the other motor and "
                                    "laser values 0 to 1000000; no NaN or infinity anywhere). One line per problem, "
                                    "\"file: key=value: what\"; exit code 0 only when every file is clean."),
                     {{QStringLiteral("FILE..."), QStringLiteral("The parameter files.")}}, false);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    int nProblems = 0;
    const QStringList files = line.parser.positionalArguments().mid(1);
    for (const QString& strPath : files) {
        const QList<SParamProblem> problems = CParamCheck::CheckFile(strPath);
        for (const SParamProblem& problem : problems) {
            m_out << problem.strFile << ": ";
            if (!problem.strKey.isEmpty())
                m_out << problem.strKey << "=" << problem.strValue << ": ";
            m_out << problem.strWhat << "\n";
        }
        if (problems.isEmpty())
            m_out << strPath << ": ok\n";
        nProblems += int(problems.size());
    }
    return nProblems == 0 ? ExitOk : ExitDifferent;
}

int CParamsTool::Set(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("set"),
                     QStringLiteral("Changes values of a parameter file by their keys, each checked against its "
                                    "field's kind and range; nothing is written unless every one is good. The file "
                                    "is written anew, with a fresh CREATE_TIME, and the file it replaces is kept in "
                                    "Backups/ beside it. Prints each change."),
                     {{QStringLiteral("FILE"), QStringLiteral("The parameter file.")},
                      {QStringLiteral("KEY=VALUE..."),
                       QStringLiteral("New values by their file keys, as factoryparams show lists them.")}},
                     false);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 2, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    const QString strPath = line.parser.positionalArguments().at(1);
    FactoryParams record;
    if (!Load(strPath, record))
        return ExitFailed;
    const FactoryParams before = record;
    const QVector<FactoryParamKey> keys = FactoryParamKey::ForRecord(record);
    bool bAllGood = true;
    for (const QString& strAssignment : line.parser.positionalArguments().mid(2)) {
        const QString strKey = strAssignment.section('=', 0, 0).trimmed();
        const QString strValue = strAssignment.section('=', 1);
        const auto key = std::find_if(keys.begin(), keys.end(), [&](const FactoryParamKey& k) { return k.strKey == strKey; });
        if (!strAssignment.contains('=') || key == keys.end()) {
            Complain(!strAssignment.contains('=') ? QStringLiteral("\"%1\" is not KEY=VALUE").arg(strAssignment)
                                                 : QStringLiteral("no key %1 (factoryparams show lists them)").arg(strKey));
            bAllGood = false;
            continue;
        }
        double dValue = 0.0;
        QString strWhy;
        if (!CParamCheck::Parse(*key, strValue, &dValue, &strWhy)) {
            Complain(QStringLiteral("%1=%2: %3").arg(strKey, strValue, strWhy));
            bAllGood = false;
            continue;
        }
        key->SetValue(dValue);
    }
    if (!bAllGood) {
        Complain(QStringLiteral("%1 is unchanged").arg(strPath));
        return ExitFailed;
    }
    QString strError;
    if (!CParamBackups::KeepFile(strPath, CParamBackups::ReasonSave, &strError))
        Complain(QStringLiteral("warning: no backup was kept: %1").arg(strError));
    if (!WriteFactoryParamFile(record, strPath, &strError)) {
        Complain(QStringLiteral("%1: cannot be written (%2); it is unchanged").arg(strPath, strError));
        return ExitFailed;
    }
    for (const SParamDifference& d : CParamDiff::Compare(before, record))
        m_out << d.strKey.leftJustified(28) << " " << CParamDiff::Describe(d) << "\n";
    return ExitOk;
}

int CParamsTool::Fleet(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("fleet"),
                     QStringLiteral("Compares every parameter file under DIR (all folders below it, but not their "
                                    "Backups) with REFERENCE and tells, per field, how many machines differ and "
                                    "which. Files that are no parameter files are named on standard error and "
                                    "left out. Exit code 1 when any machine differs."),
                     {{QStringLiteral("REFERENCE"), QStringLiteral("The parameter file the machines should match.")},
                      {QStringLiteral("DIR"), QStringLiteral("The folder of the machines' parameter files.")}},
                     true);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 2, 2, m_out, complain))
        return n < 0 ? ExitOk : n;
    const QString strReference = line.parser.positionalArguments().at(1);
    const QString strDir = line.parser.positionalArguments().at(2);
    FactoryParams reference;
    if (!Load(strReference, reference))
        return ExitFailed;
    if (!QFileInfo(strDir).isDir()) {
        Complain(QStringLiteral("%1: no such folder").arg(strDir));
        return ExitFailed;
    }

    // Per field, in the file's order: the machines that differ and their values.
    struct Field
    {
        SParamDifference what;
        QList<QPair<QString, double>> machines;
    };
    QMap<int, Field> fields;
    QHash<QString, int> order;
    {
        FactoryParams copy = reference;
        const QVector<FactoryParamKey> keys = FactoryParamKey::ForRecord(copy);
        for (int i = 0; i < keys.size(); ++i)
            order.insert(keys[i].strKey, i);
    }
    const QDir base(QFileInfo(strDir).absoluteFilePath());
    const QString strReferencePath = QFileInfo(strReference).absoluteFilePath();
    int nMachines = 0;
    int nDiffering = 0;
    QStringList skipped;
    QStringList files;
    QDirIterator it(base.absolutePath(), {QStringLiteral("*.ini")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString strPath = it.next();
        const QString strRelative = base.relativeFilePath(strPath);
        if (strRelative.split('/').contains(QStringLiteral("Backups"))
            || QFileInfo(strPath).absoluteFilePath() == strReferencePath)
            continue;
        files << strPath;
    }
    files.sort();
    for (const QString& strPath : files) {
        FactoryParams machine;
        if (ReadFactoryParamFile(machine, strPath) != ParamFileStatus::Loaded) {
            skipped << base.relativeFilePath(strPath);
            continue;
        }
        ++nMachines;
        const QList<SParamDifference> differences = CParamDiff::Compare(reference, machine);
        if (!differences.isEmpty())
            ++nDiffering;
        for (const SParamDifference& d : differences) {
            Field& field = fields[order.value(d.strKey)];
            field.what = d;
            field.machines << qMakePair(base.relativeFilePath(strPath), d.dB);
        }
    }
    if (!skipped.isEmpty())
        Complain(QStringLiteral("skipped %1 file(s) that are no parameter files: %2")
                     .arg(skipped.size())
                     .arg(skipped.join(", ")));

    if (line.parser.isSet(line.json)) {
        QJsonArray list;
        for (const Field& field : fields) {
            QJsonObject object = JsonField(field.what.strKey, field.what.strLabel, field.what.strWhere, field.what.strUnit);
            object.insert("reference", JsonNumber(field.what.dA));
            QJsonArray machines;
            for (const auto& machine : field.machines)
                machines << QJsonObject{{"file", machine.first}, {"value", JsonNumber(machine.second)}};
            object.insert("machines", machines);
            list << object;
        }
        m_out << QJsonDocument(QJsonObject{{"reference", strReference},
                                           {"machines", nMachines},
                                           {"differing", nDiffering},
                                           {"fields", list}})
                     .toJson(QJsonDocument::Indented);
    } else {
        m_out << QStringLiteral("%1 machine(s) compared with %2: %3 differ, in %4 field(s)\n")
                     .arg(nMachines)
                     .arg(strReference)
                     .arg(nDiffering)
                     .arg(fields.size());
        for (const Field& field : fields) {
            const QString strUnit = field.what.strUnit.isEmpty() ? QString() : " " + field.what.strUnit;
            m_out << field.what.strKey << "  " << CParamDiff::Name(field.what) << ": "
                  << QStringLiteral("%1 of %2 machine(s) differ from %3%4\n")
                         .arg(field.machines.size())
                         .arg(nMachines)
                         .arg(CParamDiff::Number(field.what.dA), strUnit);
            for (const auto& machine : field.machines)
                m_out << "    " << machine.first << "  " << CParamDiff::Number(machine.second) << strUnit << "\n";
        }
    }
    return nDiffering == 0 ? ExitOk : ExitDifferent;
}
