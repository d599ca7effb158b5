#include "CTipsBox.h"

#include "ILog.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

void CTipsBox::Show(QWidget* pParent, const QString& strTitle, const QString& strText, const QString& strButton)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        ILog_WriteLogF(1, "%s: %s", strTitle.toUtf8().constData(), strText.toUtf8().constData());
        return;
    }
    QMessageBox box(QMessageBox::Information, strTitle, strText, QMessageBox::NoButton, pParent);
    box.setObjectName(QStringLiteral("tipsBox"));
    box.addButton(strButton, QMessageBox::AcceptRole);
    box.exec();
}

void CTipsBox::ShowTranslated(const char* szText)
{
    Show(nullptr, QCoreApplication::translate("CFactoryMgrIns", "Tips"),
         QCoreApplication::translate("CFactoryMgrIns", szText), QCoreApplication::translate("CFactoryMgrIns", "OK"));
}
