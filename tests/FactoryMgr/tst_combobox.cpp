#include "TestMain.h"

#include "ComboBox.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

class TestComboBox : public QObject
{
    Q_OBJECT
private slots:
    void madeHiddenAndOutOfSight();
    void listModeIgnoresTheLineEditButSetsItsLabel();
    void editModeHasNoListAndIgnoresListCalls();
    void anyOtherModeHasNeither();
    void editingSwitchesBetweenLabelAndLineEdit();
    void editingShowsOrHidesTheList();
    void innerEditorCoversTheWidgetAfterAResize();
    void metaTypeFactoryMakesAListModeInstance();
};

void TestComboBox::madeHiddenAndOutOfSight()
{
    QWidget parent;
    ComboBox cell(&parent, ComboBox::EditMode);
    QVERIFY(cell.isHidden());
    QCOMPARE(cell.pos(), QPoint(-10000, -10000));
    QCOMPARE(cell.focusPolicy(), Qt::ClickFocus);
    QVERIFY(cell.label()->isHidden());
    QCOMPARE(cell.parentWidget(), &parent);
}

void TestComboBox::listModeIgnoresTheLineEditButSetsItsLabel()
{
    ComboBox cell(nullptr, ComboBox::ListMode);
    QVERIFY(cell.comboBox());
    QVERIFY(!cell.lineEdit());
    cell.addItem("No");
    cell.addItem("Yes");
    cell.setItemData(1, 42, Qt::UserRole + 1);
    QCOMPARE(cell.itemData(1, Qt::UserRole + 1).toInt(), 42);
    QVERIFY(!cell.itemData(0, Qt::UserRole + 1).isValid());
    cell.setCurrentIndex(1);
    QCOMPARE(cell.currentIndex(), 1);
    cell.setText("12.50");
    QCOMPARE(cell.label()->text(), QStringLiteral("12.50"));
    QVERIFY(cell.label()->isHidden());
    QCOMPARE(cell.text(), QString());
    QCOMPARE(cell.comboBox()->currentText(), QStringLiteral("Yes"));
    QCOMPARE(cell.mode(), int(ComboBox::ListMode));
}

void TestComboBox::editModeHasNoListAndIgnoresListCalls()
{
    ComboBox cell(nullptr, ComboBox::EditMode);
    QVERIFY(!cell.comboBox());
    QVERIFY(cell.lineEdit());
    cell.addItem("No");
    cell.setItemData(0, 1);
    cell.setCurrentIndex(0);
    QCOMPARE(cell.currentIndex(), -1);
    QVERIFY(!cell.itemData(0).isValid());
    cell.setText("3.25");
    QCOMPARE(cell.text(), QStringLiteral("3.25"));
    QCOMPARE(cell.lineEdit()->text(), QStringLiteral("3.25"));
    QCOMPARE(cell.label()->text(), QStringLiteral("3.25"));
}

void TestComboBox::anyOtherModeHasNeither()
{
    ComboBox cell(nullptr, 7);
    QVERIFY(!cell.comboBox());
    QVERIFY(!cell.lineEdit());
    QVERIFY(cell.label());
    cell.setEditing(true);
    cell.setText("x");
    QCOMPARE(cell.label()->text(), QStringLiteral("x"));
}

void TestComboBox::editingSwitchesBetweenLabelAndLineEdit()
{
    ComboBox cell(nullptr, ComboBox::EditMode);
    cell.setEditing(true);
    QVERIFY(cell.label()->isHidden());
    QVERIFY(!cell.lineEdit()->isHidden());
    cell.setEditing(false);
    QVERIFY(!cell.label()->isHidden());
    QVERIFY(cell.lineEdit()->isHidden());
}

void TestComboBox::editingShowsOrHidesTheList()
{
    ComboBox cell(nullptr, ComboBox::ListMode);
    cell.setEditing(false);
    QVERIFY(cell.comboBox()->isHidden());
    cell.setEditing(true);
    QVERIFY(!cell.comboBox()->isHidden());
}

void TestComboBox::innerEditorCoversTheWidgetAfterAResize()
{
    for (int nMode : {int(ComboBox::ListMode), int(ComboBox::EditMode)}) {
        ComboBox cell(nullptr, nMode);
        cell.resize(173, 41);
        QResizeEvent event(QSize(173, 41), QSize());
        QApplication::sendEvent(&cell, &event);
        QWidget* pInner = nMode == ComboBox::ListMode ? static_cast<QWidget*>(cell.comboBox())
                                                      : static_cast<QWidget*>(cell.lineEdit());
        QCOMPARE(pInner->size(), QSize(173, 41));
        QCOMPARE(pInner->pos(), QPoint(0, 0));
    }
}

void TestComboBox::metaTypeFactoryMakesAListModeInstance()
{
    QObject* pObject = ComboBox::staticMetaObject.newInstance();
    QVERIFY(pObject);
    auto* pCell = qobject_cast<ComboBox*>(pObject);
    QVERIFY(pCell);
    QCOMPARE(pCell->mode(), int(ComboBox::ListMode));
    QVERIFY(pCell->parentWidget() == nullptr);
    delete pObject;
}

FACTORYMGR_TEST_MAIN(TestComboBox)
#include "tst_combobox.moc"
