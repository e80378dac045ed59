#ifndef BOXFIXTURE_H
#define BOXFIXTURE_H

#include "pdtm.h"
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <sys/stat.h>

/** The folder of internal storage, as the store has it. */
inline QString boxFolder()
{
    return qEnvironmentVariable("HOME") + "/Applications/dtm/";
}

/** Tells two states of a file apart: contents, time of change, and which file it is. */
struct FileState
{
    QByteArray contents;
    quint64 inode = 0;
    qint64 seconds = 0;
    qint64 nanoseconds = 0;
    bool operator==(const FileState &) const = default;
};

inline FileState fileState(const QString &path)
{
    FileState state;
    struct stat info = {};
    if (stat(QFile::encodeName(path), &info) == 0) {
        state.inode = info.st_ino;
        state.seconds = info.st_mtim.tv_sec;
        state.nanoseconds = info.st_mtim.tv_nsec;
    }
    // Not by this process itself: closing a plain descriptor would drop the locks that it has on an open box.
    QProcess cat;
    cat.start("cat", {path});
    cat.waitForFinished();
    state.contents = cat.readAllStandardOutput();
    return state;
}

/** Boxes and indexes in a folder. What SQLite and the lock keep beside a box is left out. */
inline QMap<QString, FileState> folderState(const QString &folder = boxFolder(),
                                            const QString &prefix = QString())
{
    QMap<QString, FileState> states;
    for (const QString &name : QDir(folder).entryList(QDir::Files)) {
        const bool beside = name.endsWith("-lock") || name.endsWith("-wal") || name.endsWith("-shm");
        if (!beside && name.startsWith(prefix))
            states.insert(name, fileState(folder + name));
    }
    return states;
}

/** All visible cards of an index in its order, read through the store. */
inline QList<int> cardsOf(const QByteArray &index)
{
    QList<int> cards;
    uint16_t number = 0;
    while (_NextIndexNo(index, 0x40, 0, 0, &number) == PdtmOk) {
        uint16_t card = 0;
        if (_IndexNoToCardID(index, number, &card) != PdtmOk)
            return {-1};
        cards.append(card);
    }
    return cards;
}

/** Adds a card with text items to a box through the store; its id, 0 on failure. */
inline int addCard(uint32_t box, const QMap<QByteArray, QByteArray> &items)
{
    uint16_t work = PdtmWorkCard;
    uint16_t card = 0;
    _CardDelete(box, work);
    if (_CardCreate(box, &work) != PdtmOk)
        return 0;
    for (auto item = items.cbegin(); item != items.cend(); ++item) {
        CardItemKey key = {work, {}};
        memcpy(key.code, item.key().constData(), sizeof key.code);
        if (_CardWrite(box, &key, item.value().constData(), uint32_t(item.value().size())) != PdtmOk)
            return 0;
    }
    return _CardCopy(box, work, &card) == PdtmOk ? card : 0;
}

#endif
