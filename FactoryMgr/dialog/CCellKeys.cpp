#include "CCellKeys.h"

#include "ComboBox.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScrollBar>
#include <QTableWidget>

namespace {
// Keys that start typing a number: its digits, sign and decimal separators.
bool StartsNumber(const QKeyEvent* event)
{
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const QString strText = event->text();
    return strText.size() == 1 && (strText[0].isDigit() || QStringLiteral("-+.,").contains(strText[0]));
}

bool IsReturn(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

bool OpensList(const QKeyEvent* event)
{
    const bool bAlt = event->modifiers() & Qt::AltModifier;
    return (event->key() == Qt::Key_Space && !bAlt) || event->key() == Qt::Key_F4
        || (bAlt && (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up));
}
}

CCellKeys::CCellKeys(QTableWidget* pTable)
    : QObject(pTable)
    , m_pTable(pTable)
    , m_pViewport(pTable->viewport())
    , m_pFrame(new QWidget(pTable->viewport()))
{
    m_pFrame->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_pFrame->setAttribute(Qt::WA_NoSystemBackground);
    m_pFrame->hide();
    m_pFrame->installEventFilter(this);
    m_pViewport->installEventFilter(this);
    connect(m_pTable->selectionModel(), &QItemSelectionModel::currentChanged, this, &CCellKeys::PlaceFrame);
    connect(m_pTable->horizontalScrollBar(), &QScrollBar::valueChanged, this, &CCellKeys::PlaceFrame);
    connect(m_pTable->verticalScrollBar(), &QScrollBar::valueChanged, this, &CCellKeys::PlaceFrame);
    connect(m_pTable->horizontalHeader(), &QHeaderView::sectionResized, this, &CCellKeys::PlaceFrame);
    connect(m_pTable->verticalHeader(), &QHeaderView::sectionResized, this, &CCellKeys::PlaceFrame);
}

CCellKeys* CCellKeys::Of(QTableWidget* pTable)
{
    auto* pKeys = pTable->findChild<CCellKeys*>(QString(), Qt::FindDirectChildrenOnly);
    return pKeys ? pKeys : new CCellKeys(pTable);
}

void CCellKeys::SetOpener(Opener open)
{
    m_open = std::move(open);
}

void CCellKeys::Watch(ComboBox* pCell)
{
    // The cell is reached with Tab from the window's other controls; the list
    // inside never holds the focus, so its arrow keys never change it.
    pCell->setFocusPolicy(Qt::StrongFocus);
    pCell->installEventFilter(this);
    if (QComboBox* pList = pCell->comboBox()) {
        pList->setFocusPolicy(Qt::NoFocus);
        // A choice may refill the column: the focus goes to the cell's new editor.
        connect(pList, &QComboBox::activated, this, &CCellKeys::FocusCurrent, Qt::QueuedConnection);
    }
    if (QLineEdit* pEdit = pCell->lineEdit())
        pEdit->installEventFilter(this);
    // Made after the frame, the editor would cover it.
    m_pFrame->raise();
}

bool CCellKeys::CellOf(QObject* pWidget, int& nRow, int& nColumn) const
{
    auto* pCell = qobject_cast<ComboBox*>(pWidget);
    if (!pCell && pWidget)
        pCell = qobject_cast<ComboBox*>(pWidget->parent());
    if (!pCell)
        return false;
    for (nRow = 0; nRow < m_pTable->rowCount(); ++nRow)
        for (nColumn = 1; nColumn < m_pTable->columnCount(); ++nColumn)
            if (m_pTable->cellWidget(nRow, nColumn) == pCell)
                return true;
    return false;
}

bool CCellKeys::Usable(int nRow, int nColumn) const
{
    const QWidget* pCell = m_pTable->cellWidget(nRow, nColumn);
    return nColumn >= 1 && pCell && pCell->isEnabled() && !m_pTable->isRowHidden(nRow)
        && !m_pTable->isColumnHidden(nColumn);
}

void CCellKeys::SetCurrent(int nRow, int nColumn)
{
    m_pTable->selectionModel()->setCurrentIndex(m_pTable->model()->index(nRow, nColumn),
                                                QItemSelectionModel::NoUpdate);
    FocusCurrent();
    PlaceFrame();
}

void CCellKeys::FocusCurrent()
{
    const QModelIndex current = m_pTable->currentIndex();
    QWidget* pCell = current.isValid() ? m_pTable->cellWidget(current.row(), current.column()) : nullptr;
    // Only while the focus is in this table: a choice made with the mouse
    // elsewhere in the window leaves the focus where it is.
    QWidget* pFocus = QApplication::focusWidget();
    const bool bHere = !pFocus || pFocus == m_pTable || m_pTable->isAncestorOf(pFocus);
    if (pCell && bHere && !pCell->isAncestorOf(pFocus))
        pCell->setFocus(Qt::OtherFocusReason);
    m_pTable->scrollTo(current);
}

void CCellKeys::PlaceFrame()
{
    const QModelIndex current = m_pTable->currentIndex();
    if (!current.isValid() || current.column() < 1) {
        m_pFrame->hide();
        return;
    }
    m_pFrame->setGeometry(m_pTable->visualRect(current));
    m_pFrame->raise();
    m_pFrame->show();
    m_pFrame->update();
}

bool CCellKeys::Move(int nRow, int nColumn, QKeyEvent* event)
{
    const int nRows = m_pTable->rowCount();
    const int nColumns = m_pTable->columnCount();
    // The first usable cell from (r, c) on, stepping by (dr, dc); in reading
    // order (dc alone, wrapping at the row's end) when bWrap.
    const auto scan = [&](int r, int c, int dr, int dc, bool bWrap, int& nToRow, int& nToColumn) {
        while (r >= 0 && r < nRows) {
            if (c < 1 || c >= nColumns) {
                if (!bWrap)
                    return false;
                r += dc;
                c = dc > 0 ? 1 : nColumns - 1;
                continue;
            }
            if (Usable(r, c)) {
                nToRow = r;
                nToColumn = c;
                return true;
            }
            r += dr;
            c += dc;
        }
        return false;
    };
    const bool bCtrl = event->modifiers() & Qt::ControlModifier;
    const bool bForward = event->key() == Qt::Key_Tab && !(event->modifiers() & Qt::ShiftModifier);
    int r = nRow;
    int c = nColumn;
    switch (event->key()) {
    case Qt::Key_Up: scan(nRow - 1, nColumn, -1, 0, false, r, c); break;
    case Qt::Key_Down: scan(nRow + 1, nColumn, 1, 0, false, r, c); break;
    case Qt::Key_Left: scan(nRow, nColumn - 1, 0, -1, false, r, c); break;
    case Qt::Key_Right: scan(nRow, nColumn + 1, 0, 1, false, r, c); break;
    case Qt::Key_Home: scan(bCtrl ? 0 : nRow, 1, 0, 1, bCtrl, r, c); break;
    case Qt::Key_End: scan(bCtrl ? nRows - 1 : nRow, nColumns - 1, 0, -1, bCtrl, r, c); break;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (!scan(nRow, nColumn + (bForward ? 1 : -1), 0, bForward ? 1 : -1, true, r, c)) {
            Leave(QApplication::focusWidget(), bForward);
            return true;
        }
        break;
    default: return false;
    }
    SetCurrent(r, c);
    return true;
}

void CCellKeys::Leave(QWidget* pFrom, bool bForward)
{
    for (QWidget* w = pFrom; w;) {
        w = bForward ? w->nextInFocusChain() : w->previousInFocusChain();
        if (!w || w == pFrom)
            return;
        if ((w->focusPolicy() & Qt::TabFocus) && w->isVisible() && w->isEnabled() && !m_pTable->isAncestorOf(w)
            && w->window() == m_pTable->window()) {
            w->setFocus(bForward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return;
        }
    }
}

bool CCellKeys::CellKey(ComboBox* pCell, int nRow, int nColumn, QKeyEvent* event)
{
    if (pCell->comboBox()) {
        if (OpensList(event)) {
            if (m_open)
                m_open(nRow, nColumn);
            if (auto* pNow = qobject_cast<ComboBox*>(m_pTable->cellWidget(nRow, nColumn)); pNow && pNow->comboBox())
                pNow->comboBox()->showPopup();
            return true;
        }
    } else if (StartsNumber(event) || IsReturn(event) || event->key() == Qt::Key_F2) {
        if (m_open)
            m_open(nRow, nColumn);
        auto* pNow = qobject_cast<ComboBox*>(m_pTable->cellWidget(nRow, nColumn));
        QLineEdit* pEdit = pNow ? pNow->lineEdit() : nullptr;
        if (pEdit && pEdit->hasFocus() && StartsNumber(event)) {
            QKeyEvent typed(event->type(), event->key(), event->modifiers(), event->text());
            QCoreApplication::sendEvent(pEdit, &typed);
        }
        return true;
    }
    if (Move(nRow, nColumn, event))
        return true;
    // Any other key without Ctrl or Alt changes nothing here; with them it
    // is the window's (shortcuts, Ctrl+Tab between the pages).
    const bool bWindowKey = event->key() == Qt::Key_Escape
        || (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return !bWindowKey;
}

bool CCellKeys::TypingKey(ComboBox* pCell, int nRow, int nColumn, QKeyEvent* event)
{
    QLineEdit* pEdit = pCell->lineEdit();
    if (event->key() == Qt::Key_Escape) {
        // The stored value, which the label still shows, comes back.
        pEdit->setText(pCell->label()->text());
        pEdit->setModified(false);
        pCell->setFocus(Qt::OtherFocusReason);
        pCell->setEditing(false);
        return true;
    }
    QKeyEvent move(event->type(), IsReturn(event) ? Qt::Key_Down : event->key(), event->modifiers());
    const int nKey = move.key();
    if (nKey != Qt::Key_Down && nKey != Qt::Key_Up && nKey != Qt::Key_Tab && nKey != Qt::Key_Backtab)
        return false;
    // Committed as Return commits in a line edit: the tab stores what was
    // typed, and may make the cell's editor anew.
    emit pEdit->editingFinished();
    pCell->setFocus(Qt::OtherFocusReason);
    Move(nRow, nColumn, &move);
    return true;
}

bool CCellKeys::eventFilter(QObject* pWatched, QEvent* event)
{
    if (pWatched == m_pFrame && event->type() == QEvent::Paint) {
        QPainter painter(m_pFrame);
        painter.setPen(QPen(m_pFrame->palette().color(QPalette::Highlight), 2));
        painter.drawRect(QRectF(m_pFrame->rect()).adjusted(1, 1, -1, -1));
        return true;
    }
    // The viewport is compared as a plain object: it also reports events while
    // the table is being destroyed.
    if (pWatched == m_pViewport) {
        if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
            PlaceFrame();
        return false;
    }
    int nRow = -1;
    int nColumn = -1;
    if (event->type() == QEvent::FocusIn && qobject_cast<ComboBox*>(pWatched) && CellOf(pWatched, nRow, nColumn)) {
        // Reached by Tab from outside, or by a click: this is the current cell.
        m_pTable->selectionModel()->setCurrentIndex(m_pTable->model()->index(nRow, nColumn), QItemSelectionModel::NoUpdate);
        PlaceFrame();
        return false;
    }
    if (event->type() != QEvent::KeyPress || !CellOf(pWatched, nRow, nColumn))
        return false;
    auto* pKey = static_cast<QKeyEvent*>(event);
    auto* pCell = qobject_cast<ComboBox*>(m_pTable->cellWidget(nRow, nColumn));
    if (pWatched == pCell)
        return CellKey(pCell, nRow, nColumn, pKey);
    if (pCell && pWatched == pCell->lineEdit())
        return TypingKey(pCell, nRow, nColumn, pKey);
    return false;
}
