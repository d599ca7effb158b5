#pragma once

class IResolution;
class QTableWidget;

// What every property table of the settings dialog shares: the label column
// fixed at the display-scaled 255 pixels and greyed, rows the display-scaled
// 35 pixels high, the other columns stretched.
class CPropertyTable
{
public:
    // The design length scaled for the screen; unscaled without the service.
    static double Scaled(IResolution* pResolution, double dLength);
    static void Format(QTableWidget* pTable, IResolution* pResolution);
    // Makes a cell read-only and grey, like a label.
    static void LockCell(QTableWidget* pTable, int nRow, int nColumn);
};
