#pragma once

#include "DlgFactoryMgr.h"
#include "FactoryParams.h"

#include <QTableWidget>
#include <memory>

// A shown settings dialog over a record, and what a collect hands on.
class TabTestFixture
{
public:
    explicit TabTestFixture(const FactoryParams& record = FactoryParams());
    ~TabTestFixture();

    DlgFactoryMgr* Dialog() const { return m_pDialog.get(); }
    QTableWidget* Table(const char* szName) const;
    // Collects the controls (DataToCtrlSlot(false)) and returns the working record.
    FactoryParams Collected() const;
    QByteArray Log() const;

    FactoryParams m_record;

private:
    std::unique_ptr<DlgFactoryMgr> m_pDialog;
    QString m_strLogDir;
};
