#include "mounttable_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

bool isOctal(char c)
{
    return c >= '0' && c <= '7';
}

/** The value of an escape such as \040 at a position; -1 when there is none. */
int octalAt(const QByteArray &field, qsizetype at)
{
    const bool isEscape = field[at] == '\\' && at + 3 < field.size() && field[at + 1] <= '3' &&
                          isOctal(field[at + 1]) && isOctal(field[at + 2]) && isOctal(field[at + 3]);
    return isEscape ? field.mid(at + 1, 3).toInt(nullptr, 8) : -1;
}

bool isAtOrBelow(const QString &path, const QString &folder)
{
    return path == folder || folder == QLatin1String("/") || path.startsWith(folder + QLatin1Char('/'));
}

QString unescaped(const QByteArray &field)
{
    QByteArray plain;
    for (qsizetype i = 0; i < field.size(); ++i) {
        const int value = octalAt(field, i);
        plain += value < 0 ? field[i] : static_cast<char>(value);
        if (value >= 0)
            i += 3;
    }
    return QFile::decodeName(plain);
}

} // namespace

QList<MountEntry> parseMountTable(const QByteArray &table)
{
    QList<MountEntry> mounts;
    for (const QByteArray &line : table.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 4 && fields[1].startsWith('/'))
            mounts.append({unescaped(fields[0]), QDir::cleanPath(unescaped(fields[1])), unescaped(fields[2]),
                           unescaped(fields[3]).split(QLatin1Char(','))});
    }
    return mounts;
}

qsizetype indexHolding(const QList<MountEntry> &mounts, const QString &path, qsizetype first)
{
    qsizetype nearest = -1;
    for (qsizetype i = first; i < mounts.size(); ++i) {
        if (isAtOrBelow(path, mounts[i].path) &&
            (nearest < 0 || mounts[i].path.size() >= mounts[nearest].path.size()))
            nearest = i;
    }
    return nearest;
}

QString resolvedPath(const QString &path)
{
    const QString whole = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    qsizetype existing = 0;
    for (qsizetype end = 0; end < whole.size() && end == existing;) {
        end = whole.indexOf(QLatin1Char('/'), existing + 1);
        end = end < 0 ? whole.size() : end;
        if (QFileInfo::exists(whole.first(end)))
            existing = end;
    }
    const QString folder = existing == 0 ? QStringLiteral("/") : whole.first(existing);
    return QDir::cleanPath(QFileInfo(folder).canonicalFilePath() + whole.mid(existing));
}
