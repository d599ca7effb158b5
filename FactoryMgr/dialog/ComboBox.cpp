#include "ComboBox.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QResizeEvent>

ComboBox::ComboBox(QWidget* parent, int nMode)
    : QWidget(parent)
    , m_nMode(nMode)
    , m_pCombo(nullptr)
    , m_pLineEdit(nullptr)
    , m_pLabel(nullptr)
{
    if (nMode == ListMode)
        m_pCombo = new QComboBox(this);
    else if (nMode == EditMode)
        m_pLineEdit = new QLineEdit(this);
    m_pLabel = new QLabel(this);
    m_pLabel->hide();
    setFocusPolicy(Qt::ClickFocus);
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

void ComboBox::setEditing(bool bOn)
{
    if (m_pCombo) {
        m_pCombo->setVisible(bOn);
        m_pCombo->setFocus();
    } else if (m_pLineEdit) {
        m_pLabel->setVisible(!bOn);
        m_pLineEdit->setVisible(bOn);
    }
}

void ComboBox::resizeEvent(QResizeEvent* event)
{
    if (m_pCombo)
        m_pCombo->resize(event->size());
    else if (m_pLineEdit)
        m_pLineEdit->resize(event->size());
}
