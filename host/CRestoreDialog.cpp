#include "CRestoreDialog.h"

#include "CDisplayUnit.h"
#include "CParamDiff.h"
#include "CTranslator.h"
#include "Wording.h"
#include "FactoryParamIo.h"
#include "ScreenFit.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
QString Translate(const QString& strText)
{
    return CTranslator::GetInstance()->GetWording(strText);
}

QString When(const QDateTime& when)
{
    return QLocale().toString(when, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}
}

CRestoreDialog::CRestoreDialog(const QString& strParameterFile, const FactoryParams& current, int nUnit,
                               QWidget* parent)
    : QDialog(parent)
    , m_current(current)
    , m_nUnit(nUnit)
{
    setObjectName(QStringLiteral("restoreDialog"));
    setWindowTitle(Wording("Restore Parameters"));
    auto* pLayout = new QVBoxLayout(this);
    auto* pListCaption = new QLabel(Wording("Backups of the parameter file, newest first:"), this);
    m_pList = new QTreeWidget(this);
    m_pList->setObjectName(QStringLiteral("treeWidget_backups"));
    m_pList->setRootIsDecorated(false);
    m_pList->setHeaderLabels({Wording("Kept"), Wording("Why"), Wording("Fields that differ from now")});
    pListCaption->setBuddy(m_pList);
    m_pCaption = new QLabel(this);
    m_pDifferences = new QTreeWidget(this);
    m_pDifferences->setObjectName(QStringLiteral("treeWidget_differences"));
    m_pDifferences->setRootIsDecorated(false);
    m_pDifferences->setHeaderLabels({Wording("Field"), Wording("Now"), Wording("In the backup"), Wording("Unit")});
    m_pCaption->setBuddy(m_pDifferences);
    auto* pButtons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_pRestore = pButtons->addButton(Wording("&Restore..."), QDialogButtonBox::AcceptRole);
    m_pRestore->setObjectName(QStringLiteral("pushButton_restore"));
    m_pRestore->setEnabled(false);
    pLayout->addWidget(pListCaption);
    pLayout->addWidget(m_pList, 1);
    pLayout->addWidget(m_pCaption);
    pLayout->addWidget(m_pDifferences, 2);
    pLayout->addWidget(pButtons);
    connect(pButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_pRestore, &QPushButton::clicked, this, &CRestoreDialog::Restore);
    connect(m_pList, &QTreeWidget::currentItemChanged, this, &CRestoreDialog::ShowDifferences);

    // Every backup is listed at once; each is offered once it has been read.
    QList<QTreeWidgetItem*> items;
    for (const CParamBackups::Entry& entry : CParamBackups::List(strParameterFile)) {
        Backup backup;
        backup.entry = entry;
        m_backups << backup;
        auto* pItem = new QTreeWidgetItem({When(entry.when), Wording(CParamBackups::ReasonText(entry.reason)),
                                           Wording("reading...")});
        pItem->setDisabled(true);
        items << pItem;
    }
    m_pList->addTopLevelItems(items);
    ReadBatch(kFirstRead);
    if (m_backups.isEmpty())
        m_pCaption->setText(Wording("No backup has been kept yet: one is kept before every save."));
    else
        m_pList->setCurrentItem(m_pList->topLevelItem(0));
    // The arrow keys go through the backups at once.
    m_pList->setFocus();
    // The list's first columns fit their texts, which never change, once; the
    // last one stretches: its texts change as the backups are read.
    m_pList->resizeColumnToContents(0);
    m_pList->resizeColumnToContents(1);
    m_pDifferences->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    resize(640, 520);
    ScreenFit::Fit(this);
}

void CRestoreDialog::ReadBatch(int nCount)
{
    const int nEnd = qMin(int(m_backups.size()), m_nRead + nCount);
    for (; m_nRead < nEnd; ++m_nRead) {
        Backup& backup = m_backups[m_nRead];
        backup.bReadable = ReadFactoryParamFile(backup.record, backup.entry.strPath) == ParamFileStatus::Loaded;
        QTreeWidgetItem* pItem = m_pList->topLevelItem(m_nRead);
        pItem->setText(2, backup.bReadable ? QString::number(CParamDiff::Compare(m_current, backup.record).size())
                                           : Wording("cannot be read"));
        pItem->setDisabled(!backup.bReadable);
        if (pItem == m_pList->currentItem())
            ShowDifferences();
    }
    // The rest a batch at a time, between which the window paints and answers.
    if (!AllRead())
        QTimer::singleShot(0, this, [this] { ReadBatch(20); });
}

QString CRestoreDialog::ChosenText() const
{
    if (m_nChosen < 0)
        return QString();
    const CParamBackups::Entry& entry = m_backups[m_nChosen].entry;
    return Wording("the backup kept %1 (%2)").arg(When(entry.when), Wording(CParamBackups::ReasonText(entry.reason)));
}

void CRestoreDialog::ShowDifferences()
{
    m_pDifferences->clear();
    const int nRow = m_pList->indexOfTopLevelItem(m_pList->currentItem());
    const bool bUsable = nRow >= 0 && nRow < m_nRead && m_backups[nRow].bReadable;
    m_pRestore->setEnabled(bUsable);
    if (!bUsable) {
        m_pCaption->setText(nRow < 0          ? QString()
                                : nRow < m_nRead ? Wording("This backup cannot be read.")
                                                 : Wording("This backup is being read."));
        return;
    }
    const QList<SParamDifference> differences = CParamDiff::Compare(m_current, m_backups[nRow].record, &Translate);
    m_pCaption->setText(differences.isEmpty() ? Wording("This backup holds the current parameters.")
                                              : Wording("What this backup holds against the current parameters:"));
    for (const SParamDifference& difference : differences)
        new QTreeWidgetItem(m_pDifferences,
                            {CParamDiff::Name(difference), CDisplayUnit::Number(difference.Shown(difference.dA), difference.strUnit, m_nUnit),
                             CDisplayUnit::Number(difference.Shown(difference.dB), difference.strUnit, m_nUnit),
                             CDisplayUnit::Unit(difference.strUnit, m_nUnit)});
}

void CRestoreDialog::Restore()
{
    const int nRow = m_pList->indexOfTopLevelItem(m_pList->currentItem());
    if (nRow < 0 || nRow >= m_nRead || !m_backups[nRow].bReadable)
        return;
    const CParamBackups::Entry& entry = m_backups[nRow].entry;
    const int nChanges = m_pDifferences->topLevelItemCount();
    QMessageBox box(QMessageBox::Question, Wording("Restore Parameters"),
                    Wording("Restore the parameters kept %1 (%2)? %3 value(s) change. What is current now is kept "
                            "as a backup first, and the restored values go to the controller with the next Upload.")
                        .arg(When(entry.when), Wording(CParamBackups::ReasonText(entry.reason)))
                        .arg(nChanges),
                    QMessageBox::Yes | QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("restoreBox"));
    box.button(QMessageBox::Yes)->setText(Wording("Restore"));
    // Return alone does not write over the current parameters.
    box.setDefaultButton(QMessageBox::Cancel);
    if (box.exec() != QMessageBox::Yes)
        return;
    m_nChosen = nRow;
    m_chosen = m_backups[nRow].record;
    accept();
}
