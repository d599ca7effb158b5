#include "ComboBox.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QResizeEvent>
#include <QStyle>
#include <QStyleOptionComboBox>

ComboBox::ComboBox(QWidget* parent, int nMode)
    : QWidget(parent)
    , m_nMode(nMode)
    , m_pCombo(nullptr)
    , m_pLineEdit(nullptr)
    , m_pLabel(nullptr)
{
    if (nMode == ListMode) {
        m_pCombo = new QComboBox(this);
        // The wheel alone never gives a list the focus: a list the person has
        // not opened passes the wheel on to the table, which scrolls.
        m_pCombo->setFocusPolicy(Qt::StrongFocus);
        m_pCombo->installEventFilter(this);
    } else if (nMode == EditMode) {
        m_pLineEdit = new QLineEdit(this);
        m_pLineEdit->setFrame(false);
        m_pLineEdit->installEventFilter(this);
    }
    m_pLabel = new QLabel(this);
    m_pLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_pLabel->hide();
    setFocusPolicy(Qt::ClickFocus);
    // Opaque, so that nothing of the table item beneath shows through; a
    // style sheet's background (the red mark) fills the whole cell.
    setAttribute(Qt::WA_StyledBackground);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    // Nothing flashes at the top left before the table places the cell.
    hide();
    move(-10000, -10000);
}

ComboBox::~ComboBox() = default;

void ComboBox::addItem(const QString& strText)
{
    if (m_pCombo)
        m_pCombo->addItem(strText, QVariant());
}

void ComboBox::setItemData(int nIndex, const QVariant& value, int nRole)
{
    if (m_pCombo)
        m_pCombo->setItemData(nIndex, value, nRole);
}

QVariant ComboBox::itemData(int nIndex, int nRole) const
{
    return m_pCombo ? m_pCombo->itemData(nIndex, nRole) : QVariant();
}

int ComboBox::currentIndex() const
{
    return m_pCombo ? m_pCombo->currentIndex() : -1;
}

void ComboBox::setCurrentIndex(int nIndex)
{
    if (m_pCombo)
        m_pCombo->setCurrentIndex(nIndex);
}

QComboBox* ComboBox::comboBox() const
{
    return m_pCombo;
}

QLineEdit* ComboBox::lineEdit() const
{
    return m_pLineEdit;
}

QLabel* ComboBox::label() const
{
    return m_pLabel;
}

void ComboBox::setText(const QString& strText)
{
    if (m_pLineEdit)
        m_pLineEdit->setText(strText);
    m_pLabel->setText(strText);
    m_pLabel->hide();
}

QString ComboBox::text() const
{
    return m_pLineEdit ? m_pLineEdit->text() : QString();
}

int ComboBox::mode() const
{
    return m_nMode;
}

QString ComboBox::shownText() const
{
    return m_pCombo ? m_pCombo->currentText() : m_pLabel->text();
}

void ComboBox::setEditing(bool bOn)
{
    if (m_pCombo) {
        m_pCombo->setVisible(bOn);
    } else if (m_pLineEdit) {
        if (bOn) {
            m_pLabel->hide();
            m_pLineEdit->show();
            m_pLineEdit->setFocus(Qt::OtherFocusReason);
            m_pLineEdit->selectAll();
        } else {
            // The cell keeps the focus: hidden with it, the line edit would
            // pass it along the focus chain, to some other cell's list.
            if (m_pLineEdit->hasFocus())
                setFocus(Qt::OtherFocusReason);
            m_pLineEdit->hide();
            m_pLabel->show();
        }
    }
}

void ComboBox::resizeEvent(QResizeEvent* event)
{
    if (m_pCombo)
        m_pCombo->resize(event->size());
    else if (m_pLineEdit)
        m_pLineEdit->resize(event->size());
    m_pLabel->resize(event->size());
    AlignContents();
}

void ComboBox::AlignContents()
{
    // A list draws its choice one pixel inside its edit field; the number on
    // the label and in the line edit (which adds two pixels of its own) start
    // at the same place.
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.rect = rect();
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, nullptr);
    const int nTextLeft = qMax(0, field.left() - rect().left() + 1);
    m_pLabel->setIndent(nTextLeft);
    if (m_pLineEdit)
        m_pLineEdit->setTextMargins(qMax(0, nTextLeft - 2), 0, 0, 0);
}

bool ComboBox::eventFilter(QObject* pWatched, QEvent* event)
{
    if (pWatched == m_pLineEdit && event->type() == QEvent::MouseButtonDblClick) {
        // A double click on a number takes all of it, not the digits on one
        // side of the decimal point: typing then replaces the value.
        m_pLineEdit->selectAll();
        return true;
    }
    if (pWatched == m_pCombo) {
        if (event->type() == QEvent::Wheel && !m_pCombo->hasFocus()) {
            // Ignored, the wheel goes on to the table, which scrolls.
            event->ignore();
            return true;
        }
        if (event->type() == QEvent::MouseButtonPress && m_pCombo->isEnabled()
            && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
            // The list covers its cell: a press on it is a click on the cell,
            // so the table records the cell before the person chooses.
            QWidget* pViewport = parentWidget();
            auto* pView = qobject_cast<QAbstractItemView*>(pViewport ? pViewport->parentWidget() : nullptr);
            const QModelIndex index = pView && pView->viewport() == pViewport ? pView->indexAt(geometry().center())
                                                                              : QModelIndex();
            if (index.isValid()) {
                emit pView->clicked(index);
                // Typing committed as the press took the focus may have
                // refilled the column: this list is on its way out, and the
                // one now in the cell opens instead.
                auto* pNow = qobject_cast<ComboBox*>(pView->indexWidget(index));
                if (pNow && pNow != this && pNow->comboBox()) {
                    pNow->comboBox()->setFocus(Qt::MouseFocusReason);
                    pNow->comboBox()->showPopup();
                    return true;
                }
            }
        }
    }
    return QWidget::eventFilter(pWatched, event);
}
