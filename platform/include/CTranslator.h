#pragma once

#include <QHash>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QTranslator>

// The host's wording service. Texts are keyed by their English wording; a
// table per language lives in "<resource directory>/Wording/<language>.json"
// as one JSON object of English text -> translated text. English needs no
// table: with it, and for any key a table lacks, the key itself is the text.
//
// The service is also a Qt translator: SetLanguage installs it on the
// application, so tr() texts are looked up in the same table and every widget
// receives QEvent::LanguageChange.
class CTranslator : public QTranslator
{
    Q_OBJECT
public:
    static CTranslator* GetInstance();

    QString GetWording(const QString& strKey) const;

    // "en" (or empty) returns to English. A missing or damaged table also
    // leaves the application in English and answers false.
    bool SetLanguage(const QString& strLanguage);
    QString GetLanguage() const;
    // Why the last SetLanguage answered false: the table's path and what is
    // wrong with it; empty after one that succeeded.
    QString Problem() const;
    // "en" and every language with a table in the resource directory.
    QStringList AvailableLanguages() const;

    QString translate(const char* szContext, const char* szSourceText, const char* szDisambiguation = nullptr,
                      int n = -1) const override;
    bool isEmpty() const override;

private:
    CTranslator();
    static QString WordingDirectory();
    void Reinstall();

    mutable QMutex m_mutex;
    QHash<QString, QString> m_table;
    QString m_strLanguage = QStringLiteral("en");
    QString m_strProblem;
    QTranslator m_qtTranslator;   // Qt's own texts (standard buttons, file dialogs)
};
