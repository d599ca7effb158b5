#pragma once

#include "IErrorNotifier.h"

#include <QList>
#include <QString>

class QWidget;

// Tells the user in plain words what a result code means.
class CHostNotifier : public IErrorNotifier
{
public:
    int ShowErrorCode(int nCode, int nReserved) override;
    static QString Describe(int nCode);
    // Codes shown so far, newest last (the host's status line, the tests).
    QList<int> Shown() const;

private:
    QList<int> m_shown;
};
