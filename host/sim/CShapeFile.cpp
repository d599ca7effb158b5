#include "CShapeFile.h"

#include "SafeFile.h"

#include <QFile>
#include <QSaveFile>

#include <cmath>

bool CShapeFile::Read(const QString& strPath, const QByteArray& magic, QString& strError)
{
    shapes.clear();
    fields.clear();
    // A pipe or a device in the file's place is refused, never waited on.
    QByteArray bytes;
    QString strWhy;
    if (!SafeFile::ReadAll(strPath, kMaxSize, &bytes, &strWhy)) {
        strError = QStringLiteral("cannot read %1: %2").arg(strPath, strWhy);
        return false;
    }
    const QList<QByteArray> lines = bytes.split('\n');
    if (lines.isEmpty() || lines.first().trimmed() != magic + " 1") {
        strError = QStringLiteral("%1 is not a %2 file").arg(strPath, QString::fromLatin1(magic));
        return false;
    }
    for (int i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith(';'))
            continue;
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.first() == "POLYLINE") {
            QPolygonF shape;
            for (int w = 1; w < words.size(); ++w) {
                const QList<QByteArray> xy = words[w].split(',');
                bool bX = false;
                bool bY = false;
                const double dX = xy.value(0).toDouble(&bX);
                const double dY = xy.value(1).toDouble(&bY);
                if (xy.size() != 2 || !bX || !bY || !std::isfinite(dX) || !std::isfinite(dY)) {
                    strError = QStringLiteral("line %1: bad point \"%2\"").arg(i + 1).arg(QString::fromLatin1(words[w]));
                    return false;
                }
                shape << QPointF(dX, dY);
            }
            shapes << shape;
        } else if (words.size() == 2) {
            fields.insert(words[0], words[1]);
        } else {
            strError = QStringLiteral("line %1: not understood").arg(i + 1);
            return false;
        }
    }
    return true;
}

bool CShapeFile::Write(const QString& strPath, const QByteArray& magic) const
{
    QSaveFile file(strPath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray text = magic + " 1\n";
    for (auto it = fields.begin(); it != fields.end(); ++it)
        text += it.key() + ' ' + it.value() + '\n';
    for (const QPolygonF& shape : shapes) {
        text += "POLYLINE";
        for (const QPointF& point : shape)
            text += ' ' + QByteArray::number(point.x(), 'g', 12) + ',' + QByteArray::number(point.y(), 'g', 12);
        text += '\n';
    }
    file.write(text);
    return file.commit();
}

QRectF CShapeFile::Bounds() const
{
    QRectF bounds;
    for (const QPolygonF& shape : shapes)
        bounds = bounds.isNull() ? shape.boundingRect() : bounds.united(shape.boundingRect());
    return bounds;
}

QPointF CShapeFile::Travel() const
{
    QPointF travel;
    for (const QPolygonF& shape : shapes)
        for (int i = 1; i < shape.size(); ++i)
            travel += QPointF(std::fabs(shape[i].x() - shape[i - 1].x()), std::fabs(shape[i].y() - shape[i - 1].y()));
    return travel;
}
