#pragma once

#include <QByteArray>
#include <QMap>
#include <QPolygonF>
#include <QString>
#include <QVector>

// The small text format of the standard pattern (.lcpx, magic "LCPX") and of
// the machine job cut from it (.tl, magic "TL"):
//
//   LCPX 1                       magic and format version, first line
//   ; a comment                  lines starting with ';' and blank lines are skipped
//   UNIT mm                      NAME value: a field (UNIT, POWER, ...)
//   POLYLINE 0,0 150,0 150,150   a cut path, points in millimetres
//
// Anything else is an error, reported with its line number.
class CShapeFile
{
public:
    // Pattern and job files are a few kilobytes; a larger one is refused unread.
    static constexpr qint64 kMaxSize = 16 * 1024 * 1024;
    QVector<QPolygonF> shapes;
    QMap<QByteArray, QByteArray> fields;

    // False, with a reason in strError, when the file cannot be read, does not
    // start with the magic, or has a line it does not understand.
    bool Read(const QString& strPath, const QByteArray& magic, QString& strError);
    bool Write(const QString& strPath, const QByteArray& magic) const;
    // The box around every point of every shape (empty without points).
    QRectF Bounds() const;
    // Length of all paths, split into X and Y movement.
    QPointF Travel() const;
};
