#include "CThemeTab.h"

#include "CPropertyTable.h"
#include "CUiPermissionsManager.h"

#include <QHeaderView>
#include <QTableWidget>

namespace {
// Rows 1-6 and 7-9 are the entries of the two editions; rows 8 and 9 cross
// over members 11 and 10.
const int kMemberOfRow[] = {0, 2, 3, 4, 5, 6, 7, 1, 11, 10};
const int kRows = int(sizeof(kMemberOfRow) / sizeof(kMemberOfRow[0]));

QTableWidgetItem* AddressItem(QTableWidget* pTable, int nRow)
{
    QTableWidgetItem* pItem = pTable->item(nRow, 1);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        pTable->setItem(nRow, 1, pItem);
    }
    return pItem;
}
}

int CThemeTab::MemberOfRow(int nRow)
{
    return nRow >= 0 && nRow < kRows ? kMemberOfRow[nRow] : 0;
}

bool CThemeTab::IsGlobal()
{
    return CUiPermissionsManager::GetInstance()->GetThemeVersion().contains(QLatin1String("Global"), Qt::CaseSensitive);
}

void CThemeTab::Fill(QTableWidget* pTable, IResolution* pResolution)
{
    QHeaderView* pHeader = pTable->horizontalHeader();
    pHeader->setSectionResizeMode(QHeaderView::Stretch);
    pHeader->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    pHeader->setSectionResizeMode(1, QHeaderView::Stretch);
    pTable->setFocusPolicy(Qt::NoFocus);
    CPropertyTable::Format(pTable, pResolution);
    CPropertyTable::LockCell(pTable, 0, 1);

    const SUrls urls = CUiPermissionsManager::GetInstance()->GetUrls();
    for (int r = 1; r < kRows && r < pTable->rowCount(); ++r)
        AddressItem(pTable, r)->setText(*urls.At(kMemberOfRow[r]));

    const bool bQuorvane = CUiPermissionsManager::GetInstance()->GetThemeName() == QLatin1String("Quorvane");
    for (int r = 0; r < pTable->rowCount(); ++r) {
        bool bHidden = false;
        if (!bQuorvane)
            bHidden = r == 1 || r == 5 || r >= 7;
        else if (IsGlobal())
            bHidden = r >= 7;
        else
            bHidden = r >= 1 && r <= 6;
        pTable->setRowHidden(r, bHidden);
    }

    for (int r = 0; r < pTable->rowCount(); ++r)
        for (int c = 0; c < pTable->columnCount(); ++c)
            if (QTableWidgetItem* pItem = pTable->item(r, c))
                pItem->setTextAlignment(Qt::AlignCenter);
}

void CThemeTab::Store(QTableWidget* pTable)
{
    SUrls urls = CUiPermissionsManager::GetInstance()->GetUrls();
    for (int r = 1; r < kRows && r < pTable->rowCount(); ++r)
        *urls.At(kMemberOfRow[r]) = pTable->item(r, 1) ? pTable->item(r, 1)->text() : QString();
    CUiPermissionsManager::GetInstance()->SetHomepageUrls(urls);
}
