#include "TestMain.h"

#include <sys/stat.h>

#include "CLogWriter.h"
#include "ILog.h"
#include "TestThread.h"

#include <QRegularExpression>

#include <memory>
#include <unistd.h>

class TestLog : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void writesToTheUserDataDirectoryByDefault();
    void formatsPrintfStyle();
    void writesPlainLines();
    void nullTextAndFormatAreHarmless();
    void longLinesAreKeptWhole();
    void rotatesBySize();
    void linesFromManyThreadsStayWhole();
    void unwritableDirectoryIsHarmless();
    void copiesToStderrWhenAsked();
    void aPipeInPlaceOfTheLogIsNeverWaitedOn();
    void eachFileBeginsWithTheVersion();

private:
    // The lines of a log file but for the version lines.
    static QStringList Lines(const QString& strPath);
    static QStringList AllLines(const QString& strPath);
    QTemporaryDir m_dir;
};

namespace {
const QRegularExpression kVersionLine(QStringLiteral(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[0\] FactoryMgr %1, process %2$)")
                                          .arg(QRegularExpression::escape(QStringLiteral(FACTORYMGR_VERSION)))
                                          .arg(QCoreApplication::applicationPid()));
}

QStringList TestLog::AllLines(const QString& strPath)
{
    QFile file(strPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

QStringList TestLog::Lines(const QString& strPath)
{
    QStringList lines = AllLines(strPath);
    lines.removeIf([](const QString& strLine) { return kVersionLine.match(strLine).hasMatch(); });
    return lines;
}

void TestLog::init()
{
    CLogWriter::GetInstance()->SetDirectory(m_dir.path() + "/" + QTest::currentTestFunction());
    CLogWriter::GetInstance()->SetMaxFileSize(2 * 1024 * 1024);
}

void TestLog::writesToTheUserDataDirectoryByDefault()
{
    CLogWriter::GetInstance()->SetDirectory(QString());
    const QString strPath = CLogWriter::GetInstance()->FilePath();
    QVERIFY2(strPath.startsWith(qEnvironmentVariable("XDG_CONFIG_HOME")), qPrintable(strPath));
    QVERIFY(strPath.endsWith("/Quorvane/Resources/Log/Quorvane.log"));

    ILog_WriteLogF(0, "%s was clicked.", "tableWidget_motor");
    const QStringList lines = Lines(strPath);
    QCOMPARE(lines.size(), 1);
    static const QRegularExpression kLine(
        R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[0\] tableWidget_motor was clicked\.$)");
    QVERIFY2(kLine.match(lines[0]).hasMatch(), qPrintable(lines[0]));
}

void TestLog::formatsPrintfStyle()
{
    ILog_WriteLogF(1, "HMI update erro code:%d", 1005);
    ILog_WriteLogF(1, "%s %.2f %05d", "ratio", 1.005, 42);
    const QStringList lines = Lines(CLogWriter::GetInstance()->FilePath());
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].endsWith("[1] HMI update erro code:1005"));
    QVERIFY(lines[1].endsWith("[1] ratio 1.00 00042") || lines[1].endsWith("[1] ratio 1.01 00042"));
}

void TestLog::writesPlainLines()
{
    ILog_WriteLog(1, "Cannot load library Resolution: (not found)");
    ILog_WriteLog(1, "already ends with a break\n");
    const QStringList lines = Lines(CLogWriter::GetInstance()->FilePath());
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].endsWith("[1] Cannot load library Resolution: (not found)"));
    QVERIFY(lines[1].endsWith("[1] already ends with a break"));
}

void TestLog::nullTextAndFormatAreHarmless()
{
    ILog_WriteLog(2, nullptr);
    ILog_WriteLogF(2, nullptr);
    const QStringList lines = Lines(CLogWriter::GetInstance()->FilePath());
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].endsWith("[2] "));
}

void TestLog::longLinesAreKeptWhole()
{
    const QByteArray text(20000, 'x');
    ILog_WriteLogF(0, "%s", text.constData());
    const QStringList lines = Lines(CLogWriter::GetInstance()->FilePath());
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].endsWith(QString(20000, 'x')));
}

void TestLog::rotatesBySize()
{
    CLogWriter* pWriter = CLogWriter::GetInstance();
    pWriter->SetMaxFileSize(1000);
    pWriter->SetKeptFiles(2);
    for (int i = 0; i < 100; ++i)
        ILog_WriteLogF(0, "line %03d of the rotation test", i);
    const QString strPath = pWriter->FilePath();
    QVERIFY(QFileInfo(strPath).size() <= 1000);
    QVERIFY(QFileInfo::exists(strPath + ".1"));
    QVERIFY(QFileInfo::exists(strPath + ".2"));
    QVERIFY(!QFileInfo::exists(strPath + ".3"));
    // The newest line is in the current file, the ones before it in .1.
    QVERIFY(Lines(strPath).last().endsWith("line 099 of the rotation test"));
    const QStringList older = Lines(strPath + ".1");
    QVERIFY(!older.isEmpty());
    static const QRegularExpression kNumber(R"(line (\d+) of)");
    const int nFirstCurrent = kNumber.match(Lines(strPath).first()).captured(1).toInt();
    QVERIFY(nFirstCurrent > 0);
    QVERIFY(older.last().endsWith(QStringLiteral("line %1 of the rotation test").arg(nFirstCurrent - 1, 3, 10, QChar('0'))));
    pWriter->SetKeptFiles(3);
}

void TestLog::linesFromManyThreadsStayWhole()
{
    const int kThreads = 8;
    const int kLines = 200;
    std::vector<std::unique_ptr<TestThread>> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back(std::make_unique<TestThread>([t] {
            for (int i = 0; i < kLines; ++i)
                ILog_WriteLogF(1, "thread %d line %d end", t, i);
        }));
        threads.back()->Start();
    }
    for (auto& thread : threads)
        QVERIFY(thread->Wait(30000));

    const QStringList lines = Lines(CLogWriter::GetInstance()->FilePath());
    QCOMPARE(lines.size(), kThreads * kLines);
    static const QRegularExpression kLine(R"(^\S+ \S+ \[1\] thread (\d) line (\d+) end$)");
    QSet<QString> seen;
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = kLine.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        seen.insert(match.captured(1) + "/" + match.captured(2));
    }
    QCOMPARE(seen.size(), kThreads * kLines);
}

void TestLog::unwritableDirectoryIsHarmless()
{
    // A file where the directory should be: nothing can be written, nothing breaks.
    const QString strBlocker = m_dir.path() + "/blocker";
    QFile blocker(strBlocker);
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    CLogWriter::GetInstance()->SetDirectory(strBlocker + "/Log");
    ILog_WriteLogF(0, "%s", "nowhere to go");
    QVERIFY(!QFileInfo::exists(strBlocker + "/Log/Quorvane.log"));
    QCOMPARE(QFileInfo(strBlocker).size(), 0);
}

void TestLog::aPipeInPlaceOfTheLogIsNeverWaitedOn()
{
    // Opening a FIFO to write blocks until a reader comes: the writer never
    // opens one, and says so once to whoever listens.
    CLogWriter writer;
    writer.SetDirectory(m_dir.path() + "/pipe-log");
    QVERIFY(QDir().mkpath(m_dir.path() + "/pipe-log"));
    QCOMPARE(::mkfifo(QFile::encodeName(writer.FilePath()).constData(), 0600), 0);
    QList<QByteArray> heard;
    writer.SetListener([&heard](const QByteArray& line) { heard << line; });
    writer.Write(0, "first");
    writer.Write(0, "second");
    QCOMPARE(heard.size(), 3);
    QVERIFY(heard[0].endsWith("first"));
    QCOMPARE(heard[1], "The log is not written to " + QFile::encodeName(writer.FilePath()) + ": a FIFO, not a regular file");
    QVERIFY(heard[2].endsWith("second"));
    QVERIFY(!QFileInfo(writer.FilePath()).isFile());
}

void TestLog::copiesToStderrWhenAsked()
{
    const QString strCapture = m_dir.path() + "/stderr.txt";
    qputenv("QUORVANE_LOG_STDERR", "1");
    CLogWriter writer;
    qunsetenv("QUORVANE_LOG_STDERR");
    writer.SetDirectory(m_dir.path() + "/stderr-log");

    std::fflush(stderr);
    const int nSaved = dup(STDERR_FILENO);
    FILE* pCapture = std::fopen(qPrintable(strCapture), "w");
    QVERIFY(pCapture);
    dup2(fileno(pCapture), STDERR_FILENO);
    writer.Write(1, "to both places");
    std::fflush(stderr);
    dup2(nSaved, STDERR_FILENO);
    close(nSaved);
    std::fclose(pCapture);

    QVERIFY(Lines(strCapture).value(0).endsWith("[1] to both places"));
    QVERIFY(Lines(writer.FilePath()).value(0).endsWith("[1] to both places"));

    CLogWriter quiet;
    quiet.SetDirectory(m_dir.path() + "/quiet-log");
    pCapture = std::fopen(qPrintable(strCapture), "w");
    const int nSaved2 = dup(STDERR_FILENO);
    dup2(fileno(pCapture), STDERR_FILENO);
    quiet.Write(1, "file only");
    std::fflush(stderr);
    dup2(nSaved2, STDERR_FILENO);
    close(nSaved2);
    std::fclose(pCapture);
    QVERIFY(Lines(strCapture).isEmpty());
    QCOMPARE(Lines(quiet.FilePath()).size(), 1);
}

void TestLog::eachFileBeginsWithTheVersion()
{
    QCOMPARE(QStringLiteral(FACTORYMGR_VERSION).count('.'), 2);
    CLogWriter writer;
    writer.SetDirectory(m_dir.path() + "/version");
    writer.Write(0, "first");
    writer.Write(0, "second");
    QStringList lines = AllLines(writer.FilePath());
    QCOMPARE(lines.size(), 3);
    QVERIFY2(kVersionLine.match(lines[0]).hasMatch(), qPrintable(lines[0]));
    QVERIFY(lines[1].endsWith("[0] first") && lines[2].endsWith("[0] second"));

    // Another process (here: another writer) appending to the file says so first.
    {
        CLogWriter again;
        again.SetDirectory(m_dir.path() + "/version");
        again.Write(0, "third");
    }
    lines = AllLines(writer.FilePath());
    QCOMPARE(lines.size(), 5);
    QVERIFY(kVersionLine.match(lines[3]).hasMatch());
    QVERIFY(lines[4].endsWith("[0] third"));

    // So does the file a rotation starts.
    writer.SetMaxFileSize(200);
    for (int i = 0; i < 4; ++i)
        writer.Write(0, QByteArray(60, 'r'));
    QVERIFY(QFileInfo::exists(writer.FilePath() + ".1"));
    QVERIFY(kVersionLine.match(AllLines(writer.FilePath()).value(0)).hasMatch());
}

FACTORYMGR_TEST_MAIN(TestLog)
#include "tst_log.moc"
