#ifndef KY_TEST_RECORDFIXTURE_H
#define KY_TEST_RECORDFIXTURE_H

#include "kypdatamanager.h"
#include "kypdatamanager_p.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include <dlfcn.h>
#include <QTest>

/** The next definition of a store operation that the test program defines itself. */
template <typename Function> Function *nextDefinition(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/** Opens the private record of a manager to tests: a member pointer in an explicit instantiation may name a
 * private member. */
template <auto Member> struct Reveal
{
    friend KyPDtm::KyPDataManagerPrivate &privateOf(KyPDataManager &manager) { return *(manager.*Member); }
};
KyPDtm::KyPDataManagerPrivate &privateOf(KyPDataManager &manager);
template struct Reveal<&KyPDataManager::d>;

/** A box of its own for each test: one item of each type, master index by `TITL` ascending. */
class TestBox
{
public:
    static constexpr unsigned long ApplicationId = 0x54455354; // TEST

    TestBox() : m_stem("F0:TB" + QByteArray::number(++count()))
    {
        KyPDataManagerSortKey order;
        order.addSortKey("TITL", true, true);
        make("IDX", order);
    }
    /** A box whose master index has another name, and no order for an empty key list. */
    TestBox(const QByteArray &indexFile, const KyPDataManagerSortKey &order)
        : m_stem("F0:TB" + QByteArray::number(++count()))
    {
        make(indexFile, order);
    }
    Q_DISABLE_COPY_MOVE(TestBox)

    [[nodiscard]] QByteArray path() const { return m_stem + ".BOX"; }
    [[nodiscard]] QByteArray master() const { return m_master; }
    /** Path of another file of the family, such as file("A.IDX"). */
    [[nodiscard]] QByteArray file(const QByteArray &rest) const { return m_stem + rest; }

private:
    static int &count()
    {
        static int boxes = 0;
        return boxes;
    }

    void make(const QByteArray &indexFile, const KyPDataManagerSortKey &order)
    {
        m_master = indexFile.startsWith("F0:") ? indexFile : m_stem + '.' + indexFile;
        KyPDataManagerItemInfo items;
        items.addTextItem("TITL", QStringLiteral("title"));
        items.addUcharItem("NUMB", QStringLiteral("number"));
        items.addBitItem("FLAG", QStringLiteral("flags"));
        items.addUshortItem("SHRT", QStringLiteral("short"), false);
        items.addUshortItem("SALT", QStringLiteral("other short"), true);
        items.addUlongItem("LONG", QStringLiteral("long"));
        items.addTimeItem("TIME", QStringLiteral("time"));
        items.addBinaryItem("BINA", QStringLiteral("bytes"));
        items.addColorItem("COLR", QStringLiteral("colour"));
        items.addCategoryItem();
        items.addItem({{'S', 'J', 'I', 'S'}, ItemTextSjis, KindText, QStringLiteral("text")});
        items.addItem({{'S', 'J', 'I', '2'}, ItemTextSjis2, KindText, QStringLiteral("text")});
        KyPDataManager::createFile(path().constData(), m_master.constData(), ApplicationId, false, items,
                                   order, KyPDataManagerIndexInfo());
    }

    QByteArray m_stem;
    QByteArray m_master;
};

/** A moment as the store has it. */
inline QByteArray ptime(int year, int month, int day, int hour, int minute, int second)
{
    PTimeValue value = {};
    KyPDataManager::createPTime(&value, year, month, day, hour, minute, second);
    return QByteArray(reinterpret_cast<const char *>(value.bytes), sizeof value.bytes);
}

/** Year, month, day, hour, minute and second of such a moment. */
inline QList<int> fieldsOf(const QByteArray &value)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    ppgettime(value.constData(), &year, &month, &day, &hour, &minute, &second, 0);
    return {year, month, day, hour, minute, second};
}

/** Adds a card with a title. @return its id, 0 on failure */
inline unsigned long addCard(KyPDataManager &manager, const QString &title)
{
    unsigned long card = 0;
    return manager.editNewCard() && manager.writeItem("TITL", title) && manager.finishEditCard(&card) ? card
                                                                                                      : 0;
}

/** Bytes of an item as the store has them. */
inline QByteArray storedBytes(const KyPDataManager &manager, unsigned long card, const char *code)
{
    CardItemKey key = {};
    key.card = quint16(card);
    memcpy(key.code, code, sizeof key.code);
    char bytes[256];
    quint32 size = sizeof bytes;
    return _CardRead(manager.boxHandle(), &key, bytes, &size) == PdtmOk ? QByteArray(bytes, qsizetype(size))
                                                                        : QByteArray("unreadable");
}

/** Writes an item behind the manager's back. */
inline bool storeBytes(const KyPDataManager &manager, unsigned long card, const char *code,
                       const QByteArray &bytes)
{
    CardItemKey key = {};
    key.card = quint16(card);
    memcpy(key.code, code, sizeof key.code);
    return _CardWrite(manager.boxHandle(), &key, bytes.constData(), quint32(bytes.size())) == PdtmOk;
}

#endif
