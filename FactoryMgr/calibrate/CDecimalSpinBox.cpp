#include "CDecimalSpinBox.h"

CDecimalSpinBox::CDecimalSpinBox(QWidget* parent)
    : QDoubleSpinBox(parent)
{
}

QValidator::State CDecimalSpinBox::validate(QString& strText, int& nPos) const
{
    // The spin box shows and reads the locale's mark; the other one becomes it
    // as it is typed or pasted, so the text shown is always the value taken.
    const QString strPoint = locale().decimalPoint();
    if (strPoint.size() == 1)
        for (QChar& ch : strText)
            if ((ch == u'.' || ch == u',') && ch != strPoint.front())
                ch = strPoint.front();
    return QDoubleSpinBox::validate(strText, nPos);
}
