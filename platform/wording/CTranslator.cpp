#include "CTranslator.h"

#include "CHostPaths.h"
#include "SafeFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QMutexLocker>

namespace {
// The largest wording table read: the Chinese one is under 10 KB.
constexpr qint64 kMaxWordingSize = 4 * 1024 * 1024;
}

CTranslator::CTranslator() = default;

CTranslator* CTranslator::GetInstance()
{
    static CTranslator s_translator;
    return &s_translator;
}

QString CTranslator::WordingDirectory()
{
    return QDir::cleanPath(CHostPaths::ResourceDirectory() + "/Wording");
}

QString CTranslator::GetWording(const QString& strKey) const
{
    QMutexLocker locker(&m_mutex);
    return m_table.value(strKey, strKey);
}

QString CTranslator::Problem() const
{
    QMutexLocker locker(&m_mutex);
    return m_strProblem;
}

QString CTranslator::GetLanguage() const
{
    QMutexLocker locker(&m_mutex);
    return m_strLanguage;
}

QStringList CTranslator::AvailableLanguages() const
{
    QStringList languages{QStringLiteral("en")};
    for (const QFileInfo& info : QDir(WordingDirectory()).entryInfoList({"*.json"}, QDir::Files, QDir::Name))
        if (info.completeBaseName() != QLatin1String("en"))
            languages << info.completeBaseName();
    return languages;
}

bool CTranslator::SetLanguage(const QString& strLanguage)
{
    QHash<QString, QString> table;
    QString strLoaded = QStringLiteral("en");
    QString strProblem;
    if (!strLanguage.isEmpty() && strLanguage != QLatin1String("en")) {
        // A wording table is some kilobytes; a pipe or a huge file in its place is refused unread.
        const QString strPath = WordingDirectory() + "/" + strLanguage + ".json";
        QByteArray bytes;
        QString strWhy;
        QJsonParseError error{};
        const QJsonDocument doc = SafeFile::ReadAll(strPath, kMaxWordingSize, &bytes, &strWhy)
            ? QJsonDocument::fromJson(bytes, &error)
            : QJsonDocument();
        if (doc.isObject()) {
            const QJsonObject object = doc.object();
            for (auto it = object.begin(); it != object.end(); ++it)
                if (it.value().isString())
                    table.insert(it.key(), it.value().toString());
            strLoaded = strLanguage;
        } else {
            strProblem = QStringLiteral("%1: %2").arg(
                strPath, !strWhy.isEmpty()                      ? strWhy + QStringLiteral(", not read")
                             : error.error != QJsonParseError::NoError ? error.errorString()
                                                                       : QStringLiteral("not a table of wordings"));
        }
    }
    const bool bOk = strProblem.isEmpty();
    {
        QMutexLocker locker(&m_mutex);
        m_table = std::move(table);
        m_strLanguage = strLoaded;
        m_strProblem = strProblem;
    }
    Reinstall();
    return bOk;
}

void CTranslator::Reinstall()
{
    if (!QCoreApplication::instance())
        return;
    QCoreApplication::removeTranslator(&m_qtTranslator);
    QCoreApplication::removeTranslator(this);
    const QString strLanguage = GetLanguage();
    if (strLanguage == QLatin1String("en")) {
        // Removing a translator does not announce itself; widgets must still re-apply their texts.
        QEvent event(QEvent::LanguageChange);
        QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
        return;
    }
    if (m_qtTranslator.load("qtbase_" + strLanguage, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qtTranslator);
    QCoreApplication::installTranslator(this);
}

QString CTranslator::translate(const char* szContext, const char* szSourceText, const char* szDisambiguation,
                               int n) const
{
    Q_UNUSED(szContext)
    Q_UNUSED(szDisambiguation)
    Q_UNUSED(n)
    if (!szSourceText)
        return QString();
    QMutexLocker locker(&m_mutex);
    // A null answer lets Qt fall back to the source text.
    return m_table.value(QString::fromUtf8(szSourceText));
}

bool CTranslator::isEmpty() const
{
    QMutexLocker locker(&m_mutex);
    return m_table.isEmpty();
}
