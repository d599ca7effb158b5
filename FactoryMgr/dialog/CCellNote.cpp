#include "CCellNote.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QLabel>
#include <QTableWidget>

CCellNote::CCellNote(QTableWidget* pTable)
    : QObject(pTable)
    , m_pLabel(new QLabel(pTable->parentWidget()))
{
    m_pLabel->setObjectName(pTable->objectName() + QStringLiteral("_note"));
    m_pLabel->setWordWrap(true);
    m_pLabel->setTextFormat(Qt::PlainText);
    m_pLabel->setStyleSheet(QStringLiteral("color: #8a4b00;"));
    m_pLabel->hide();
    // Directly beneath the table, where the eye is.
    if (auto* pLayout = qobject_cast<QBoxLayout*>(pTable->parentWidget() ? pTable->parentWidget()->layout() : nullptr))
        pLayout->insertWidget(pLayout->indexOf(pTable) + 1, m_pLabel);
}

CCellNote* CCellNote::Of(QTableWidget* pTable)
{
    auto* pNote = pTable->findChild<CCellNote*>(QString(), Qt::FindDirectChildrenOnly);
    return pNote ? pNote : new CCellNote(pTable);
}

void CCellNote::Say(const QString& strText)
{
    if (strText == m_pLabel->text())
        return;
    m_pLabel->setText(strText);
    m_pLabel->setAccessibleName(strText);
    m_pLabel->setVisible(!strText.isEmpty());
    if (!strText.isEmpty()) {
        QAccessibleEvent alert(m_pLabel, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

QString CCellNote::Text() const
{
    return m_pLabel->text();
}
