#pragma once

#include <QString>

class DlgFactoryMgr;
class QTableWidget;

// The System tab: what the controller reports about itself (versions and
// counters), clearing the counters, and the mainboard and panel upgrades.
class CSystemTab
{
public:
    CSystemTab(DlgFactoryMgr* pDialog, QTableWidget* pTable);

    // hours:minutes:seconds, no padding, no limit on the hours.
    static QString FormatDuration(int nSeconds);
    // Reads the controller into the table; a failed read leaves it as it was.
    void FillSystemTab(bool bShowError);
    // The first showing of the page loads it; later ones show the same values.
    void Shown();
    void Clear();
    // nTask: 1 mainboard (.upd), 0 panel (.hmt, .hmi).
    void Upgrade(int nTask);

    bool IsLoaded() const { return m_bSystemTabLoaded; }

private:
    DlgFactoryMgr* m_pDialog;
    QTableWidget* m_pTable;
    bool m_bSystemTabLoaded = false;
};
