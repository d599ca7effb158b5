#pragma once

#include <QDoubleSpinBox>

// A spin box for measured lengths that takes both "." and "," as the decimal
// point, whatever the locale. A plain QDoubleSpinBox reads the locale's group
// separator as nothing: "151.5" typed on a German desktop became 1515, and
// "151,5" on an English one as well. A ruler's reading never has thousands,
// so either mark can only mean the decimal point.
class CDecimalSpinBox : public QDoubleSpinBox
{
    Q_OBJECT
public:
    explicit CDecimalSpinBox(QWidget* parent = nullptr);

    QValidator::State validate(QString& strText, int& nPos) const override;
};
