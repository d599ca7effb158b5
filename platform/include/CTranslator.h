#pragma once

/// \file CTranslator.h
/// \brief The host platform's wording service, which chooses the language of every text.

#include <QHash>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QTranslator>

/// \brief The host's wording service (libTranslator).
///
/// Texts are keyed by their English wording; a table per language lives in
/// "<resource directory>/Wording/<language>.json" as one JSON object of English text ->
/// translated text. English needs no table: with it, and for any key a table lacks, the key
/// itself is the text.
///
/// The service is also a Qt translator: SetLanguage() installs it on the application, so tr()
/// texts are looked up in the same table and every widget receives QEvent::LanguageChange.
/// Call SetLanguage() on the GUI thread; the other functions may be called from any thread.
class CTranslator : public QTranslator
{
    Q_OBJECT
public:
    /// \brief The one service of the process.
    /// \return The service; it lives as long as the process.
    static CTranslator* GetInstance();

    /// \brief The text for an English key in the chosen language.
    /// \param strKey The English text.
    /// \return The chosen table's text; the key itself when the table lacks it or the language is
    ///         English.
    QString GetWording(const QString& strKey) const;

    /// \brief Chooses the language, by the name of its table ("zh_CN").
    ///
    /// "en" (or empty) returns to English. A missing or damaged table also leaves the
    /// application in English and answers false, with the reason in Problem().
    /// \param strLanguage The table's name, "en" or empty.
    /// \return Whether the language is now the one asked for.
    bool SetLanguage(const QString& strLanguage);
    /// \brief The language in use.
    /// \return "en" or the name of a table.
    QString GetLanguage() const;
    /// \brief Why the last SetLanguage() answered false.
    /// \return The table's path and what is wrong with it; empty after one that succeeded.
    QString Problem() const;
    /// \brief The languages that can be chosen.
    /// \return "en" and every language with a table in the resource directory.
    QStringList AvailableLanguages() const;

    /// \brief QTranslator's lookup in the chosen table, whatever the context.
    /// \param szContext Not used: one table serves every context.
    /// \param szSourceText The English text.
    /// \param szDisambiguation Not used.
    /// \param n Not used.
    /// \return The table's text; null when the table lacks it, so that Qt keeps the source text.
    QString translate(const char* szContext, const char* szSourceText, const char* szDisambiguation = nullptr,
                      int n = -1) const override;
    /// \brief QTranslator's test for a translator with nothing in it.
    /// \return True while no table is loaded (English).
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
