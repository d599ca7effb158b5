#pragma once

#include <QDockWidget>
#include <QMutex>

class QLineEdit;
class QPushButton;
class QTreeWidget;

// What a host integrator watches: newest first, for the whole session, every
// device call the plug-in made through the host objects (operation or card
// function, argument, result and its meaning, duration), every result the
// host reported, and the plug-in's log lines as they are written. A filter
// keeps the rows that contain its text; Copy puts the rows shown on the
// clipboard, one line each.
class CActivityPanel : public QDockWidget
{
    Q_OBJECT
public:
    explicit CActivityPanel(QWidget* parent = nullptr);
    ~CActivityPanel() override;

    // The rows kept at most; the oldest go first.
    static constexpr int kMaxRows = 20000;

    // Each may be called from any thread.
    void AddDeviceCall(const QString& strOperation, const QString& strArgument, int nResult, qint64 nMicroseconds);
    void AddReport(const QString& strText);
    void AddLogLine(const QString& strLine);

    // The rows shown, newest first, as the clipboard gets them.
    QStringList ShownRows() const;
    void SetFilter(const QString& strText);
    void CopyShownRows() const;

protected:
    void changeEvent(QEvent* event) override;
    // Takes in the rows added from any thread.
    bool event(QEvent* event) override;

private:
    void AddRow(const QString& strSource, const QString& strWhat, const QString& strResult, const QString& strMeaning,
                const QString& strDuration);
    void ApplyFilter();
    void RetranslateUi();

    QLineEdit* m_pFilter;
    QPushButton* m_pCopy;
    QTreeWidget* m_pRows;
    QMutex m_pendingMutex;
    QList<QStringList> m_pending;
};
