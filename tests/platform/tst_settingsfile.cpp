#include "TestMain.h"

#include "CSettingsFile.h"
#include "HostileFiles.h"
#include "SafeFile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSettings>

#include <sys/stat.h>

// The guard in front of the settings layer: it finds exactly the values the
// layer itself would deserialise, reads a file holding one with that value as
// plain text and never writes it, and refuses a pipe or an oversized file
// without waiting on it.
class TestSettingsFile : public QObject
{
    Q_OBJECT
private slots:
    void findsWhatTheLayerWouldDeserialise_data();
    void findsWhatTheLayerWouldDeserialise();
    void aDeepValueReadsAsPlainTextAndTheFileStaysAsItIs();
    void aPipeIsRefusedWithoutWaiting();
    void aFileAboveItsLimitIsRefusedUnread();
    void byteArraysAndTextsAreReadAndWrittenAsBefore();
    void anAbsentFileIsWritten();

private:
    QString Write(const QByteArray& bytes);
    QTemporaryDir m_dir;
    int m_nFiles = 0;
};

namespace {
// A value that the layer decodes to a number: only its own data-stream
// decoding produces one from a text.
const QByteArray kInt = "@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)";
const QByteArray kIntTail = "Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)";
}

QString TestSettingsFile::Write(const QByteArray& bytes)
{
    const QString strPath = m_dir.filePath(QStringLiteral("f%1.ini").arg(++m_nFiles));
    QFile file(strPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(strPath));
    return strPath;
}

void TestSettingsFile::findsWhatTheLayerWouldDeserialise_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("bEncoded");
    // Where the guard looks further than the layer: a character it cannot
    // be sure the layer drops is taken as dropped.
    QTest::addColumn<bool>("bLayerDecodes");
    QTest::newRow("plain") << "k=" + kInt << true << true;
    QTest::newRow("after blanks") << "k=  \t" + kInt << true << true;
    QTest::newRow("quoted") << "k=\"" + kInt + "\"" << true << true;
    QTest::newRow("behind an empty quote") << "k=\"\"" + kInt << true << true;
    QTest::newRow("its @ escaped in hex") << "k=\\x40" + kIntTail << true << true;
    QTest::newRow("its @ escaped in octal") << "k=\\100" + kIntTail << true << true;
    QTest::newRow("its @ in a hex escape that wraps") << "k=\\x10040" + kIntTail << true << true;
    QTest::newRow("second in a list") << "k=1, " + kInt << true << true;
    QTest::newRow("after a byte array in a list") << "k=@ByteArray(ab), " + kInt << true << true;
    QTest::newRow("after a line continued") << "k=\\\n" + kInt << true << true;
    QTest::newRow("after a dropped UTF-8 lead byte") << "k=\xc3\\x40" + kIntTail << true << false;
    QTest::newRow("behind a whole UTF-8 character") << "k=\xc3\xa9" + kInt << false << false;
    QTest::newRow("behind a replacement character") << "k=\xef\xbf\xbd\xef\xbf\xbd" + kInt << false << false;
    QTest::newRow("behind a surrogate's bytes") << "k=\xed\xa0\x80" + kInt << true << false;
    QTest::newRow("behind a cut 4-byte character") << "k=\xf0\x9f\x98" + kInt << true << false;
    QTest::newRow("a byte array") << QByteArray("k=@ByteArray(\\0,\\x1@Variant(\\0)") << false << false;
    QTest::newRow("a quoted byte array with a comma") << QByteArray("k=\"@ByteArray(a,@Variant(x))\"") << false << false;
    QTest::newRow("an escaped @") << "k=@@" + kIntTail << false << false;
    QTest::newRow("inside a quoted text") << "k=\"a, " + kInt + "\"" << false << false;
    QTest::newRow("not first") << "k=x" + kInt << false << false;
    QTest::newRow("behind a backslash") << "k=\\\\" + kInt << false << false;
    QTest::newRow("in a comment") << "; k=" + kInt << false << false;
    QTest::newRow("after a comment sign") << "k=5 ;" + kInt << false << false;
    QTest::newRow("in a key") << kInt + "=5" << false << false;
    QTest::newRow("a number") << QByteArray("k=1500") << false << false;
}

void TestSettingsFile::findsWhatTheLayerWouldDeserialise()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, bEncoded);
    QFETCH(bool, bLayerDecodes);
    const QByteArray bytes = "[s]\na=1\n" + line + "\nz=2\n";
    const QList<CSettingsFile::EncodedValue> found = CSettingsFile::EncodedValues(bytes);
    QCOMPARE(found.size(), bEncoded ? 1 : 0);
    if (bEncoded) {
        QCOMPARE(found.first().nLine, 3);
        QCOMPARE(found.first().key, QByteArray("k"));
    }
    // The layer itself agrees (these values are shallow: decoding them is harmless).
    const QSettings layer(Write(bytes), QSettings::IniFormat);
    bool bDecoded = false;
    for (const QString& strKey : layer.allKeys())
        bDecoded = bDecoded || HostileFiles::Decoded(layer.value(strKey));
    QCOMPARE(bDecoded, bLayerDecodes);
    QCOMPARE(layer.value("s/a").toString(), QStringLiteral("1"));
    QCOMPARE(layer.value("s/z").toString(), QStringLiteral("2"));

    // Through the guard nothing is decoded, and the rest reads as it stands.
    CSettingsFile guarded(Write(bytes));
    QCOMPARE(guarded.Problem().isEmpty(), !bEncoded);
    QCOMPARE(guarded.Writable() == nullptr, bEncoded);
    for (const QString& strKey : guarded.Settings().allKeys())
        QVERIFY2(!HostileFiles::Decoded(guarded.Settings().value(strKey)), qPrintable(strKey));
    QCOMPARE(guarded.Settings().value("s/a").toString(), QStringLiteral("1"));
    QCOMPARE(guarded.Settings().value("s/z").toString(), QStringLiteral("2"));
}

void TestSettingsFile::aDeepValueReadsAsPlainTextAndTheFileStaysAsItIs()
{
    const QByteArray bytes = "[HOST]\nUNIT=2\nLANGUAGE=" + HostileFiles::NestedVariant() + "\nSTATE=@ByteArray(xy)\n";
    const QString strPath = Write(bytes);
    {
        CSettingsFile file(strPath);
        QCOMPARE(file.Settings().value("HOST/LANGUAGE").toString(), QStringLiteral("@Variant(...)"));
        QCOMPARE(file.Settings().value("HOST/UNIT").toInt(), 2);
        QCOMPARE(file.Settings().value("HOST/STATE").toByteArray(), QByteArray("xy"));
        QVERIFY(!file.IsRefused());
        QVERIFY2(file.Problem().contains("line 3 (LANGUAGE)") && file.Problem().contains("(@Variant)"),
                 qPrintable(file.Problem()));
        QVERIFY(!file.Writable());
    }
    QFile file(strPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), bytes);
}

void TestSettingsFile::aPipeIsRefusedWithoutWaiting()
{
    const QString strPath = m_dir.filePath("pipe.ini");
    QCOMPARE(::mkfifo(QFile::encodeName(strPath).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    CSettingsFile file(strPath);
    QVERIFY(file.IsRefused());
    QVERIFY(!file.Writable());
    QVERIFY2(file.Problem().contains("a FIFO, not a regular file"), qPrintable(file.Problem()));
    QVERIFY(file.Settings().allKeys().isEmpty());
    QByteArray bytes;
    QString strWhy;
    QVERIFY(!SafeFile::ReadAll(strPath, -1, &bytes, &strWhy));
    QCOMPARE(strWhy, QStringLiteral("a FIFO, not a regular file"));
    QCOMPARE(SafeFile::Check(strPath), SafeFile::Kind::NotRegular);
    // Had anything waited for a writer, it would still be waiting.
    QVERIFY(timer.elapsed() < 30000);
}

void TestSettingsFile::aFileAboveItsLimitIsRefusedUnread()
{
    const QString strPath = m_dir.filePath("huge.ini");
    QFile huge(strPath);
    QVERIFY(huge.open(QIODevice::WriteOnly));
    QVERIFY(huge.write("[s]\nk=1\n") > 0);
    QVERIFY(huge.resize(100 * 1024 * 1024));   // sparse: nothing to read but zeros
    huge.close();
    CSettingsFile file(strPath);
    QVERIFY(file.IsRefused());
    QVERIFY2(file.Problem().contains("larger than 1048576 bytes"), qPrintable(file.Problem()));
    QVERIFY(!file.Settings().contains("s/k"));
    QVERIFY(!file.Writable());
    QCOMPARE(SafeFile::Check(strPath, CSettingsFile::kMaxSize), SafeFile::Kind::TooLarge);
    QCOMPARE(QFileInfo(strPath).size(), qint64(100 * 1024 * 1024));
}

void TestSettingsFile::byteArraysAndTextsAreReadAndWrittenAsBefore()
{
    // Every byte value, commas, quotes and @ signs among them, as window geometry may hold.
    QByteArray everyByte;
    for (int i = 0; i < 256; ++i)
        everyByte += char(i);
    everyByte += ",@Variant(\\0),\"@";
    const QString strPath = m_dir.filePath("kept.ini");
    {
        CSettingsFile file(strPath);
        QVERIFY(file.Writable());
        file.Writable()->setValue("HOST/GEOMETRY", everyByte);
        file.Writable()->setValue("HOST/TEXT", QStringLiteral("@Variant(not one)"));
        file.Writable()->setValue("HOST/LIST", QStringList{"@a", "b,c", "@Variant(x)"});
    }
    CSettingsFile file(strPath);
    QCOMPARE(file.Problem(), QString());
    QCOMPARE(file.Settings().value("HOST/GEOMETRY").toByteArray(), everyByte);
    QCOMPARE(file.Settings().value("HOST/TEXT").toString(), QStringLiteral("@Variant(not one)"));
    QCOMPARE(file.Settings().value("HOST/LIST").toStringList(), (QStringList{"@a", "b,c", "@Variant(x)"}));
    QVERIFY(file.Writable());
}

void TestSettingsFile::anAbsentFileIsWritten()
{
    const QString strPath = m_dir.filePath("new/absent.ini");
    QVERIFY(QDir().mkpath(QFileInfo(strPath).absolutePath()));
    {
        CSettingsFile file(strPath);
        QVERIFY(!file.IsRefused());
        QCOMPARE(file.Problem(), QString());
        QVERIFY(file.Writable());
        file.Writable()->setValue("s/k", 7);
    }
    QCOMPARE(QSettings(strPath, QSettings::IniFormat).value("s/k").toInt(), 7);
}

FACTORYMGR_TEST_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
