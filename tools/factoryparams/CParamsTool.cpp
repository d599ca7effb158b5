#include "CParamsTool.h"

#include "CParamBackups.h"
#include "CDifferenceFilter.h"
#include "CFleetReader.h"
#include "CParamEdit.h"
#include "CParamFileLock.h"
#include "CParamFileText.h"
#include "CParamCheck.h"
#include "CParamDiff.h"
#include "ParamWording.h"
#include "FactoryParamIo.h"
#include "FactoryParamKeys.h"
#include "FactoryParams.h"

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QDateTime>
#include <QRegularExpression>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>


#include <cmath>

#include <sys/stat.h>
#include <unistd.h>

namespace {
QJsonValue JsonNumber(double dValue)
{
    // JSON has no NaN or infinity: those are given as the text the file holds.
    return std::isfinite(dValue) ? QJsonValue(dValue) : QJsonValue(CParamDiff::Number(dValue));
}

QJsonObject JsonField(const QString& strKey, const QString& strLabel, const QString& strWhere, const QString& strUnit)
{
    return QJsonObject{{"key", strKey}, {"label", strLabel}, {"where", strWhere}, {"unit", strUnit}};
}

QJsonObject JsonDifference(const SParamDifference& d)
{
    QJsonObject field = JsonField(d.strKey, d.strLabel, d.strWhere, d.strUnit);
    field.insert("a", d.bMissingA ? QJsonValue() : JsonNumber(d.dA));
    field.insert("b", d.bMissingB ? QJsonValue() : JsonNumber(d.dB));
    if (d.bMissingA)
        field.insert("missingInA", true);
    if (d.bMissingB)
        field.insert("missingInB", true);
    return field;
}

// The text padded to nColumns terminal columns: a wide character (Chinese,
// full-width punctuation) takes two.
QString Padded(const QString& strText, int nColumns)
{
    int nWidth = 0;
    for (const QChar c : strText) {
        const char16_t u = c.unicode();
        const bool bWide = (u >= 0x1100 && u <= 0x115F) || (u >= 0x2E80 && u <= 0xA4CF) || (u >= 0xAC00 && u <= 0xD7A3)
            || (u >= 0xF900 && u <= 0xFAFF) || (u >= 0xFE30 && u <= 0xFE4F) || (u >= 0xFF00 && u <= 0xFF60)
            || (u >= 0xFFE0 && u <= 0xFFE6);
        nWidth += bWide ? 2 : 1;
    }
    return nWidth >= nColumns ? strText : strText + QString(nColumns - nWidth, QLatin1Char(' '));
}

// A parser with the tool's own --help. arguments: name and description of each
// positional argument; the first is shown after the command's name.
struct CommandLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, ParamWording("Show this help.")};
    QCommandLineOption json{QStringLiteral("json"), ParamWording("Answer in JSON, for another program.")};
    QCommandLineOption ignore{QStringLiteral("ignore"),
                              ParamWording("Leave out the keys that match KEY-PATTERN (a shell wildcard, e.g. "
                                             "MOTOR_PULSE_PER_MM_*); may be given more than once."),
                              QStringLiteral("KEY-PATTERN")};
    QCommandLineOption tolerance{QStringLiteral("tolerance"),
                                 ParamWording("Values of the keys that match KEY-PATTERN (every key without one) "
                                                "count as equal within VALUE; may be given more than once."),
                                 QStringLiteral("[KEY-PATTERN=]VALUE")};
    QCommandLineOption filesFrom{QStringLiteral("files-from"),
                                 ParamWording("Also the files or folders listed in LIST, one per line (- reads "
                                                "standard input)."),
                                 QStringLiteral("LIST")};

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

bool CParamsTool::Load(const CToolInputs::SInput& input, FactoryParams& record, QSet<QString>* pMissing)
{
    if (!input.strWhy.isEmpty()) {
        Complain(QStringLiteral("%1: %2").arg(input.strName, input.strWhy));
        return false;
    }
    const ParamFileStatus status = ReadFactoryParamFile(record, input.strPath, pMissing);
    if (status == ParamFileStatus::Loaded)
        return true;
    Complain(QStringLiteral("%1: %2").arg(input.strName, ParamFileProblem(input.strPath, status)));
    return false;
}

namespace {
// The tool's own command line: options before the command, then the command
// and its arguments, which the command parses itself.
struct ToolLine
{
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, ParamWording("Show this help.")};
    QCommandLineOption version{{"v", "version"}, ParamWording("Show the version.")};

    ToolLine()
    {
        parser.setApplicationDescription(ParamWording(
    "Reads, compares, checks and changes FactoryMgr parameter files.\n"
    "\n"
    "Commands:\n"
    "  show FILE [--json]           every field: label, axis or laser, unit, value\n"
    "  diff A B [--json]            the fields that differ (exit code 1 when any do)\n"
    "  check FILE...                the marker, the keys and every value against its range\n"
    "  set FILE KEY=VALUE...        change values by their file keys; the old file is kept in Backups/\n"
    "  fleet REFERENCE DIR|FILE...  every parameter file under DIR, or each FILE, against REFERENCE\n"
    "  apply MODEL DIR|FILE...      the model's values into many machines' files (--ignore keeps fields)\n"
    "\n"
    "factoryparams COMMAND --help tells more. Exit codes: 0 done (nothing different or wrong),\n"
    "1 differences or problems found, 2 the command could not do its work."));
        parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
        parser.addOption(help);
        parser.addOption(version);
        parser.addPositionalArgument(QStringLiteral("COMMAND"), ParamWording("show, diff, check, set, fleet or apply."),
                                     ParamWording("COMMAND [arguments]"));
    }

    QString HelpText() const
    {
        QString strText = parser.helpText();
        strText.replace(QCoreApplication::arguments().constFirst(), QStringLiteral("factoryparams"));
        return strText;
    }
};
}

bool CParamsTool::GatherInputs(const QCommandLineParser& parser, const QCommandLineOption& filesFrom, int nFirst,
                               CToolInputs& inputs)
{
    const QStringList positional = parser.positionalArguments();
    if (positional.size() <= nFirst && !parser.isSet(filesFrom)) {
        Complain(ParamWording("%1 needs files or folders to read, or --files-from LIST; see factoryparams %1 --help")
                     .arg(positional.first()));
        return false;
    }
    for (const QString& strArgument : positional.mid(nFirst))
        inputs.Add(strArgument, true);
    QString strWhy;
    if (parser.isSet(filesFrom) && !inputs.AddListFrom(parser.value(filesFrom), &strWhy)) {
        Complain(strWhy);
        return false;
    }
    return true;
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
    if (strCommand == "apply")
        return Apply(command);
    Complain(ParamWording("no command \"%1\"").arg(strCommand));
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
        complain(ParamWording("%1 takes %2; see factoryparams %3 --help")
                     .arg(arguments.first(),
                          nMin == nMax ? ParamWording("%1 argument(s)").arg(nMin)
                                       : ParamWording("at least %1 argument(s)").arg(nMin),
                          arguments.first()));
        return CParamsTool::ExitFailed;
    }
    return 0;
}
}

namespace {
// The command's --ignore and (where it has one) --tolerance; false, said,
// when they are not ones.
bool TakeFilter(const CommandLine& line, CDifferenceFilter& filter, const std::function<void(const QString&)>& complain,
                bool bTolerance = true)
{
    QString strWhy;
    if (filter.Set(line.parser.values(line.ignore), bTolerance ? line.parser.values(line.tolerance) : QStringList(),
                   &strWhy))
        return true;
    complain(strWhy);
    return false;
}
}

int CParamsTool::Show(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("show"),
                     ParamWording("Shows every field of a parameter file, as the plug-in reads it: its key, "
                                    "its label in the settings dialog, the axis or laser, the unit and the value. "
                                    "A key the file lacks shows the value the plug-in puts in its place, marked "
                                    "\"missing\". FILE - reads standard input."),
                     {{QStringLiteral("FILE"), ParamWording("The parameter file.")}}, true);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, 1, m_out, complain))
        return n < 0 ? ExitOk : n;
    CToolInputs inputs;
    inputs.Add(line.parser.positionalArguments().at(1), false);
    const CToolInputs::SInput& input = inputs.Inputs().first();
    FactoryParams record;
    QSet<QString> missing;
    if (!Load(input, record, &missing))
        return ExitFailed;
    const QVector<FactoryParamKey>& keys = FactoryParamKey::File();
    if (line.parser.isSet(line.json)) {
        QJsonArray fields;
        for (const FactoryParamKey& key : keys) {
            QJsonObject field = JsonField(key.strKey, ParamWording(key.szLabel), key.Where().isEmpty() ? QString() : ParamWording(key.Where()),
                                          QString::fromUtf8(key.szUnit));
            field.insert("section", key.strSection);
            field.insert("value", JsonNumber(key.Value(record)));
            if (key.dStoredPerShown != 1.0)
                field.insert("shown", JsonNumber(key.ToShown(key.Value(record))));
            if (missing.contains(key.strKey))
                field.insert("missing", true);
            fields << field;
        }
        m_out << QJsonDocument(QJsonObject{{"file", input.strName}, {"fields", fields}}).toJson(QJsonDocument::Indented);
        return ExitOk;
    }
    for (const FactoryParamKey& key : keys) {
        const QString strWhere = key.Where();
        const QString strName = ParamWording(key.szLabel) + (strWhere.isEmpty() ? QString() : ", " + ParamWording(strWhere));
        // As the dialog shows it, in the unit its label names.
        QString strValue = CParamDiff::Number(key.ToShown(key.Value(record)));
        if (*key.szUnit)
            strValue += " " + QString::fromUtf8(key.szUnit);
        if (key.dStoredPerShown != 1.0)
            strValue += ParamWording(" (stored %1)").arg(CParamDiff::Number(key.Value(record)));
        if (missing.contains(key.strKey))
            strValue += ParamWording("  (missing)");
        m_out << key.strKey.leftJustified(28) << " " << Padded(strName, 44) << " " << strValue << "\n";
    }
    return ExitOk;
}

int CParamsTool::Diff(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("diff"),
                     ParamWording("Shows the fields that hold different values in two parameter files, as "
                                    "\"label, axis or laser: A → B unit\"; a key one file lacks is a difference "
                                    "(\"(missing)\"). Exit code 0 when they hold the same values, 1 when they "
                                    "differ, 2 when either cannot be read. A or B - reads standard input."),
                     {{QStringLiteral("A"), ParamWording("The first parameter file.")},
                      {QStringLiteral("B"), ParamWording("The second parameter file.")}},
                     true);
    line.parser.addOption(line.ignore);
    line.parser.addOption(line.tolerance);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 2, 2, m_out, complain))
        return n < 0 ? ExitOk : n;
    CDifferenceFilter filter;
    if (!TakeFilter(line, filter, complain))
        return ExitFailed;
    CToolInputs inputs;
    inputs.Add(line.parser.positionalArguments().at(1), false);
    inputs.Add(line.parser.positionalArguments().at(2), false);
    FactoryParams a;
    FactoryParams b;
    QSet<QString> missingA;
    QSet<QString> missingB;
    const bool bA = Load(inputs.Inputs().at(0), a, &missingA);
    const bool bB = Load(inputs.Inputs().at(1), b, &missingB);
    if (!bA || !bB)
        return ExitFailed;
    const QList<SParamDifference> differences = filter.Counted(CParamDiff::Compare(a, b, {}, missingA, missingB));
    if (line.parser.isSet(line.json)) {
        QJsonArray list;
        for (const SParamDifference& d : differences)
            list << JsonDifference(d);
        m_out << QJsonDocument(QJsonObject{{"a", inputs.Inputs().at(0).strName},
                                           {"b", inputs.Inputs().at(1).strName},
                                           {"differences", list}})
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
                     ParamWording("Checks parameter files: the marker, every key present once and none unknown, "
                                    "CREATE_TIME a time, and each value a number of its field's kind and range "
                                    "(switches 0 or 1, the laser count 1 or 2, the laser type 0 to 4, moving parts "
                                    "0 to 3, machine zero 0 or 1, percentages 0 to 100, every other value 0 to "
                                    "1000000; no NaN or infinity anywhere), written as the plug-in reads it. One "
                                    "line per problem, \"file: key=value: what\". A folder stands for every .ini "
                                    "file below it (not its Backups). Exit code 0 when every file is clean, 1 when "
                                    "any has a problem, 2 when any cannot be read."),
                     {{QStringLiteral("FILE..."), ParamWording("The parameter files or folders; - reads standard input.")}},
                     true);
    line.parser.addOption(line.filesFrom);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 0, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    CToolInputs inputs;
    if (!GatherInputs(line.parser, line.filesFrom, 1, inputs))
        return ExitFailed;
    bool bUnreadable = false;
    int nProblems = 0;
    QJsonArray files;
    for (const CToolInputs::SInput& input : inputs.Inputs()) {
        QList<SParamProblem> problems;
        if (!input.strWhy.isEmpty()) {
            problems << SParamProblem{input.strName, QString(), QString(), input.strWhy};
            bUnreadable = true;
        } else {
            problems = CParamCheck::CheckFile(input.strPath);
            bUnreadable = bUnreadable || (problems.size() == 1 && problems.first().bUnreadable);
        }
        nProblems += int(problems.size());
        if (line.parser.isSet(line.json)) {
            QJsonArray list;
            for (const SParamProblem& problem : problems)
                list << QJsonObject{{"key", problem.strKey}, {"value", problem.strValue}, {"problem", problem.strWhat}};
            files << QJsonObject{{"file", input.strName}, {"ok", problems.isEmpty()}, {"problems", list}};
            continue;
        }
        for (const SParamProblem& problem : problems) {
            if (problem.bUnreadable || problem.strKey.isEmpty()) {
                Complain(QStringLiteral("%1: %2%3").arg(input.strName,
                                                       problem.strKey.isEmpty() ? QString()
                                                                                : problem.strKey + "=" + problem.strValue + ": ",
                                                       problem.strWhat));
                continue;
            }
            m_out << input.strName << ": ";
            if (!problem.strKey.isEmpty())
                m_out << problem.strKey << "=" << problem.strValue << ": ";
            m_out << problem.strWhat << "\n";
        }
        if (problems.isEmpty())
            m_out << ParamWording("%1: ok").arg(input.strName) << "\n";
    }
    if (line.parser.isSet(line.json))
        m_out << QJsonDocument(QJsonObject{{"files", files}}).toJson(QJsonDocument::Indented);
    if (inputs.Inputs().isEmpty()) {
        Complain(ParamWording("no parameter files were found"));
        return ExitFailed;
    }
    return bUnreadable ? ExitFailed : nProblems == 0 ? ExitOk : ExitDifferent;
}

int CParamsTool::Set(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("set"),
                     ParamWording("Changes values of a parameter file by their keys, each checked against its "
                                    "field's kind and range; nothing is written unless every one is good. Only the "
                                    "lines of those keys change: keys and sections the tool does not know, comments "
                                    "and CREATE_TIME stay as they are. A file that does not pass check is refused, "
                                    "with its problems, unless --repair is given. A link is followed and its target "
                                    "changed, keeping its mode and owner; a read-only file is refused. The file it "
                                    "replaces is kept in Backups/ beside it; a set that changes nothing writes "
                                    "nothing. Prints each change. Exit code 0 done, 2 nothing was changed."),
                     {{QStringLiteral("FILE"), ParamWording("The parameter file.")},
                      {QStringLiteral("KEY=VALUE..."),
                       ParamWording("New values by their file keys, as factoryparams show lists them.")}},
                     false);
    const QCommandLineOption repair(QStringLiteral("repair"),
                                    ParamWording("Fill in missing keys (with the value the plug-in reads for "
                                                   "them), bring values into their range, write values as the "
                                                   "plug-in reads them, keep only the last of a key given twice and "
                                                   "give CREATE_TIME a time, naming each field changed."));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"), ParamWording("Show what would change; write nothing."));
    line.parser.addOption(repair);
    line.parser.addOption(dryRun);
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    const QString strPath = line.parser.positionalArguments().at(1);
    const QStringList assignments = line.parser.positionalArguments().mid(2);
    if (assignments.isEmpty() && !line.parser.isSet(repair)) {
        Complain(ParamWording("set takes KEY=VALUE... (or --repair); see factoryparams set --help"));
        return ExitFailed;
    }
    if (strPath == QLatin1String("-")) {
        Complain(ParamWording("set changes a file; standard input cannot be changed"));
        return ExitFailed;
    }
    return ChangeFile(strPath, strPath, assignments, line.parser.isSet(repair), line.parser.isSet(dryRun), QString());
}

int CParamsTool::ChangeFile(const QString& strPath, const QString& strName, const QStringList& assignments, bool bRepair,
                            bool bDryRun, const QString& strPrefix)
{
    // A link is followed: its target is the file that changes.
    const QFileInfo info(strPath);
    const QString strTarget = info.isSymLink() ? info.canonicalFilePath() : strPath;
    // Read, changed and written under one lock: a host or another set
    // waits, and no change is lost between the reading and the writing.
    const CParamFileLock lock(strTarget.isEmpty() ? strPath : strTarget);
    if (!lock.Taken()) {
        Complain(ParamWording("%1: %2 has been using it for 10 s; it is unchanged").arg(strName, lock.Holder()));
        return ExitFailed;
    }
    CParamEdit edit(strTarget.isEmpty() ? strPath : strTarget);
    if (!edit.Unreadable().isEmpty()) {
        Complain(QStringLiteral("%1: %2").arg(strName, edit.Unreadable()));
        return ExitFailed;
    }
    bool bAllGood = true;
    for (const QString& strAssignment : assignments) {
        QString strWhy;
        if (!edit.Assign(strAssignment, &strWhy)) {
            Complain(strWhy);
            bAllGood = false;
        }
    }
    if (!bAllGood) {
        Complain(ParamWording("%1 is unchanged").arg(strName));
        return ExitFailed;
    }
    QStringList repaired;
    if (bRepair) {
        QStringList left;
        repaired = edit.Repair(&left);
        for (const QString& strLeft : left)
            Complain(ParamWording("%1: %2: cannot be repaired").arg(strName, strLeft));
        if (!left.isEmpty()) {
            Complain(ParamWording("%1 is unchanged").arg(strName));
            return ExitFailed;
        }
    } else if (!edit.Problems().isEmpty()) {
        for (const SParamProblem& problem : edit.Problems())
            Complain(QStringLiteral("%1: %2%3").arg(strName,
                                                   problem.strKey.isEmpty() ? QString()
                                                                            : problem.strKey + "=" + problem.strValue + ": ",
                                                   problem.strWhat));
        Complain(ParamWording("%1 is unchanged: it does not pass check (--repair fills and fixes what it can)")
                     .arg(strName));
        return ExitFailed;
    }
    QString strError;
    if (!edit.Verify(&strError)) {
        Complain(ParamWording("%1: %2; it is unchanged").arg(strName, strError));
        return ExitFailed;
    }
    const QString strWould = bDryRun ? ParamWording("would change: ") : QString();
    if (!edit.Changed()) {
        m_out << (bDryRun ? ParamWording("%1: would not change (it holds these values already)")
                          : ParamWording("%1: unchanged (it holds these values already)"))
                     .arg(strName)
              << "\n";
        return ExitOk;
    }
    if (!bDryRun) {
        // Read-only by its mode, whoever runs this (root may write anything).
        struct stat mode {};
        if (::stat(QFile::encodeName(strTarget).constData(), &mode) != 0 || (mode.st_mode & 0222) == 0
            || ::access(QFile::encodeName(strTarget).constData(), W_OK) != 0) {
            Complain(ParamWording("%1: read-only; it is unchanged").arg(strName));
            return ExitFailed;
        }
        if (!CParamBackups::KeepFile(strTarget, CParamBackups::ReasonSave, &strError))
            Complain(ParamWording("warning: no backup was kept: %1").arg(strError));
        if (!ReplaceParamFileBytes(strTarget, edit.Bytes(), &strError)) {
            Complain(ParamWording("%1: cannot be written (%2); it is unchanged").arg(strName, strError));
            return ExitFailed;
        }
    }
    for (const QString& strRepaired : repaired)
        m_out << strPrefix << strWould << ParamWording("repaired %1").arg(strRepaired) << "\n";
    const QSet<QString> repairedKeys = [&repaired] {
        QSet<QString> keys;
        for (const QString& strRepaired : repaired)
            keys << strRepaired.section(':', 0, 0);
        return keys;
    }();
    for (const SParamDifference& d : edit.Changes())
        if (!repairedKeys.contains(d.strKey))
            m_out << strPrefix << strWould << d.strKey.leftJustified(28) << " " << CParamDiff::Describe(d) << "\n";
    return ExitOk;
}

int CParamsTool::Fleet(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("fleet"),
                     ParamWording("Compares every parameter file under DIR (all folders below it, but not their "
                                    "Backups), or each FILE given, with REFERENCE and tells, per field, how many "
                                    "machines differ and which; a key a machine's file lacks is a difference. A "
                                    "file that cannot be read, or is no parameter file, is named with its reason on "
                                    "standard error (and under \"skipped\" in JSON). Exit code 0 when every "
                                    "machine matches, 1 when any differs, 2 when any file could not be read or "
                                    "none was found."),
                     {{QStringLiteral("REFERENCE"), ParamWording("The parameter file the machines should match.")},
                      {QStringLiteral("DIR|FILE..."), ParamWording("The machines' parameter files, or folders of them.")}},
                     true);
    const QCommandLineOption perMachine(QStringLiteral("per-machine"),
                                        ParamWording("One line per machine, as each is read: pass, the fields it "
                                                       "differs in, or why it could not be read."));
    const QCommandLineOption csv(QStringLiteral("csv"),
                                 ParamWording("One CSV row per machine (file, result, differences, reason), for a "
                                                "spreadsheet."));
    const QCommandLineOption report(QStringLiteral("report"),
                                    ParamWording("A report to sign: the date, the tool's version, the reference and "
                                                   "its SHA-256, the options, every machine with pass or fail and "
                                                   "every file that could not be read with its reason."));
    const QCommandLineOption quiet(QStringLiteral("quiet"),
                                   ParamWording("Nothing on standard output: the exit code says it (files that "
                                                  "cannot be read are still named on standard error)."));
    line.parser.addOptions({line.filesFrom, line.ignore, line.tolerance, perMachine, csv, report, quiet});
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    CDifferenceFilter filter;
    if (!TakeFilter(line, filter, complain))
        return ExitFailed;
    CToolInputs referenceInput;
    referenceInput.Add(line.parser.positionalArguments().at(1), false);
    FactoryParams reference;
    if (!Load(referenceInput.Inputs().first(), reference, nullptr))
        return ExitFailed;
    const QString strReference = referenceInput.Inputs().first().strName;
    CToolInputs inputs;
    if (!GatherInputs(line.parser, line.filesFrom, 2, inputs))
        return ExitFailed;
    const bool bJson = line.parser.isSet(line.json);
    const bool bCsv = line.parser.isSet(csv);
    const bool bReport = line.parser.isSet(report);
    const bool bPerMachine = line.parser.isSet(perMachine) || bReport;
    const bool bQuiet = line.parser.isSet(quiet);

    if (bReport && !bQuiet) {
        QFile file(referenceInput.Inputs().first().strPath);
        QCryptographicHash sha(QCryptographicHash::Sha256);
        if (file.open(QIODevice::ReadOnly))
            sha.addData(&file);
        const QStringList ignored = line.parser.values(line.ignore);
        const QStringList tolerances = line.parser.values(line.tolerance);
        m_out << ParamWording("factoryparams fleet report") << "\n"
              << ParamWording("date: %1").arg(QDateTime::currentDateTime().toString(Qt::ISODate)) << "\n"
              << ParamWording("tool: factoryparams %1").arg(QCoreApplication::applicationVersion()) << "\n"
              << ParamWording("reference: %1 (SHA-256 %2)").arg(strReference, QString::fromLatin1(sha.result().toHex()))
              << "\n"
              << ParamWording("ignored: %1").arg(ignored.isEmpty() ? ParamWording("nothing") : ignored.join(", ")) << "\n"
              << ParamWording("tolerances: %1").arg(tolerances.isEmpty() ? ParamWording("none") : tolerances.join(", "))
              << "\n";
    }
    if (bCsv && !bQuiet)
        m_out << "file,result,differences,reason\n";

    // Per field, in the file's order: the machines that differ and their values.
    struct Field
    {
        SParamDifference what;
        QList<QPair<QString, SParamDifference>> machines;
    };
    QMap<int, Field> fields;
    QHash<QString, int> order;
    for (int i = 0; i < FactoryParamKey::File().size(); ++i)
        order.insert(FactoryParamKey::File()[i].strKey, i);
    const auto csvField = [](QString strText) {
        return strText.contains(QRegularExpression(QStringLiteral("[\",\n]")))
            ? "\"" + strText.replace('"', QStringLiteral("\"\"")) + "\""
            : strText;
    };
    int nMachines = 0;
    int nDiffering = 0;
    QList<QPair<QString, QString>> skipped;
    QJsonArray perMachineJson;
    const QList<CToolInputs::SInput>& files = inputs.Inputs();
    CFleetReader reader(reference, referenceInput.Inputs().first().strPath, files, filter);
    for (qsizetype i = 0; i < files.size(); ++i) {
        const CFleetReader::SResult& result = reader.Wait(i);
        const QString& strName = files[i].strName;
        if (result.bReference)
            continue;
        QStringList changed;
        for (const SParamDifference& d : result.differences)
            changed << QStringLiteral("%1=%2").arg(d.strKey, d.bMissingB ? ParamWording("(missing)") : CParamDiff::Number(d.dB));
        if (!result.strWhy.isEmpty()) {
            skipped << qMakePair(strName, result.strWhy);
            Complain(QStringLiteral("%1: %2").arg(strName, result.strWhy));
        } else {
            ++nMachines;
            if (!result.differences.isEmpty())
                ++nDiffering;
            for (const SParamDifference& d : result.differences) {
                Field& field = fields[order.value(d.strKey)];
                field.what = d;
                field.machines << qMakePair(strName, d);
            }
        }
        const QString strResult = !result.strWhy.isEmpty() ? QStringLiteral("unread")
            : result.differences.isEmpty()                 ? QStringLiteral("pass")
                                                           : QStringLiteral("fail");
        if (bQuiet)
            continue;
        if (bJson && bPerMachine) {
            QJsonObject machine{{"file", strName}, {"result", strResult}};
            if (!result.strWhy.isEmpty())
                machine.insert("reason", result.strWhy);
            else
                machine.insert("differences", QJsonArray::fromStringList(changed));
            perMachineJson << machine;
        } else if (bCsv) {
            m_out << csvField(strName) << "," << strResult << "," << csvField(changed.join(' ')) << ","
                  << csvField(result.strWhy) << "\n";
        } else if (bPerMachine) {
            m_out << strName << ": "
                  << (!result.strWhy.isEmpty()       ? ParamWording("not read (%1)").arg(result.strWhy)
                          : result.differences.isEmpty() ? ParamWording("pass")
                                                         : ParamWording("fail, %1 field(s): %2")
                                                               .arg(result.differences.size())
                                                               .arg(changed.join(", ")))
                  << "\n";
            m_out.flush();
        }
    }

    const QString strSummary =
        ParamWording("%1 machine(s) compared with %2: %3 differ, in %4 field(s)")
            .arg(nMachines)
            .arg(strReference)
            .arg(nDiffering)
            .arg(fields.size())
        + (skipped.isEmpty() ? QString()
                             : ParamWording("; %1 file(s) could not be read (named on standard error)").arg(skipped.size()));
    if (bQuiet) {
        // Nothing on standard output.
    } else if (bJson) {
        QJsonArray list;
        for (const Field& field : fields) {
            QJsonObject object = JsonField(field.what.strKey, field.what.strLabel, field.what.strWhere, field.what.strUnit);
            object.insert("reference", JsonNumber(field.what.dA));
            QJsonArray machines;
            for (const auto& [strName, d] : field.machines) {
                QJsonObject machine{{"file", strName}, {"value", JsonNumber(d.dB)}};
                if (d.bMissingB)
                    machine.insert("missing", true);
                machines << machine;
            }
            object.insert("machines", machines);
            list << object;
        }
        QJsonArray skippedList;
        for (const auto& [strName, strWhy] : skipped)
            skippedList << QJsonObject{{"file", strName}, {"reason", strWhy}};
        QJsonObject document{{"reference", strReference},
                             {"machines", nMachines},
                             {"differing", nDiffering},
                             {"fields", list},
                             {"skipped", skippedList}};
        if (bPerMachine)
            document.insert("perMachine", perMachineJson);
        m_out << QJsonDocument(document).toJson(QJsonDocument::Indented);
    } else if (bCsv) {
        // The rows are the answer.
    } else if (bPerMachine) {
        m_out << strSummary << "\n";
    } else {
        m_out << strSummary << "\n";
        for (const Field& field : fields) {
            m_out << field.what.strKey << "  " << CParamDiff::Name(field.what) << ": "
                  << ParamWording("%1 of %2 machine(s) differ from %3\n")
                         .arg(field.machines.size())
                         .arg(nMachines)
                         .arg(CParamDiff::Shown(field.what, false));
            for (const auto& [strName, d] : field.machines)
                m_out << "    " << strName << "  " << CParamDiff::Shown(d, true) << "\n";
        }
    }
    if (nMachines == 0 && skipped.isEmpty())
        Complain(ParamWording("no parameter files were found"));
    return !skipped.isEmpty() || nMachines == 0 ? ExitFailed : nDiffering == 0 ? ExitOk : ExitDifferent;
}

int CParamsTool::Apply(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("apply"),
                     ParamWording("Writes the model's values into every parameter file under DIR (not the "
                                    "Backups), or each FILE, as set does for each: only the lines of the fields "
                                    "that differ change, under the file's lock, with a backup; a file that does not "
                                    "pass check is refused unless --repair is given. Fields matching --ignore "
                                    "(the calibrated steps, for example) keep each machine's own value. Prints each "
                                    "change after the file's name. Exit code 0 when every file holds the model's "
                                    "values, 2 when any could not be read or changed."),
                     {{QStringLiteral("MODEL"), ParamWording("The parameter file whose values the machines take.")},
                      {QStringLiteral("DIR|FILE..."), ParamWording("The machines' parameter files, or folders of them.")}},
                     false);
    const QCommandLineOption repair(QStringLiteral("repair"),
                                    ParamWording("Fill and fix what check finds in a machine's file, as set "
                                                   "--repair does, instead of refusing it."));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"), ParamWording("Show what would change; write nothing."));
    line.parser.addOptions({line.filesFrom, line.ignore, repair, dryRun});
    const auto complain = [this](const QString& s) { Complain(s); };
    if (const int n = ParseCommand(line, arguments, 1, -1, m_out, complain))
        return n < 0 ? ExitOk : n;
    CDifferenceFilter filter;
    if (!TakeFilter(line, filter, complain, false))
        return ExitFailed;
    CToolInputs modelInput;
    modelInput.Add(line.parser.positionalArguments().at(1), false);
    FactoryParams model;
    QSet<QString> missing;
    if (!Load(modelInput.Inputs().first(), model, &missing))
        return ExitFailed;
    if (!missing.isEmpty()) {
        Complain(ParamWording("%1: the model lacks %2; nothing was changed")
                     .arg(modelInput.Inputs().first().strName, QStringList(missing.begin(), missing.end()).join(", ")));
        return ExitFailed;
    }
    CToolInputs inputs;
    if (!GatherInputs(line.parser, line.filesFrom, 2, inputs))
        return ExitFailed;
    // Every field of the model but the ignored ones.
    QStringList assignments;
    for (const FactoryParamKey& key : FactoryParamKey::File()) {
        SParamDifference field;
        field.strKey = key.strKey;
        if (filter.Counts(field))
            assignments << key.strKey + "=" + (key.IsDouble() ? CParamDiff::Number(key.Value(model)) : QString::number(qint64(key.Value(model))));
    }
    struct stat modelStat {};
    const bool bModelStat = ::stat(QFile::encodeName(modelInput.Inputs().first().strPath).constData(), &modelStat) == 0;
    int nExit = ExitOk;
    for (const CToolInputs::SInput& input : inputs.Inputs()) {
        if (!input.strWhy.isEmpty() || input.bCopy) {
            Complain(QStringLiteral("%1: %2").arg(input.strName, input.bCopy ? ParamWording("cannot be changed in place")
                                                                             : input.strWhy));
            nExit = ExitFailed;
            continue;
        }
        struct stat fileStat {};
        if (bModelStat && ::stat(QFile::encodeName(input.strPath).constData(), &fileStat) == 0
            && fileStat.st_dev == modelStat.st_dev && fileStat.st_ino == modelStat.st_ino)
            continue;
        if (ChangeFile(input.strPath, input.strName, assignments, line.parser.isSet(repair), line.parser.isSet(dryRun),
                       input.strName + ": ")
            != ExitOk)
            nExit = ExitFailed;
    }
    if (inputs.Inputs().isEmpty()) {
        Complain(ParamWording("no parameter files were found"));
        return ExitFailed;
    }
    return nExit;
}
