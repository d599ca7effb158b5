#pragma once

class IResolution;
class QTableWidget;

// The Theme tab: the host's home page addresses, one row per entry. Which
// entries show depends on the theme's name and edition.
class CThemeTab
{
public:
    // Lays out the table, reads the addresses and hides what the theme does not offer.
    static void Fill(QTableWidget* pTable, IResolution* pResolution);
    // Hands the addresses back to the permissions service, hidden rows included.
    static void Store(QTableWidget* pTable);
    // Which address member (1-based) a row shows; 0 for the locked "Start" row.
    static int MemberOfRow(int nRow);
    // The theme's version text contains "Global" (case-sensitive).
    static bool IsGlobal();
};
