#include "CActivityPanel.h"

#include "CHostNotifier.h"
#include "CLogWriter.h"
#include "Wording.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QDateTime>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
QStringList Columns(const QTreeWidgetItem* pRow)
{
    QStringList columns;
    for (int c = 0; c < pRow->columnCount(); ++c)
        columns << pRow->text(c);
    return columns;
}

bool Shows(const QStringList& columns, const QString& strFilter)
{
    return strFilter.isEmpty() || columns.join('\t').contains(strFilter, Qt::CaseInsensitive);
}
}

CActivityPanel::CActivityPanel(QWidget* parent)
    : QDockWidget(parent)
{
    setObjectName(QStringLiteral("dock_activity"));
    auto* pContents = new QWidget(this);
    auto* pLayout = new QVBoxLayout(pContents);
    auto* pBar = new QHBoxLayout;
    m_pFilter = new QLineEdit(pContents);
    m_pFilter->setObjectName(QStringLiteral("lineEdit_activityFilter"));
    m_pFilter->setClearButtonEnabled(true);
    m_pCopy = new QPushButton(pContents);
    m_pCopy->setObjectName(QStringLiteral("pushButton_activityCopy"));
    pBar->addWidget(m_pFilter);
    pBar->addWidget(m_pCopy);
    m_pRows = new QTreeWidget(pContents);
    m_pRows->setObjectName(QStringLiteral("tree_activity"));
    m_pRows->setRootIsDecorated(false);
    m_pRows->setUniformRowHeights(true);
    m_pRows->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pRows->setColumnCount(6);
    m_pRows->header()->setStretchLastSection(true);
    int nColumn = 0;
    for (int nWidth : {95, 60, 360, 55, 260})
        m_pRows->setColumnWidth(nColumn++, nWidth);
    pLayout->addLayout(pBar);
    pLayout->addWidget(m_pRows);
    setWidget(pContents);
    connect(m_pFilter, &QLineEdit::textChanged, this, &CActivityPanel::ApplyFilter);
    connect(m_pCopy, &QPushButton::clicked, this, &CActivityPanel::CopyShownRows);
    RetranslateUi();

    // The plug-in's log lines, from whichever thread writes them.
    CLogWriter::GetInstance()->SetListener([this](const QByteArray& line) { AddLogLine(QString::fromUtf8(line)); });
}

CActivityPanel::~CActivityPanel()
{
    CLogWriter::GetInstance()->SetListener({});
}

void CActivityPanel::RetranslateUi()
{
    setWindowTitle(Wording("Activity"));
    m_pFilter->setPlaceholderText(Wording("Filter"));
    m_pCopy->setText(Wording("Copy"));
    m_pRows->setHeaderLabels({Wording("Time"), Wording("Source"), Wording("What"), Wording("Result"),
                              Wording("Meaning"), Wording("ms")});
    // Qt names the title bar's buttons for assistive technology once, when
    // the panel is made: they are named again in the language now chosen.
    if (auto* pClose = findChild<QAbstractButton*>(QStringLiteral("qt_dockwidget_closebutton"))) {
        pClose->setAccessibleName(QDockWidget::tr("Close"));
        pClose->setAccessibleDescription(QDockWidget::tr("Closes the dock widget"));
    }
    if (auto* pFloat = findChild<QAbstractButton*>(QStringLiteral("qt_dockwidget_floatbutton"))) {
        pFloat->setAccessibleName(QDockWidget::tr("Float"));
        pFloat->setAccessibleDescription(QDockWidget::tr("Undocks and re-attaches the dock widget"));
    }
}

void CActivityPanel::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        RetranslateUi();
    QDockWidget::changeEvent(event);
}

void CActivityPanel::AddDeviceCall(const QString& strOperation, const QString& strArgument, int nResult,
                                   qint64 nMicroseconds)
{
    // A card function's result is a code; the card lookup's is whether there is one.
    QString strMeaning;
    if (strOperation == QLatin1String("GetCurrentCard"))
        strMeaning = nResult ? Wording("a card") : Wording("no card");
    else if (strOperation == QLatin1String("GetState") || strOperation == QLatin1String("IsBusy"))
        strMeaning = QString();
    else
        strMeaning = nResult == 0 ? Wording("OK") : CHostNotifier::Describe(nResult);
    const QString strWhat = strArgument.isEmpty() ? strOperation : QStringLiteral("%1(%2)").arg(strOperation, strArgument);
    AddRow(Wording("Device"), strWhat, QString::number(nResult), strMeaning,
           QString::number(double(nMicroseconds) / 1000.0, 'f', 3));
}

void CActivityPanel::AddReport(const QString& strText)
{
    AddRow(Wording("Host"), QString(strText).replace('\n', QStringLiteral(" / ")), QString(), QString(), QString());
}

void CActivityPanel::AddLogLine(const QString& strLine)
{
    // The row has its time already: the line's own date and time go.
    static const QRegularExpression kStamp(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "));
    AddRow(Wording("Log"), QString(strLine).remove(kStamp), QString(), QString(), QString());
}

void CActivityPanel::AddRow(const QString& strSource, const QString& strWhat, const QString& strResult,
                            const QString& strMeaning, const QString& strDuration)
{
    const QStringList columns{QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz")), strSource,
                              strWhat, strResult, strMeaning, strDuration};
    // Rows are added on the panel's own thread, in the order they came. The
    // hand-over is a list under a lock and a plain event: a race detector
    // sees the lock, where it cannot follow a queued functor through Qt.
    QMutexLocker locker(&m_pendingMutex);
    m_pending << columns;
    if (m_pending.size() == 1)
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool CActivityPanel::event(QEvent* event)
{
    if (event->type() != QEvent::User)
        return QDockWidget::event(event);
    QList<QStringList> rows;
    {
        QMutexLocker locker(&m_pendingMutex);
        rows.swap(m_pending);
    }
    for (const QStringList& columns : rows) {
        auto* pRow = new QTreeWidgetItem(columns);
        m_pRows->insertTopLevelItem(0, pRow);
        pRow->setHidden(!Shows(columns, m_pFilter->text()));
    }
    while (m_pRows->topLevelItemCount() > kMaxRows)
        delete m_pRows->takeTopLevelItem(m_pRows->topLevelItemCount() - 1);
    return true;
}

void CActivityPanel::SetFilter(const QString& strText)
{
    m_pFilter->setText(strText);
}

void CActivityPanel::ApplyFilter()
{
    for (int i = 0; i < m_pRows->topLevelItemCount(); ++i) {
        QTreeWidgetItem* pRow = m_pRows->topLevelItem(i);
        pRow->setHidden(!Shows(Columns(pRow), m_pFilter->text()));
    }
}

QStringList CActivityPanel::ShownRows() const
{
    QStringList rows;
    for (int i = 0; i < m_pRows->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* pRow = m_pRows->topLevelItem(i);
        if (!pRow->isHidden())
            rows << Columns(pRow).join('\t');
    }
    return rows;
}

void CActivityPanel::CopyShownRows() const
{
    QApplication::clipboard()->setText(ShownRows().join('\n') + '\n');
}
