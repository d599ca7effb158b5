#include "TestMain.h"

#include "IniValue.h"
#include "TextCodec.h"

#include <QSettings>

namespace {
QByteArray ReadBytes(const QString& strPath)
{
    QFile file(strPath);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

class TestIniValue : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void readsGiveTheDefaultForMissingKeysAndZeroForBadText();
    void singleWritesGoStraightToTheFile();
    void batchWritesReachTheFileAtTheEnd();
    void endingWithoutABatchIsHarmless();

    void utf8RoundTrip();
    void gbkRoundTrip();
    void local8BitRoundTrip();
    void boundedCopyShorterSource();
    void boundedCopyLongerSourceIsCutAndTerminated();
    void boundedCopyOfExactlyTheBufferSize();
    void boundedCopyRefusesNullPointers();

private:
    QScopedPointer<QTemporaryDir> m_pDir;
    QString m_strFile;
};

void TestIniValue::init()
{
    m_pDir.reset(new QTemporaryDir);
    m_strFile = m_pDir->path() + "/values.ini";
}

void TestIniValue::readsGiveTheDefaultForMissingKeysAndZeroForBadText()
{
    QFile file(m_strFile);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[S]\nN=42\nD=2.5\nT=hello world\nBAD=x1\n");
    file.close();

    QCOMPARE(ReadIniInt("S", "N", 7, m_strFile), 42);
    QCOMPARE(ReadIniDouble("S", "D", 7.0, m_strFile), 2.5);
    QCOMPARE(ReadIniString("S", "T", "none", m_strFile), QStringLiteral("hello world"));
    QCOMPARE(ReadIniInt("S", "MISSING", 7, m_strFile), 7);
    QCOMPARE(ReadIniDouble("S", "MISSING", 7.5, m_strFile), 7.5);
    QCOMPARE(ReadIniString("OTHER", "T", "none", m_strFile), QStringLiteral("none"));
    QCOMPARE(ReadIniInt("S", "BAD", 7, m_strFile), 0);
    QCOMPARE(ReadIniDouble("S", "BAD", 7.0, m_strFile), 0.0);
    QCOMPARE(ReadIniInt("S", "N", 7, m_pDir->path() + "/no-such.ini"), 7);
}

void TestIniValue::singleWritesGoStraightToTheFile()
{
    WriteIniInt("SECTION", "COUNT", 3, m_strFile);
    WriteIniDouble("SECTION", "RATIO", 7.88627, m_strFile);
    WriteIniString("OTHER", "NAME", "Quorvane", m_strFile);
    const QByteArray text = ReadBytes(m_strFile);
    QVERIFY2(text.contains("[SECTION]"), text.constData());
    QVERIFY(text.contains("COUNT=3"));
    QVERIFY(text.contains("RATIO=7.88627"));
    QVERIFY(text.contains("[OTHER]"));
    QVERIFY(text.contains("NAME=Quorvane"));
}

void TestIniValue::batchWritesReachTheFileAtTheEnd()
{
    BeginBatchWrite(m_strFile);
    WriteIniInt("A", "ONE", 1, m_strFile);
    WriteIniDouble("B", "TWO", 2.25, m_strFile);
    // Nothing is on disk until the batch ends (no event loop ran meanwhile).
    QVERIFY(!ReadBytes(m_strFile).contains("ONE"));
    QVERIFY(EndBatchWrite());
    const QByteArray text = ReadBytes(m_strFile);
    QVERIFY(text.contains("ONE=1"));
    QVERIFY(text.contains("TWO=2.25"));
    // After the batch a write opens the file of its own again.
    WriteIniInt("A", "THREE", 3, m_strFile);
    QVERIFY(ReadBytes(m_strFile).contains("THREE=3"));
}

void TestIniValue::endingWithoutABatchIsHarmless()
{
    QVERIFY(!EndBatchWrite());
}

void TestIniValue::utf8RoundTrip()
{
    const QString text = QStringLiteral("/home/用户/cache/adjustpulse.tl");
    const QByteArray bytes = StringToUtf8(text);
    QCOMPARE(bytes, QByteArray("/home/\xE7\x94\xA8\xE6\x88\xB7/cache/adjustpulse.tl"));
    QCOMPARE(Utf8ToString(bytes), text);
}

void TestIniValue::gbkRoundTrip()
{
    const QString text = QStringLiteral("中文");
    const QByteArray bytes = StringToGbk(text);
    QCOMPARE(bytes, QByteArray("\xD6\xD0\xCE\xC4"));
    QCOMPARE(GbkToString(bytes), text);
}

void TestIniValue::local8BitRoundTrip()
{
    // File names on this system are UTF-8 bytes, in any locale.
    const QString text = QStringLiteral("/home/Jürgen/Größe.ini");
    const QByteArray bytes = StringToLocal8Bit(text);
    QCOMPARE(bytes, QByteArray("/home/J\xC3\xBCrgen/Gr\xC3\xB6\xC3\x9F" "e.ini"));
    QCOMPARE(Local8BitToString(bytes), text);
}

void TestIniValue::boundedCopyShorterSource()
{
    char buffer[8];
    std::memset(buffer, 'x', sizeof(buffer));
    QVERIFY(CopyToBuffer(buffer, sizeof(buffer), "abc"));
    QCOMPARE(QByteArray(buffer, 8), QByteArray("abc\0\0\0\0\0", 8));
}

void TestIniValue::boundedCopyLongerSourceIsCutAndTerminated()
{
    char buffer[8];
    std::memset(buffer, 'x', sizeof(buffer));
    QVERIFY(CopyToBuffer(buffer, sizeof(buffer), "abcdefghijkl"));
    QCOMPARE(QByteArray(buffer, 8), QByteArray("abcdefg\0", 8));
}

void TestIniValue::boundedCopyOfExactlyTheBufferSize()
{
    char buffer[4];
    QVERIFY(CopyToBuffer(buffer, sizeof(buffer), "abcd"));
    QCOMPARE(QByteArray(buffer, 4), QByteArray("abc\0", 4));
}

void TestIniValue::boundedCopyRefusesNullPointers()
{
    char buffer[4] = {'k', 'e', 'e', 'p'};
    QVERIFY(!CopyToBuffer(nullptr, 4, "abc"));
    QVERIFY(!CopyToBuffer(buffer, sizeof(buffer), nullptr));
    QVERIFY(!CopyToBuffer(buffer, 0, "abc"));
    QCOMPARE(QByteArray(buffer, 4), QByteArray("keep"));
}

FACTORYMGR_TEST_MAIN(TestIniValue)
#include "tst_inivalue.moc"
