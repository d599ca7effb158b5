#include "CPropertyTable.h"

#include "CCellKeys.h"
#include "CCellMarks.h"
#include "CCellNote.h"
#include "CLabelColumn.h"

#include "CTranslator.h"
#include "ComboBox.h"
#include "IResolution.h"

#include <QApplication>
#include <QColor>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>

#include <cmath>
#include <limits>

namespace {
const QLatin1String kRedSheet("background-color: red;");
const QLatin1String kWhiteSheet("background-color: white;");

// What a screen reader says the cell editor is: its row, and its column
// where the table has more than one value column.
QString EditorName(QTableWidget* pTable, int nRow, int nColumn)
{
    QString strName = pTable->item(nRow, 0) ? pTable->item(nRow, 0)->text() : QString();
    const QTableWidgetItem* pHeader = pTable->horizontalHeaderItem(nColumn);
    if (pTable->columnCount() > 2 && pHeader)
        strName += QLatin1Char(' ') + pHeader->text();
    return strName;
}

// Names the new editor, shows a mark its cell carries, and describes the cell.
void SetUpCell(QTableWidget* pTable, int nRow, int nColumn, ComboBox* pCell, bool bMarked)
{
    const QString strName = EditorName(pTable, nRow, nColumn);
    pCell->setAccessibleName(strName);
    if (pCell->comboBox())
        pCell->comboBox()->setAccessibleName(strName);
    if (pCell->lineEdit())
        pCell->lineEdit()->setAccessibleName(strName);
    CCellKeys::Of(pTable)->Watch(pCell);
    // A choice is the table's next edit: an earlier note is gone with it.
    if (QComboBox* pList = pCell->comboBox())
        QObject::connect(pList, &QComboBox::activated, CCellNote::Of(pTable), [pTable] { CCellNote::Of(pTable)->Say(QString()); });
    if (bMarked) {
        CPropertyTable::Item(pTable, nRow, nColumn)->setBackground(QBrush(Qt::red));
        pCell->setStyleSheet(kRedSheet);
    }
    CPropertyTable::Describe(pTable, nRow, nColumn);
}

// The scaling service is another library: a length it scales to no usable
// size (not a number, not positive, beyond any widget) stays as designed.
int ScaledPixels(IResolution* pResolution, double dLength)
{
    const double dScaled = CPropertyTable::Scaled(pResolution, dLength);
    return dScaled > 0.0 && dScaled <= double(QWIDGETSIZE_MAX) ? int(dScaled) : int(dLength);
}
}

double CPropertyTable::Scaled(IResolution* pResolution, double dLength)
{
    return pResolution ? pResolution->Scale(dLength) : dLength;
}

void CPropertyTable::LockCell(QTableWidget* pTable, int nRow, int nColumn)
{
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        pTable->setItem(nRow, nColumn, pItem);
    }
    pItem->setFlags(pItem->flags() & ~(Qt::ItemIsEditable | Qt::ItemIsSelectable));
    pItem->setBackground(QColor(204, 204, 204, 255));
}

void CPropertyTable::Format(QTableWidget* pTable, IResolution* pResolution)
{
    QHeaderView* pHeader = pTable->horizontalHeader();
    pHeader->setHighlightSections(false);
    for (int c = 0; c < pTable->columnCount(); ++c)
        pHeader->setSectionResizeMode(c, c == 0 ? QHeaderView::Fixed : QHeaderView::Stretch);
    if (pTable->columnCount() > 0) {
        pTable->setColumnWidth(0, ScaledPixels(pResolution, 255.0));
        CLabelColumn::Keep(pTable, ScaledPixels(pResolution, 255.0));
    }
    const int nRowHeight = ScaledPixels(pResolution, 35.0);
    for (int r = 0; r < pTable->rowCount(); ++r) {
        LockCell(pTable, r, 0);
        pTable->setRowHeight(r, nRowHeight);
    }
}

ComboBox* CPropertyTable::MakeListCell(QTableWidget* pTable, int nRow, int nColumn, const QStringList& choices,
                                       int nCurrent, const QString& strItemText)
{
    // Made straight in the viewport, where setCellWidget puts it anyway: moved
    // there, it would receive a style change that makes every combo box build
    // its popup now, and under the table's style sheet Qt never releases the
    // style cache entry of such a popup (the memory grew with every opening).
    auto* pCell = new ComboBox(pTable->viewport(), ComboBox::ListMode);
    for (const QString& strChoice : choices)
        pCell->addItem(strChoice);
    pCell->setCurrentIndex(nCurrent);
    const bool bMarked = IsMarked(pTable, nRow, nColumn);
    pTable->setItem(nRow, nColumn, new QTableWidgetItem(strItemText));
    pTable->setCellWidget(nRow, nColumn, pCell);
    SetUpCell(pTable, nRow, nColumn, pCell, bMarked);
    pCell->show();
    return pCell;
}

ComboBox* CPropertyTable::MakeNumberCell(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    auto* pCell = new ComboBox(pTable->viewport(), ComboBox::EditMode);
    pCell->setText(strText);
    pTable->setCellWidget(nRow, nColumn, pCell);
    pCell->setEditing(false);
    SetUpCell(pTable, nRow, nColumn, pCell, IsMarked(pTable, nRow, nColumn));
    return pCell;
}

QTableWidgetItem* CPropertyTable::Item(QTableWidget* pTable, int nRow, int nColumn)
{
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem) {
        pItem = new QTableWidgetItem;
        pTable->setItem(nRow, nColumn, pItem);
    }
    return pItem;
}

ComboBox* CPropertyTable::Cell(QTableWidget* pTable, int nRow, int nColumn)
{
    return qobject_cast<ComboBox*>(pTable->cellWidget(nRow, nColumn));
}

void CPropertyTable::ShowCellsAsText(QTableWidget* pTable)
{
    for (int r = 0; r < pTable->rowCount(); ++r)
        for (int c = 1; c < pTable->columnCount(); ++c)
            if (ComboBox* pCell = Cell(pTable, r, c))
                pCell->setEditing(pCell->mode() == ComboBox::ListMode);
}

void CPropertyTable::OpenCellEditor(QTableWidget* pTable, int nRow, int nColumn)
{
    if (nRow < 0 || nColumn < 0)
        return;
    if (ComboBox* pCell = Cell(pTable, nRow, nColumn))
        pCell->setEditing(true);
}

void CPropertyTable::CommitTyping(QTableWidget* pTable)
{
    auto* pEdit = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    auto* pCell = qobject_cast<ComboBox*>(pEdit ? pEdit->parentWidget() : nullptr);
    if (pCell && pCell->parentWidget() == pTable->viewport())
        pCell->setFocus(Qt::OtherFocusReason);
}

bool CPropertyTable::IsMarked(QTableWidget* pTable, int nRow, int nColumn)
{
    return CCellMarks::Of(pTable)->Has(nRow, nColumn);
}

void CPropertyTable::MarkCell(QTableWidget* pTable, int nRow, int nColumn, const QString& strShown)
{
    // A cell the table does not have cannot be marked.
    QTableWidgetItem* pItem = pTable->item(nRow, nColumn);
    if (!pItem)
        return;
    CCellMarks::Of(pTable)->Add(nRow, nColumn);
    pItem->setBackground(QBrush(Qt::red));
    pItem->setText(strShown);
    if (ComboBox* pCell = Cell(pTable, nRow, nColumn)) {
        if (pCell->mode() == ComboBox::EditMode) {
            pCell->setText(strShown);
            pCell->setEditing(false);
        }
        pCell->setStyleSheet(kRedSheet);
    }
    Describe(pTable, nRow, nColumn);
}

void CPropertyTable::ClearMark(QTableWidget* pTable, int nRow, int nColumn)
{
    if (CCellMarks::Of(pTable)->Remove(nRow, nColumn)) {
        if (QTableWidgetItem* pItem = pTable->item(nRow, nColumn))
            pItem->setBackground(QBrush(Qt::white));
        if (ComboBox* pCell = Cell(pTable, nRow, nColumn))
            pCell->setStyleSheet(kWhiteSheet);
    }
    Describe(pTable, nRow, nColumn);
}

void CPropertyTable::Describe(QTableWidget* pTable, int nRow, int nColumn)
{
    ComboBox* pCell = Cell(pTable, nRow, nColumn);
    if (!pCell)
        return;
    QTableWidgetItem* pItem = Item(pTable, nRow, nColumn);
    const QString strMarked = IsMarked(pTable, nRow, nColumn)
        ? CTranslator::GetInstance()->GetWording(QStringLiteral("The controller did not keep this value."))
        : QString();
    pItem->setData(Qt::AccessibleTextRole, pCell->shownText());
    KeepWidthFor(pTable, pCell);
    pItem->setData(Qt::AccessibleDescriptionRole, strMarked);
    const QString strExplained = pItem->data(Qt::ToolTipRole).toString();
    pCell->setToolTip(strMarked.isEmpty() || strExplained.isEmpty() ? strExplained + strMarked
                                                                    : strExplained + "\n" + strMarked);
}

void CPropertyTable::KeepWidthFor(QTableWidget* pTable, ComboBox* pCell)
{
    // A list: its widest choice with the arrow; a number: all its digits, up
    // to more than any machine's value has (a longer one, typed in jest, is
    // cut at its right rather than widening every column past the screen).
    int nNeed = 0;
    if (QComboBox* pList = pCell->comboBox()) {
        nNeed = pList->sizeHint().width();
    } else {
        const QLabel* pLabel = pCell->label();
        const QFontMetrics metrics = pLabel->fontMetrics();
        nNeed = qMin(metrics.horizontalAdvance(pLabel->text()), metrics.horizontalAdvance(QStringLiteral("-0000000000.000")))
            + 2 * pLabel->indent() + 12;
    }
    // Narrower, the columns scroll; a number is never cut into another number.
    QHeaderView* pHeader = pTable->horizontalHeader();
    if (nNeed > pHeader->minimumSectionSize())
        pHeader->setMinimumSectionSize(nNeed);
}

void CPropertyTable::SetExplanation(QTableWidget* pTable, int nRow, int nColumn, const QString& strText)
{
    Item(pTable, nRow, nColumn)->setData(Qt::ToolTipRole, strText);
    Describe(pTable, nRow, nColumn);
}

double CPropertyTable::Round3(double dValue)
{
    // Past 2^52 a double has no fractions left to round, and times 1000 it
    // could overflow to infinity.
    if (!(std::fabs(dValue) < 4503599627370496.0))
        return dValue;
    return std::round(dValue * 1000.0) / 1000.0;
}

bool CPropertyTable::TakeTypedText(ComboBox* pCell, QString& strText)
{
    QLineEdit* pEdit = pCell ? pCell->lineEdit() : nullptr;
    if (!pEdit || !pEdit->isModified())
        return false;
    pEdit->setModified(false);
    strText = pEdit->text();
    return true;
}

int CPropertyTable::ToInt(double dValue)
{
    if (std::isnan(dValue))
        return 0;
    if (dValue <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    if (dValue >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    return int(dValue);
}

bool CPropertyTable::ParseNumber(const QString& strText, double& dValue)
{
    bool bOk = false;
    dValue = strText.toDouble(&bOk);
    // "inf" converts, but no machine value is infinite: treat it as no number.
    return bOk && !std::isinf(dValue);
}
