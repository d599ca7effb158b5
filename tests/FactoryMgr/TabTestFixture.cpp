#include "TabTestFixture.h"

#include "CLogWriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QUuid>
#include <QtTest>

TabTestFixture::TabTestFixture(const FactoryParams& record)
    : m_record(record)
    , m_strLogDir(QDir::tempPath() + "/factorymgr-tabs-" + QUuid::createUuid().toString(QUuid::Id128))
{
    CLogWriter::GetInstance()->SetDirectory(m_strLogDir);
    m_pDialog = std::make_unique<DlgFactoryMgr>(&m_record);
    m_pDialog->show();
    if (!QTest::qWaitForWindowExposed(m_pDialog.get()))
        qWarning("the settings dialog was not shown");
}

TabTestFixture::~TabTestFixture()
{
    m_pDialog.reset();
    CLogWriter::GetInstance()->SetDirectory(QString());
    QDir(m_strLogDir).removeRecursively();
}

QTableWidget* TabTestFixture::Table(const char* szName) const
{
    return m_pDialog->findChild<QTableWidget*>(QString::fromLatin1(szName));
}

FactoryParams TabTestFixture::Collected() const
{
    m_pDialog->DataToCtrlSlot(false);
    FactoryParams params;
    m_pDialog->GetParams(params);
    return params;
}

QByteArray TabTestFixture::Log() const
{
    QFile file(CLogWriter::GetInstance()->FilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
