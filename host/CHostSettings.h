#pragma once

#include <QByteArray>
#include <QString>

// The host's own settings, in Data/Host.ini under the user data directory:
// the display unit, the language, and where the person left the windows.
// (QSettings writes the file under a lock file beside it.) A file that is no
// regular file, too large, or holding values the host never writes is read
// as far as it can be and never written; the log says why, once.
class CHostSettings
{
public:
    static QString Path();

    static int Unit();
    static void SetUnit(int nUnit);
    static QString Language();
    static void SetLanguage(const QString& strLanguage);
    // A window's geometry (QWidget::saveGeometry) under its name; empty when none was kept.
    static QByteArray Geometry(const QString& strWindow);
    static void SetGeometry(const QString& strWindow, const QByteArray& geometry);
    // The main window's docks and toolbars (QMainWindow::saveState).
    static QByteArray State();
    static void SetState(const QByteArray& state);
};
